// SPDX-License-Identifier: MIT
// Writes the JSON documents of the commands.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Output.h"
#include "SorvikProvider/foundation/JsonWriter.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace host {

// Indented on a terminal, one line otherwise.
class JsonWriter : public Hestra::JsonWriter {
 public:
  explicit JsonWriter(Output& output)
      : Hestra::JsonWriter([&output](std::string_view text) { output.Write(text); },
                           output.IndentsJson()) {}

  void Strings(const std::vector<std::string>& texts);
  // Writes a field value: a string, an array of strings, null for the empty value, or {"bytes":N}
  // for a size.
  void Value(const Sorvik::any_regular_t& value);
  void Fields(const Sorvik::FieldValueMap& fields);
  void Entries(const Sorvik::ContentMap& content);
};

class Failure;

// Writes the document {"error":{"path","message"}}.
void WriteErrorJson(Output& output, const Failure& failure);

}  // namespace host
