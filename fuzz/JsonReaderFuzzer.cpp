// SPDX-License-Identifier: MIT
// Lines of a catalogue. A string that was read is written and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "SorvikProvider/foundation/JsonText.h"
#include "foundation/JsonReader.h"

namespace {

using Sorvik::foundation::JsonValue;
using Sorvik::foundation::ParseJson;

void CheckTexts(const JsonValue& value) {
  if (value.kind == JsonValue::Kind::kString) {
    std::string json;
    Hestra::AppendJsonString(json, value.text);
    const auto again = ParseJson(json);
    if (!again || again->text != value.text) std::abort();
  }
  for (const JsonValue& item : value.items) CheckTexts(item);
  for (const auto& member : value.members) CheckTexts(member.second);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto json = ParseJson({reinterpret_cast<const char*>(data), size});
  if (json) CheckTexts(*json);
  return 0;
}
