// SPDX-License-Identifier: MIT
// The fields of the browse model, by name and by label.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/frame/FieldModel.h"

namespace host {

// What `sorvik fields` prints for a field.
struct FieldInfo {
  std::string name;
  std::string label;         // in the user's language
  std::string_view type;     // text, list, size, number, date, timecode, duration, rate or flag
  std::string_view meaning;  // one line of English
};

// Returns the field `name`. The type of a field without a description is "text".
FieldInfo DescribeField(const Sorvik::FieldLabelMap& labels, const std::string& name);

// Converts fields as typed to names: a name or label in any case, in the user's language or in
// English. `labels` are those of the provider in use, preferred to others. Throws Failure with
// kUsageError and the nearest names for an unknown field.
Sorvik::FieldNameList ResolveFields(const std::vector<std::string>& typed,
                                    const Sorvik::FieldLabelMap& labels);

}  // namespace host
