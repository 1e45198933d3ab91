// SPDX-License-Identifier: MIT
#include "SorvikProvider/frame/any_regular_t.h"

#include <cxxabi.h>

#include <cstdlib>
#include <cstring>
#include <mutex>

#include "SorvikProvider/frame/Provider.h"

namespace halvane {
inline namespace version_1 {
namespace {

std::size_t ParameterCount(const TypeRecord& type) {
  std::size_t count = 0;
  while (type.parameters != nullptr && type.parameters[count] != nullptr) ++count;
  return count;
}

std::string Demangled(const std::type_info& info) {
  int status = 0;
  char* text = abi::__cxa_demangle(info.name(), nullptr, nullptr, &status);
  std::string result = status == 0 ? text : info.name();
  std::free(text);
  return result;
}

}  // namespace

bool operator==(const TypeRecord& a, const TypeRecord& b) noexcept {
  if (&a == &b) return true;
  if ((a.info == nullptr) != (b.info == nullptr)) return false;
  if (a.info != nullptr) return *a.info == *b.info;
  const std::size_t count = ParameterCount(a);
  if (std::strcmp(a.name, b.name) != 0 || count != ParameterCount(b)) return false;
  for (std::size_t i = 0; i < count; ++i) {
    if (!(*a.parameters[i] == *b.parameters[i])) return false;
  }
  return true;
}

bool operator<(const TypeRecord& a, const TypeRecord& b) noexcept {
  if ((a.info == nullptr) != (b.info == nullptr)) return a.info == nullptr;
  if (a.info != nullptr) return a.info->before(*b.info);
  if (const int order = std::strcmp(a.name, b.name); order != 0) return order < 0;
  const std::size_t countA = ParameterCount(a);
  const std::size_t countB = ParameterCount(b);
  for (std::size_t i = 0; i < countA && i < countB; ++i) {
    if (*a.parameters[i] < *b.parameters[i]) return true;
    if (*b.parameters[i] < *a.parameters[i]) return false;
  }
  return countA < countB;
}

std::string ToText(const TypeRecord& type) {
  if (type.info != nullptr) return Demangled(*type.info);
  std::string text = type.name;
  const std::size_t count = ParameterCount(type);
  if (count == 0) return text;
  for (std::size_t i = 0; i < count; ++i) {
    text += i == 0 ? '<' : ',';
    text += ToText(*type.parameters[i]);
  }
  return text + '>';
}

class ListItems {
 public:
  using List = std::vector<any_regular_t>;

  ListItems(List items, std::shared_ptr<const List> more)
      : items_(std::move(items)), more_(std::move(more)) {}

  const List& All() const {
    if (!more_) return items_;
    std::call_once(joined_, [this] {
      all_.reserve(items_.size() + more_->size());
      all_ = items_;
      all_.insert(all_.end(), more_->begin(), more_->end());
    });
    return all_;
  }
  std::span<const any_regular_t> First() const noexcept { return items_; }
  std::span<const any_regular_t> More() const noexcept {
    return more_ ? std::span<const any_regular_t>(*more_) : std::span<const any_regular_t>();
  }

 private:
  const List items_;
  const std::shared_ptr<const List> more_;
  mutable std::once_flag joined_;
  mutable List all_;  // empty without more_
};

std::shared_ptr<const ListItems> MakeListItems(
    std::vector<any_regular_t> items, std::shared_ptr<const std::vector<any_regular_t>> more) {
  return std::make_shared<const ListItems>(std::move(items), std::move(more));
}

const std::vector<any_regular_t>& AllItems(const ListItems& list) { return list.All(); }

std::span<const any_regular_t> FirstItems(const ListItems& list) noexcept { return list.First(); }

std::span<const any_regular_t> MoreItems(const ListItems& list) noexcept { return list.More(); }

bad_cast::bad_cast() : message_("bad_cast") {}

bad_cast::bad_cast(const TypeRecord& held, const TypeRecord& wanted)
    : message_("bad_cast: " + ToText(held) + " -> " + ToText(wanted)) {}

bad_cast::~bad_cast() = default;

const TypeRecord& TypeRecordOf<empty_t>::Get() noexcept {
  static constexpr TypeRecord record{nullptr, "empty_t:version_1:halvane", nullptr};
  return record;
}

const TypeRecord& TypeRecordOf<std::string>::Get() noexcept {
  static constexpr TypeRecord record{nullptr, "string_t:version_1:halvane", nullptr};
  return record;
}

const TypeRecord& TypeRecordOf<any_regular_t>::Get() noexcept {
  static constexpr TypeRecord record{nullptr, "any_regular_t:version_1:halvane", nullptr};
  return record;
}

const TypeRecord& TypeRecordOf<std::vector<any_regular_t>>::Get() noexcept {
  static const TypeRecord* const parameters[] = {&TypeRecordOf<any_regular_t>::Get(), nullptr};
  static const TypeRecord record{nullptr, "vector:version_1:halvane", parameters};
  return record;
}

const TypeRecord& TypeRecordOf<Hestra::UTF16String>::Get() noexcept {
  static const TypeRecord record{&typeid(Hestra::UTF16String*), nullptr, nullptr};
  return record;
}

const TypeRecord& TypeRecordOf<Sorvik::Provider::ByteSize_t>::Get() noexcept {
  static constexpr TypeRecord record{nullptr, "ByteSize_t:Provider:Sorvik", nullptr};
  return record;
}

}  // namespace version_1
}  // namespace halvane
