// SPDX-License-Identifier: MIT
// The fields of the entries of plain directories.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik {

// The source of a field's value.
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
  // Of attributes: the bit, and the text if it is set. If it isn't, the text is empty.
  std::uint32_t bit = 0;
  const char* text = "";
};

// In display order; the gaps in the numbers are intended.
inline constexpr std::size_t kDirectoryFieldCount = 23;
extern const std::array<DirectoryField, kDirectoryFieldCount> kDirectoryFields;

// The requested fields that a directory has, in the order of a FieldValueMap.
class DirectoryFieldChoice {
 public:
  explicit DirectoryFieldChoice(const FieldNameSet& wanted);

  const std::vector<const DirectoryField*>& Fields() const noexcept { return fields_; }
  bool Has(DirectoryValue value) const noexcept;
  // True if a field needs more than the entry's name.
  bool NeedsFacts() const noexcept;
  // True if a field shows the target of a shortcut.
  bool NeedsTarget() const noexcept;

 private:
  std::vector<const DirectoryField*> fields_;
};

}  // namespace Sorvik
