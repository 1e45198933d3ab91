// SPDX-License-Identifier: MIT
// Display texts of field values, and helpers for the fields of an entry.
#pragma once

#include <string>
#include <vector>

#include "SorvikProvider/frame/FieldModel.h"
#include "SorvikProvider/frame/ProviderWrapper.h"

namespace host {

inline constexpr char kDurationField[] = "duration";
inline constexpr char kFrameCountField[] = "frameCount";

// Returns the value for a table cell: sizes with a unit, a list of several items as its length. A
// text of separators only, such as " @ ", counts as empty.
std::string CellText(const Sorvik::any_regular_t& value);
// Returns the complete value: sizes in bytes, the items of a list separated by "; ".
std::string FullText(const Sorvik::any_regular_t& value);
// Returns the duration in seconds of a frame count such as "7500 @ 1/1000": "7.5 s". Empty if it
// isn't one, or is 0.
std::string SecondsText(const Sorvik::any_regular_t& frameCount);
// Sets an empty duration to that text. Durations at rates without a timecode are empty.
void ShowDuration(Sorvik::FieldValueMap& fields);

// Returns the value as lines, one per list item; no line for an empty value.
std::vector<std::string> ValueLines(const Sorvik::any_regular_t& value);
bool IsSize(const Sorvik::any_regular_t& value);

// Returns the texts of a field: one, those of a list, or none.
std::vector<std::string> FieldTexts(const Sorvik::FieldValueMap& fields, const char* name);

// Returns the entry's name, or the file name in its key if it has none.
std::string EntryName(const std::string& key, const Sorvik::FieldValueMap& fields);

// Returns all paths of the entry without duplicates: Path, ExtraPath and ProxyPath, in this order.
std::vector<std::string> EntryPaths(const Sorvik::FieldValueMap& fields);

// Returns the paths of all entries without duplicates, in their order.
std::vector<std::string> AllPaths(const Sorvik::ContentMap& content);

// Returns the label of a field in the user's language: the provider's, else that of the metadata
// field table, else the field's name.
std::string LabelOf(const Sorvik::FieldLabelMap& labels, const std::string& field);

// Returns the text of a localization key in the language of the user.
std::string Translated(const char* key);

}  // namespace host
