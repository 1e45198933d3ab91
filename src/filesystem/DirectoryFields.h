// SPDX-License-Identifier: MIT
// The fields of the entries of plain directories.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik {

// Where a field's value comes from.
enum class DirectoryValue {
  kName,
  kPath,
  kExtraPath,
  kDisplayPath,
  kAttribute,
  kShortName,
  kCreated,
  kAccessed,
  kWritten,
  kSize,
};

struct DirectoryField {
  const char* name;
  const char* label;
  DirectoryValue value;
  // Of attributes: the bit, and the text where it is on. Where it is off the text is empty.
  std::uint32_t bit = 0;
  const char* text = "";
};

// In the order of the table; gaps in the numbers are meant.
inline constexpr std::size_t kDirectoryFieldCount = 23;
extern const std::array<DirectoryField, kDirectoryFieldCount> kDirectoryFields;

// Those of the wanted fields that a directory has, in the order of a FieldValueMap.
class DirectoryFieldChoice {
 public:
  explicit DirectoryFieldChoice(const FieldNameSet& wanted);

  const std::vector<const DirectoryField*>& Fields() const noexcept { return fields_; }
  bool Has(DirectoryValue value) const noexcept;
  // Whether a value needs more than the entry's name.
  bool NeedsFacts() const noexcept;
  // Whether a value shows where a shortcut leads.
  bool NeedsTarget() const noexcept;

 private:
  std::vector<const DirectoryField*> fields_;
};

}  // namespace Sorvik
