// SPDX-License-Identifier: MIT
// Field values as a person reads them, and the facts of an entry that commands ask for.
#pragma once

#include <string>
#include <vector>

#include "SorvikProvider/frame/FieldModel.h"
#include "SorvikProvider/frame/ProviderWrapper.h"

namespace host {

// The value for a cell of a table: sizes with a unit, lists of several things as their number.
std::string CellText(const Sorvik::any_regular_t& value);
// The value on lines of its own, one for each item of a list; none for an empty value.
std::vector<std::string> ValueLines(const Sorvik::any_regular_t& value);
bool IsSize(const Sorvik::any_regular_t& value);

// The texts that a field holds: one, those of a list, or none.
std::vector<std::string> FieldTexts(const Sorvik::FieldValueMap& fields, const char* name);

// The name to show: the entry's own, or the file name in its key.
std::string EntryName(const std::string& key, const Sorvik::FieldValueMap& fields);

// All paths that the entry names: its own, the further ones and its proxy. Each once, in this
// order.
std::vector<std::string> EntryPaths(const Sorvik::FieldValueMap& fields);

// The label of a field in the user's language: the provider's own, else the one of the table of
// metadata fields, else the field's name.
std::string LabelOf(const Sorvik::FieldLabelMap& labels, const std::string& field);

}  // namespace host
