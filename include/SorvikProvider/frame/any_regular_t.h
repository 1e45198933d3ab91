// SPDX-License-Identifier: MIT
// The variant type of field values.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/UTF16String.h"

namespace halvane {
inline namespace version_1 {

// Run-time description of a type: either a name of the form <type>:<namespace>:<outer namespace>
// and no std::type_info, or only the std::type_info of a pointer to the type. `parameters` is a
// null-terminated list, or null if there are none. There is one record for each type, with static
// storage duration.
struct SORVIK_EXPORT TypeRecord {
  const std::type_info* info;
  const char* name;
  const TypeRecord* const* parameters;

  friend SORVIK_EXPORT bool operator==(const TypeRecord& a, const TypeRecord& b) noexcept;
  // Records with a name sort first; then by name and parameters.
  friend SORVIK_EXPORT bool operator<(const TypeRecord& a, const TypeRecord& b) noexcept;
};

// The record as text, such as "vector:version_1:halvane<any_regular_t:version_1:halvane>".
SORVIK_EXPORT std::string ToText(const TypeRecord& type);

// The value of an empty variant. All such values are equal.
struct empty_t {
  friend bool operator==(empty_t, empty_t) noexcept { return true; }
};

// Thrown by a cast to another type than that of the value.
class SORVIK_EXPORT bad_cast : public std::bad_cast {
 public:
  bad_cast();
  // "bad_cast: <held> -> <wanted>"
  bad_cast(const TypeRecord& held, const TypeRecord& wanted);
  ~bad_cast() override;
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  std::string message_;
};

class any_regular_t;

// The record of T. Specialize it to give a type a name.
template <class T>
struct TypeRecordOf {
  static const TypeRecord& Get() noexcept {
    static constexpr TypeRecord record{&typeid(T*), nullptr, nullptr};
    return record;
  }
};

template <>
struct SORVIK_EXPORT TypeRecordOf<empty_t> {
  static const TypeRecord& Get() noexcept;
};
template <>
struct SORVIK_EXPORT TypeRecordOf<std::string> {
  static const TypeRecord& Get() noexcept;
};
template <>
struct SORVIK_EXPORT TypeRecordOf<any_regular_t> {
  static const TypeRecord& Get() noexcept;
};
template <>
struct SORVIK_EXPORT TypeRecordOf<std::vector<any_regular_t>> {
  static const TypeRecord& Get() noexcept;
};
template <>
struct SORVIK_EXPORT TypeRecordOf<Hestra::UTF16String> {
  static const TypeRecord& Get() noexcept;
};

// The items of a list value. Never changes, so that copies of the value share it. Any thread.
class ListItems;
SORVIK_EXPORT std::shared_ptr<const ListItems> MakeListItems(
    std::vector<any_regular_t> items, std::shared_ptr<const std::vector<any_regular_t>> more);
// One list of all items; made at the first call if they are in two parts.
SORVIK_EXPORT const std::vector<any_regular_t>& AllItems(const ListItems& list);
SORVIK_EXPORT std::span<const any_regular_t> FirstItems(const ListItems& list) noexcept;
SORVIK_EXPORT std::span<const any_regular_t> MoreItems(const ListItems& list) noexcept;

// Holds a value of any regular type (copyable, assignable, equality-comparable), or is empty.
// Copies are deep: no change of one value is visible in another. Values up to the size of a
// std::string are stored in place, others on the heap; copies of a std::vector<any_regular_t>,
// which never changes inside of a value, share its memory. As thread-safe as the type of the value.
class any_regular_t {
 public:
  any_regular_t() noexcept : operations_(&kModel<empty_t>.operations) {}

  // Stores the text as a std::string.
  explicit any_regular_t(const char* text) : any_regular_t(std::string(text)) {}

  // Pointers are excluded: copies would share the object.
  template <class T>
  requires(!std::is_same_v<std::remove_cvref_t<T>, any_regular_t> &&
           !std::is_pointer_v<std::decay_t<T>> && std::equality_comparable<std::decay_t<T>> &&
           std::copy_constructible<std::decay_t<T>>) explicit any_regular_t(T&& value)
      : operations_(&kModel<std::decay_t<T>>.operations) {
    Model<std::decay_t<T>>::Make(&storage_, std::forward<T>(value));
  }

  // The list of `items` and then `more`, which other values may share.
  static any_regular_t list(std::vector<any_regular_t> items,
                            std::shared_ptr<const std::vector<any_regular_t>> more) {
    any_regular_t value;
    value.operations_ = &kModel<std::vector<any_regular_t>>.operations;
    Model<std::vector<any_regular_t>>::MakeStored(&value.storage_,
                                                  MakeListItems(std::move(items), std::move(more)));
    return value;
  }

  any_regular_t(const any_regular_t& other) : operations_(other.operations_) {
    operations_->copy(&other.storage_, &storage_);
  }
  any_regular_t(any_regular_t&& other) noexcept : operations_(other.operations_) {
    operations_->move(&other.storage_, &storage_);
    other.operations_ = &kModel<empty_t>.operations;
  }
  any_regular_t& operator=(const any_regular_t& other) {
    if (operations_ == other.operations_) {
      operations_->assign(&storage_, &other.storage_);
    } else {
      *this = any_regular_t(other);
    }
    return *this;
  }
  any_regular_t& operator=(any_regular_t&& other) noexcept {
    any_regular_t moved(std::move(other));  // `other` may be an element of this value
    swap(moved);
    return *this;
  }
  ~any_regular_t() { operations_->destruct(&storage_); }

  void swap(any_regular_t& other) noexcept {
    if (this == &other) return;
    if (operations_ == other.operations_) {
      operations_->exchange(&storage_, &other.storage_);
      return;
    }
    Storage kept;
    operations_->move(&storage_, &kept);
    other.operations_->move(&other.storage_, &storage_);
    operations_->move(&kept, &other.storage_);
    std::swap(operations_, other.operations_);
  }

  const TypeRecord& type_info() const noexcept { return operations_->type(); }

  template <class T>
  bool holds() const noexcept {
    return type_info() == TypeRecordOf<T>::Get();
  }

  // Returns a copy of the value. Throws bad_cast if it has another type.
  template <class T>
  T cast() const {
    if (!holds<T>()) throw bad_cast(type_info(), TypeRecordOf<T>::Get());
    return *Model<T>::At(&storage_);
  }
  // Assigns a copy of the value to `value` and returns true. Returns false if it has another type.
  // `value` may contain this variant.
  template <class T>
  bool cast(T& value) const {
    if (!holds<T>()) return false;
    value = T(*Model<T>::At(&storage_));
    return true;
  }
  // Returns a pointer to the value, or nullptr if it has another type. Valid until the variant
  // changes. Allocates memory at the first call for a list that shares items with others.
  template <class T>
  const T* get_if() const {
    return holds<T>() ? Model<T>::At(&storage_) : nullptr;
  }

  // Calls `use` with each item of a std::vector<any_regular_t> in order. Returns false if the value
  // has another type. Needs less memory than get_if for a list that shares items with others.
  template <class Use>
  bool for_each_item(Use use) const {
    using List = std::vector<any_regular_t>;
    if (!holds<List>()) return false;
    const ListItems& items = **Model<List>::StoredAt(&storage_);
    for (const any_regular_t& item : FirstItems(items)) use(item);
    for (const any_regular_t& item : MoreItems(items)) use(item);
    return true;
  }

  friend bool operator==(const any_regular_t& a, const any_regular_t& b) {
    return a.type_info() == b.type_info() && a.operations_->equals(&a.storage_, &b.storage_);
  }

 private:
  struct Storage {
    alignas(std::string) std::byte bytes[sizeof(std::string)];
  };

  // The operations of a type. assign, equals and exchange require the same type on both sides; move
  // destroys the source.
  struct Operations {
    std::uintptr_t version;
    void (*destruct)(Storage*) noexcept;
    const TypeRecord& (*type)() noexcept;
    void (*copy)(const Storage* from, Storage* to);
    void (*move)(Storage* from, Storage* to) noexcept;
    void (*assign)(Storage* to, const Storage* from);
    bool (*equals)(const Storage*, const Storage*);
    void (*exchange)(Storage*, Storage*) noexcept;
  };

  template <class T>
  struct Model {
    static constexpr bool kIsList = std::is_same_v<T, std::vector<any_regular_t>>;
    using Stored = std::conditional_t<kIsList, std::shared_ptr<const ListItems>, T>;
    static constexpr bool kInPlace = sizeof(Stored) <= sizeof(Storage) &&
                                     alignof(Stored) <= alignof(Storage) &&
                                     std::is_nothrow_move_constructible_v<Stored>;

    static Stored* StoredAt(const Storage* storage) noexcept {
      auto* bytes = const_cast<std::byte*>(storage->bytes);
      if constexpr (kInPlace) {
        return std::launder(reinterpret_cast<Stored*>(bytes));
      } else {
        return *std::launder(reinterpret_cast<Stored**>(bytes));
      }
    }
    static const T* At(const Storage* storage) {
      if constexpr (kIsList) {
        return &AllItems(**StoredAt(storage));
      } else {
        return StoredAt(storage);
      }
    }
    template <class U>
    static void MakeStored(Storage* storage, U&& value) {
      if constexpr (kInPlace) {
        new (storage->bytes) Stored(std::forward<U>(value));
      } else {
        new (storage->bytes) Stored*(new Stored(std::forward<U>(value)));
      }
    }
    template <class U>
    static void Make(Storage* storage, U&& value) {
      if constexpr (kIsList) {
        MakeStored(storage, MakeListItems(std::forward<U>(value), nullptr));
      } else {
        MakeStored(storage, std::forward<U>(value));
      }
    }
    static void Destruct(Storage* storage) noexcept {
      if constexpr (kInPlace) {
        StoredAt(storage)->~Stored();
      } else {
        delete StoredAt(storage);
      }
    }
    static const TypeRecord& Type() noexcept { return TypeRecordOf<T>::Get(); }
    static void Copy(const Storage* from, Storage* to) {
      MakeStored(to, std::as_const(*StoredAt(from)));
    }
    static void Move(Storage* from, Storage* to) noexcept {
      if constexpr (kInPlace) {
        MakeStored(to, std::move(*StoredAt(from)));
        Destruct(from);
      } else {
        new (to->bytes) Stored*(StoredAt(from));
      }
    }
    // Copies first: `from` may be an element of the value that is replaced.
    static void Assign(Storage* to, const Storage* from) {
      *StoredAt(to) = Stored(std::as_const(*StoredAt(from)));
    }
    static bool Equals(const Storage* a, const Storage* b) { return *At(a) == *At(b); }
    static void Exchange(Storage* a, Storage* b) noexcept {
      Storage kept;
      Move(a, &kept);
      Move(b, a);
      Move(&kept, b);
    }

    Operations operations{1, Destruct, Type, Copy, Move, Assign, Equals, Exchange};
  };

  template <class T>
  static constexpr Model<T> kModel{};

  const Operations* operations_;
  Storage storage_;
};

}  // namespace version_1
}  // namespace halvane
