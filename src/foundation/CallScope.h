// SPDX-License-Identifier: MIT
// A cache for the duration of one provider operation.
//
// An object on the stack of the operation; the layers below find it through a thread-local pointer.
// Scopes nest: an inner one uses the cache of the outermost one. Threads that work for the
// operation join it. Without a scope every function works the same and reads again each time.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <typeindex>
#include <unordered_map>
#include <utility>

namespace Sorvik::foundation {

class CallScope {
 private:
  class Records;

 public:
  // What a scope caches; null without a scope.
  using Cache = std::shared_ptr<Records>;

  CallScope();
  // Continues with what earlier operations have cached. An inner scope ignores it.
  explicit CallScope(Cache cache);
  ~CallScope();
  CallScope(const CallScope&) = delete;
  CallScope& operator=(const CallScope&) = delete;

  // Returns the cached record of type T for `key`; if there is none, caches the result of `make`.
  // If another thread is making it, waits for that thread. Nothing is cached if `make` throws, and
  // `make` must not ask for its own record. Records are immutable and may outlive the scope. Each
  // kind of record needs a type of its own, since type and key together identify it.
  template <class T, class Make>
  static std::shared_ptr<const T> Remember(const std::string& key, Make make) {
    return Share<T>(key, [&make] { return std::make_shared<const T>(make()); });
  }

  // The same for a record that can't be moved: `make` returns a shared pointer to it.
  template <class T, class Make>
  static std::shared_ptr<const T> Share(const std::string& key, Make make) {
    Records* const records = Current();
    if (records == nullptr) return make();
    Record& record = records->Of({typeid(T), key});
    if (!record.isMade.load(std::memory_order_acquire)) {
      const std::lock_guard lock(record.making);
      if (!record.isMade.load(std::memory_order_relaxed)) {
        record.value = std::shared_ptr<const T>(make());
        record.isMade.store(true, std::memory_order_release);
      }
    }
    return std::static_pointer_cast<const T>(record.value);
  }

  // Returns the cached record, or nullptr if there is none yet.
  template <class T>
  static std::shared_ptr<const T> Kept(const std::string& key) {
    Records* const records = Current();
    const Record* const record = records == nullptr ? nullptr : records->Find({typeid(T), key});
    if (record == nullptr || !record->isMade.load(std::memory_order_acquire)) return nullptr;
    return std::static_pointer_cast<const T>(record->value);
  }

  // What the current scope of this thread caches, for Join.
  static Cache CurrentCache();
  // An empty cache.
  static Cache NewCache();

  // Lets another thread use the cache of an operation, which may have ended, as long as the object
  // exists. On a thread without a scope.
  class Join {
   public:
    explicit Join(Cache cache) noexcept;
    ~Join();
    Join(const Join&) = delete;
    Join& operator=(const Join&) = delete;

   private:
    Cache cache_;
  };

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
  struct Record {
    std::mutex making;
    std::shared_ptr<const void> value;  // constant once isMade is set
    std::atomic<bool> isMade{false};
  };
  // Any thread. Records are never removed.
  class Records : public std::enable_shared_from_this<Records> {
   public:
    Record& Of(Name name) {
      const std::lock_guard lock(mutex_);
      return records_.try_emplace(std::move(name)).first->second;
    }
    const Record* Find(const Name& name) const {
      const std::lock_guard lock(mutex_);
      const auto found = records_.find(name);
      return found == records_.end() ? nullptr : &found->second;
    }

   private:
    mutable std::mutex mutex_;
    // A listing caches several records for each of up to thousands of folders.
    std::unordered_map<Name, Record, NameHash> records_;
  };

  static Records* Current() noexcept;

  Cache records_;  // null in an inner scope
};

}  // namespace Sorvik::foundation
