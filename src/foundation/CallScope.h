// SPDX-License-Identifier: MIT
// What one provider operation has read, kept for as long as that operation lasts.
//
// An object on the stack of the operation; the layers below find it through a thread-local pointer.
// Scopes nest: an inner one shares what the outermost one keeps. Nothing outlives the call or
// crosses threads. Without a scope everything works the same and is read each time.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <typeindex>
#include <unordered_map>
#include <utility>

namespace Sorvik::foundation {

class CallScope {
 public:
  CallScope() noexcept;
  ~CallScope();
  CallScope(const CallScope&) = delete;
  CallScope& operator=(const CallScope&) = delete;

  // The record of type T under `key`: the kept one, or what `make` gives, which is then kept. The
  // record is shared and never changes; a holder may keep it beyond the scope. T must be a type of
  // its own for each kind of record, since type and key together name it.
  template <class T, class Make>
  static std::shared_ptr<const T> Remember(const std::string& key, Make make) {
    return Share<T>(key, [&make] { return std::make_shared<const T>(make()); });
  }

  // The same for a record that can't be moved: `make` returns a shared pointer to it.
  template <class T, class Make>
  static std::shared_ptr<const T> Share(const std::string& key, Make make) {
    Records* records = Current();
    if (records == nullptr) return make();
    Name name{typeid(T), key};
    if (const auto kept = records->find(name); kept != records->end()) {
      return std::static_pointer_cast<const T>(kept->second);
    }
    std::shared_ptr<const T> made = make();
    records->emplace(std::move(name), made);
    return made;
  }

  // The kept record, or null if nothing has made one yet.
  template <class T>
  static std::shared_ptr<const T> Kept(const std::string& key) {
    const Records* records = Current();
    if (records == nullptr) return nullptr;
    const auto kept = records->find(Name{typeid(T), key});
    return kept == records->end() ? nullptr : std::static_pointer_cast<const T>(kept->second);
  }

 private:
  struct Name {
    std::type_index type;
    std::string key;

    bool operator==(const Name&) const = default;
  };
  struct NameHash {
    std::size_t operator()(const Name& name) const noexcept {
      return std::hash<std::string>()(name.key) ^ std::hash<std::type_index>()(name.type);
    }
  };
  // A listing keeps several records for each of a thousand folders.
  using Records = std::unordered_map<Name, std::shared_ptr<const void>, NameHash>;

  static Records* Current() noexcept;

  Records records_;
  bool outermost_;
};

}  // namespace Sorvik::foundation
