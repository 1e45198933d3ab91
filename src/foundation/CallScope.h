// SPDX-License-Identifier: MIT
// What one provider operation has read, kept for as long as that operation lasts.
//
// An object on the stack of the operation; the layers below find it through a thread-local pointer.
// Scopes nest: an inner one shares what the outermost one keeps. Nothing outlives the call or
// crosses threads. Without a scope everything works the same and is read each time.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <typeindex>
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
    Records* records = Current();
    if (records == nullptr) return std::make_shared<const T>(make());
    const auto name = std::make_pair(std::type_index(typeid(T)), key);
    if (const auto kept = records->find(name); kept != records->end()) {
      return std::static_pointer_cast<const T>(kept->second);
    }
    auto made = std::make_shared<const T>(make());
    records->emplace(name, made);
    return made;
  }

  // The kept record, or null if nothing has made one yet.
  template <class T>
  static std::shared_ptr<const T> Kept(const std::string& key) {
    const Records* records = Current();
    if (records == nullptr) return nullptr;
    const auto kept = records->find(std::make_pair(std::type_index(typeid(T)), key));
    return kept == records->end() ? nullptr : std::static_pointer_cast<const T>(kept->second);
  }

 private:
  using Records = std::map<std::pair<std::type_index, std::string>, std::shared_ptr<const void>>;

  static Records* Current() noexcept;

  Records records_;
  bool outermost_;
};

}  // namespace Sorvik::foundation
