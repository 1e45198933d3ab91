// SPDX-License-Identifier: MIT
#include "Json.h"

#include <array>
#include <charconv>

#include "Failure.h"
#include "SorvikProvider/foundation/JsonText.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "SorvikProvider/frame/Provider.h"

namespace host {

void JsonWriter::Key(std::string_view key) {
  BeforeValue();
  Quoted(Hestra::MakeString(key));
  Write(indents_ ? ": " : ":");
  afterKey_ = true;
}

void JsonWriter::String(std::string_view text) { String(Hestra::MakeString(text)); }

void JsonWriter::String(std::u16string_view text) {
  BeforeValue();
  Quoted(text);
}

void JsonWriter::Number(unsigned long long number) {
  BeforeValue();
  Write(std::to_string(number));
}

void JsonWriter::Number(int number) {
  BeforeValue();
  Write(std::to_string(number));
}

void JsonWriter::Number(double number) {
  BeforeValue();
  std::array<char, 32> digits{};
  const auto [end, error] = std::to_chars(digits.begin(), digits.end(), number);
  Write(std::string_view(digits.data(), static_cast<std::size_t>(end - digits.begin())));
}

void JsonWriter::Boolean(bool value) {
  BeforeValue();
  Write(value ? "true" : "false");
}

void JsonWriter::Null() {
  BeforeValue();
  Write("null");
}

void JsonWriter::Json(std::string_view json) {
  BeforeValue();
  Write(json);
}

void JsonWriter::Strings(const std::vector<std::string>& texts) {
  BeginArray();
  for (const std::string& text : texts) String(text);
  EndArray();
}

void JsonWriter::Value(const Sorvik::any_regular_t& value) {
  if (const auto* text = value.get_if<std::string>()) {
    // A frame count without a duration.
    constexpr std::string_view kNoFrameCount = " @ ";
    String(*text == kNoFrameCount ? std::string_view() : *text);
  } else if (value.holds<std::vector<Sorvik::any_regular_t>>()) {
    BeginArray();
    value.for_each_item([this](const Sorvik::any_regular_t& item) { Value(item); });
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
  Write(std::string_view(&bracket, 1));
  filled_.push_back(false);
}

void JsonWriter::Close(char bracket) {
  const bool filled = filled_.back();
  filled_.pop_back();
  if (filled) NewLine();
  Write(std::string_view(&bracket, 1));
}

// Writes a comma and newline between values, and nothing between a key and its value.
void JsonWriter::BeforeValue() {
  if (afterKey_ || filled_.empty()) {
    afterKey_ = false;
    return;
  }
  if (filled_.back()) Write(",");
  filled_.back() = true;
  NewLine();
}

void JsonWriter::NewLine() {
  if (indents_) Write("\n" + std::string(2 * filled_.size(), ' '));
}

void JsonWriter::Quoted(std::u16string_view text) {
  std::string quoted;
  Hestra::AppendJsonString(quoted, text);
  Write(quoted);
}

void JsonWriter::Write(std::string_view bytes) {
  if (output_ != nullptr) {
    output_->Write(bytes);
  } else {
    text_->append(bytes);
  }
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
