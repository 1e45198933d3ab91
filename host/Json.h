// SPDX-License-Identifier: MIT
// One JSON document, written as it goes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Output.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace host {

// Always valid JSON: a byte that is no part of UTF-8 becomes the escape \udcXX, control characters
// are escaped. Indented on a terminal, on one line elsewhere.
class JsonWriter {
 public:
  explicit JsonWriter(Output& output) : output_(output) {}
  // Ends the line of a finished document.
  ~JsonWriter() { output_.Write("\n"); }
  JsonWriter(const JsonWriter&) = delete;
  JsonWriter& operator=(const JsonWriter&) = delete;

  void BeginObject() { Open('{'); }
  void EndObject() { Close('}'); }
  void BeginArray() { Open('['); }
  void EndArray() { Close(']'); }

  // Inside an object, before each value.
  void Key(std::string_view key);

  void String(std::string_view text);
  void String(std::u16string_view text);
  void Number(unsigned long long number);
  void Number(int number);
  void Boolean(bool value);
  void Null();

  void Strings(const std::vector<std::string>& texts);
  // A field's value: text, an array of texts, null for the empty value, {"bytes":N} for a size.
  void Value(const Sorvik::any_regular_t& value);
  void Fields(const Sorvik::FieldValueMap& fields);
  void Entries(const Sorvik::ContentMap& content);

 private:
  void Open(char bracket);
  void Close(char bracket);
  void BeforeValue();
  void NewLine();
  void Quoted(std::u16string_view text);

  Output& output_;
  std::vector<bool> filled_;  // for each open bracket: something stands in it
  bool afterKey_ = false;
};

}  // namespace host
