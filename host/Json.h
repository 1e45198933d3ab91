// SPDX-License-Identifier: MIT
// Streaming writer for one JSON document.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Output.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace host {

// The output is always valid JSON: a byte that isn't valid UTF-8 becomes the escape \udcXX, and
// control characters are escaped. Indented on a terminal, one line otherwise.
class JsonWriter {
 public:
  explicit JsonWriter(Output& output) : output_(&output), indents_(output.IndentsJson()) {}
  // Appends to `text`, always indented.
  explicit JsonWriter(std::string& text) : text_(&text), indents_(true) {}
  // Writes the newline after the document.
  ~JsonWriter() { Write("\n"); }
  JsonWriter(const JsonWriter&) = delete;
  JsonWriter& operator=(const JsonWriter&) = delete;

  void BeginObject() { Open('{'); }
  void EndObject() { Close('}'); }
  void BeginArray() { Open('['); }
  void EndArray() { Close(']'); }

  // Inside an object, call it before each value.
  void Key(std::string_view key);

  void String(std::string_view text);
  void String(std::u16string_view text);
  void Number(unsigned long long number);
  void Number(int number);
  // The shortest decimal that gives the same number.
  void Number(double number);
  void Boolean(bool value);
  void Null();
  // A value that is JSON already.
  void Json(std::string_view json);

  void Strings(const std::vector<std::string>& texts);
  // Writes a field value: a string, an array of strings, null for the empty value, or {"bytes":N}
  // for a size.
  void Value(const Sorvik::any_regular_t& value);
  void Fields(const Sorvik::FieldValueMap& fields);
  void Entries(const Sorvik::ContentMap& content);

 private:
  void Open(char bracket);
  void Close(char bracket);
  void BeforeValue();
  void NewLine();
  void Quoted(std::u16string_view text);
  void Write(std::string_view bytes);

  Output* output_ = nullptr;  // one of the two is set
  std::string* text_ = nullptr;
  bool indents_;
  std::vector<bool> filled_;  // for each open bracket: whether it has content
  bool afterKey_ = false;
};

class Failure;

// Writes the document {"error":{"path","message"}}.
void WriteErrorJson(Output& output, const Failure& failure);

}  // namespace host
