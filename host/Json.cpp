// SPDX-License-Identifier: MIT
#include "Json.h"

#include "Failure.h"
#include "SorvikProvider/foundation/JsonText.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "SorvikProvider/frame/Provider.h"

namespace host {

void JsonWriter::Key(std::string_view key) {
  BeforeValue();
  Quoted(Hestra::MakeString(key));
  output_.Write(output_.IndentsJson() ? ": " : ":");
  afterKey_ = true;
}

void JsonWriter::String(std::string_view text) { String(Hestra::MakeString(text)); }

void JsonWriter::String(std::u16string_view text) {
  BeforeValue();
  Quoted(text);
}

void JsonWriter::Number(unsigned long long number) {
  BeforeValue();
  output_.Write(std::to_string(number));
}

void JsonWriter::Number(int number) {
  BeforeValue();
  output_.Write(std::to_string(number));
}

void JsonWriter::Boolean(bool value) {
  BeforeValue();
  output_.Write(value ? "true" : "false");
}

void JsonWriter::Null() {
  BeforeValue();
  output_.Write("null");
}

void JsonWriter::Strings(const std::vector<std::string>& texts) {
  BeginArray();
  for (const std::string& text : texts) String(text);
  EndArray();
}

void JsonWriter::Value(const Sorvik::any_regular_t& value) {
  if (const auto* text = value.get_if<std::string>()) {
    String(*text);
  } else if (const auto* list = value.get_if<std::vector<Sorvik::any_regular_t>>()) {
    BeginArray();
    for (const Sorvik::any_regular_t& item : *list) Value(item);
    EndArray();
  } else if (const auto* wide = value.get_if<Hestra::UTF16String>()) {
    String(*wide);
  } else if (const auto* size = value.get_if<Sorvik::Provider::ByteSize_t>()) {
    BeginObject();
    Key("bytes");
    Number(size->value);
    EndObject();
  } else {
    Null();
  }
}

void JsonWriter::Fields(const Sorvik::FieldValueMap& fields) {
  BeginObject();
  for (const auto& [name, value] : fields) {
    Key(name);
    Value(value);
  }
  EndObject();
}

void JsonWriter::Entries(const Sorvik::ContentMap& content) {
  BeginObject();
  for (const auto& [key, fields] : content) {
    Key(key);
    Fields(fields);
  }
  EndObject();
}

void JsonWriter::Open(char bracket) {
  BeforeValue();
  output_.Write(std::string_view(&bracket, 1));
  filled_.push_back(false);
}

void JsonWriter::Close(char bracket) {
  const bool filled = filled_.back();
  filled_.pop_back();
  if (filled) NewLine();
  output_.Write(std::string_view(&bracket, 1));
}

// Writes a comma and newline between values, and nothing between a key and its value.
void JsonWriter::BeforeValue() {
  if (afterKey_ || filled_.empty()) {
    afterKey_ = false;
    return;
  }
  if (filled_.back()) output_.Write(",");
  filled_.back() = true;
  NewLine();
}

void JsonWriter::NewLine() {
  if (output_.IndentsJson()) output_.Write("\n" + std::string(2 * filled_.size(), ' '));
}

void JsonWriter::Quoted(std::u16string_view text) {
  std::string quoted;
  Hestra::AppendJsonString(quoted, text);
  output_.Write(quoted);
}

void WriteErrorJson(Output& output, const Failure& failure) {
  JsonWriter json(output);
  json.BeginObject();
  json.Key("error");
  json.BeginObject();
  json.Key("path");
  json.String(failure.Path());
  json.Key("message");
  json.String(failure.Message());
  json.EndObject();
  json.EndObject();
}

}  // namespace host
