// SPDX-License-Identifier: MIT
// Reads JSON documents (RFC 8259). Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Sorvik::foundation {

struct JsonValue {
  enum class Kind { kNull, kBoolean, kNumber, kString, kArray, kObject };

  Kind kind = Kind::kNull;
  bool boolean = false;
  // Of a string; an escape \udcXX is the byte that AppendJsonString wrote. The digits of a number.
  std::string text = {};
  std::vector<JsonValue> items = {};                            // of an array
  std::vector<std::pair<std::string, JsonValue>> members = {};  // of an object, in order

  // The member of that name; a null value if there is none or if this isn't an object.
  const JsonValue& operator[](std::string_view name) const;
  // The integer value of a number; 0 for anything else.
  std::int64_t Integer() const;
  // The strings among the items of an array.
  std::vector<std::string> Texts() const;
};

// Returns nullopt if `text` isn't one JSON document, or if it is nested more than 64 levels deep.
// Numbers aren't checked further than for their characters.
std::optional<JsonValue> ParseJson(std::string_view text);

}  // namespace Sorvik::foundation
