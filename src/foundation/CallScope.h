// SPDX-License-Identifier: MIT
// A cache for the duration of one provider operation.
//
// An object on the stack of the operation; the layers below find it through a thread-local pointer.
// Scopes nest: an inner one uses the cache of the outermost one. Records are not shared between
// threads. Without a scope every function works the same and reads again each time.
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

  // Returns the cached record of type T for `key`; if there is none, caches the result of `make`.
  // Records are immutable and may outlive the scope. Each kind of record needs a type of its own,
  // since type and key together identify it.
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

  // Returns the cached record, or nullptr if there is none.
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
  // A listing caches several records for each of up to thousands of folders.
  using Records = std::unordered_map<Name, std::shared_ptr<const void>, NameHash>;

  static Records* Current() noexcept;

  Records records_;
  bool outermost_;
};

}  // namespace Sorvik::foundation
