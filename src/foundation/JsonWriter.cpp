// SPDX-License-Identifier: MIT
#include "SorvikProvider/foundation/JsonWriter.h"

#include <array>
#include <charconv>

#include "SorvikProvider/foundation/JsonText.h"

namespace Hestra {

JsonWriter::~JsonWriter() { sink_("\n"); }

void JsonWriter::Key(std::string_view key) {
  BeforeValue();
  std::string quoted;
  AppendJsonString(quoted, key);
  sink_(quoted);
  sink_(indents_ ? ": " : ":");
  afterKey_ = true;
}

void JsonWriter::String(std::string_view text) {
  std::string quoted;
  AppendJsonString(quoted, text);
  Json(quoted);
}

void JsonWriter::String(std::u16string_view text) {
  std::string quoted;
  AppendJsonString(quoted, text);
  Json(quoted);
}

void JsonWriter::Number(unsigned long long number) { Json(std::to_string(number)); }

void JsonWriter::Number(int number) { Json(std::to_string(number)); }

void JsonWriter::Number(double number) {
  std::array<char, 32> digits{};
  const auto [end, error] = std::to_chars(digits.begin(), digits.end(), number);
  Json(std::string_view(digits.data(), static_cast<std::size_t>(end - digits.begin())));
}

void JsonWriter::Boolean(bool value) { Json(value ? "true" : "false"); }

void JsonWriter::Null() { Json("null"); }

void JsonWriter::Json(std::string_view json) {
  BeforeValue();
  sink_(json);
}

void JsonWriter::Open(char bracket) {
  Json(std::string_view(&bracket, 1));
  filled_.push_back(false);
}

void JsonWriter::Close(char bracket) {
  const bool filled = filled_.back();
  filled_.pop_back();
  if (filled) NewLine();
  sink_(std::string_view(&bracket, 1));
}

// Writes a comma and newline between values, and nothing between a key and its value.
void JsonWriter::BeforeValue() {
  if (afterKey_ || filled_.empty()) {
    afterKey_ = false;
    return;
  }
  if (filled_.back()) sink_(",");
  filled_.back() = true;
  NewLine();
}

void JsonWriter::NewLine() {
  if (indents_) sink_("\n" + std::string(2 * filled_.size(), ' '));
}

}  // namespace Hestra
