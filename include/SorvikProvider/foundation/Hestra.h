// SPDX-License-Identifier: MIT
// Reference counting and interface queries.
#pragma once

#include <atomic>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

#include "SorvikProvider/foundation/Export.h"

namespace Hestra {

class SORVIK_EXPORT Exception : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  ~Exception() override;
};

// Thrown when a null InterfaceRef or ObjectPtr is dereferenced.
class SORVIK_EXPORT NullInterfaceException : public Exception {
 public:
  NullInterfaceException();
  ~NullInterfaceException() override;
};

// A 128-bit interface id.
struct InterfaceID {
  std::uint64_t word1;
  std::uint64_t word2;
  friend bool operator==(const InterfaceID&, const InterfaceID&) = default;
};

using QueryResult = std::int32_t;
inline constexpr QueryResult kQueryDone = 0;
inline constexpr QueryResult kNoInterface = static_cast<QueryResult>(0xA00A0001u);

inline constexpr InterfaceID kThreadedQueueRequestID{0x4055FE55793307D6, 0x740A4DB1AF3A34B1};
inline constexpr InterfaceID kHestraUnknownID{0x4F33C5DF4F9CB3F7, 0xB93F9CDF4C78A5B5};

// The base of reference-counted objects. An object deletes itself when its last reference is
// released.
class SORVIK_EXPORT HestraUnknown {
 public:
  virtual void AddRef() noexcept = 0;
  virtual void Release() noexcept = 0;
  virtual ~HestraUnknown();
  // Stores the object as the interface `id` in `result` and returns kQueryDone, or stores nullptr
  // and returns kNoInterface. The first form adds a reference on success, the second doesn't.
  virtual QueryResult QueryInterface(InterfaceID id, void** result) noexcept = 0;
  virtual QueryResult QueryInterfaceWithoutRef(InterfaceID id, void** result) noexcept = 0;
};

// A task for a queue. Run is called once, on a worker.
class SORVIK_EXPORT IThreadedQueueRequest : public HestraUnknown {
 public:
  virtual void Run() = 0;
};

// An intrusive reference-counted pointer to a T with the interface Base. The count is thread-safe;
// a pointer object must not be used by two threads at a time.
template <class T, class Base = T>
class InterfaceRef {
 public:
  InterfaceRef() noexcept = default;
  explicit InterfaceRef(T* object) noexcept : object_(object) { AddReference(); }
  InterfaceRef(const InterfaceRef& other) noexcept : object_(other.object_) { AddReference(); }
  InterfaceRef(InterfaceRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  // Converts to a pointer to a base class of T, such as IThreadedQueueRequest.
  template <class U, class V>
  requires std::is_convertible_v<U*, T*> InterfaceRef(const InterfaceRef<U, V>& other)
  noexcept  // NOLINT(google-explicit-constructor)
      : InterfaceRef(static_cast<T*>(other.Get())) {}
  InterfaceRef& operator=(InterfaceRef other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~InterfaceRef() {
    if (object_ != nullptr) static_cast<Base*>(object_)->Release();
  }

  T* Get() const noexcept { return object_; }
  // Both throw NullInterfaceException on a null pointer.
  T* operator->() const { return Checked(); }
  T& operator*() const { return *Checked(); }
  explicit operator bool() const noexcept { return object_ != nullptr; }
  friend bool operator==(const InterfaceRef& a, const InterfaceRef& b) noexcept {
    return a.object_ == b.object_;
  }

 private:
  void AddReference() noexcept {
    if (object_ != nullptr) static_cast<Base*>(object_)->AddRef();
  }
  T* Checked() const {
    if (object_ == nullptr) throw NullInterfaceException();
    return object_;
  }

  T* object_ = nullptr;
};

// A thread-safe reference count for ObjectPtr.
class AtomicValue {
 public:
  explicit AtomicValue(std::int32_t value) noexcept : value_(value) {}
  void Increment() noexcept { value_.fetch_add(1, std::memory_order_relaxed); }
  // True if this was the last reference.
  bool Decrement() noexcept { return value_.fetch_sub(1, std::memory_order_acq_rel) == 1; }

 private:
  std::atomic<std::int32_t> value_;
};

// A non-intrusive reference-counted pointer. The last one deletes the object and the counter; a
// null pointer has no counter.
template <class T, class Counter = AtomicValue>
class ObjectPtr {
 public:
  ObjectPtr() noexcept = default;
  // Takes ownership.
  explicit ObjectPtr(T* object) : object_(object) {
    if (object != nullptr) counter_ = MakeCounter(object);
  }
  ObjectPtr(const ObjectPtr& other) noexcept : counter_(other.counter_), object_(other.object_) {
    if (counter_ != nullptr) counter_->Increment();
  }
  ObjectPtr(ObjectPtr&& other) noexcept
      : counter_(std::exchange(other.counter_, nullptr)),
        object_(std::exchange(other.object_, nullptr)) {}
  ObjectPtr& operator=(ObjectPtr other) noexcept {
    std::swap(counter_, other.counter_);
    std::swap(object_, other.object_);
    return *this;
  }
  ~ObjectPtr() {
    if (counter_ == nullptr || !counter_->Decrement()) return;
    delete object_;
    delete counter_;
  }

  T* Get() const noexcept { return object_; }
  // Both throw NullInterfaceException on a null pointer.
  T* operator->() const { return Checked(); }
  T& operator*() const { return *Checked(); }
  explicit operator bool() const noexcept { return object_ != nullptr; }

 private:
  static Counter* MakeCounter(T* object) {
    try {
      return new Counter(1);
    } catch (...) {
      delete object;
      throw;
    }
  }
  T* Checked() const {
    if (object_ == nullptr) throw NullInterfaceException();
    return object_;
  }

  Counter* counter_ = nullptr;
  T* object_ = nullptr;
};

}  // namespace Hestra
