// SPDX-License-Identifier: MIT
#include "foundation/JsonReader.h"

#include <charconv>

#include "SorvikProvider/foundation/UTF16String.h"

namespace Sorvik::foundation {
namespace {

constexpr int kMaxDepth = 64;

class Parser {
 public:
  explicit Parser(std::string_view text) : rest_(text) {}

  std::optional<JsonValue> Document() {
    JsonValue value;
    if (!Value(value, 0)) return std::nullopt;
    SkipBlanks();
    return rest_.empty() ? std::optional(std::move(value)) : std::nullopt;
  }

 private:
  void SkipBlanks() {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size()));
  }

  bool Take(char c) {
    SkipBlanks();
    if (!rest_.starts_with(c)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  bool Literal(std::string_view word) {
    if (!rest_.starts_with(word)) return false;
    rest_.remove_prefix(word.size());
    return true;
  }

  bool Value(JsonValue& value, int depth) {
    if (depth > kMaxDepth) return false;
    SkipBlanks();
    if (rest_.empty()) return false;
    switch (rest_.front()) {
      case '{':
        return Object(value, depth);
      case '[':
        return Array(value, depth);
      case '"':
        value.kind = JsonValue::Kind::kString;
        return String(value.text);
      case 'n':
        return Literal("null");
      case 't':
      case 'f':
        value.kind = JsonValue::Kind::kBoolean;
        value.boolean = rest_.front() == 't';
        return Literal(value.boolean ? "true" : "false");
      default:
        return Number(value);
    }
  }

  bool Number(JsonValue& value) {
    const auto end = std::min(rest_.find_first_not_of("+-.0123456789eE"), rest_.size());
    if (end == 0) return false;
    value.kind = JsonValue::Kind::kNumber;
    value.text = rest_.substr(0, end);
    rest_.remove_prefix(end);
    return true;
  }

  bool Array(JsonValue& value, int depth) {
    value.kind = JsonValue::Kind::kArray;
    Take('[');
    if (Take(']')) return true;
    do {
      if (!Value(value.items.emplace_back(), depth + 1)) return false;
    } while (Take(','));
    return Take(']');
  }

  bool Object(JsonValue& value, int depth) {
    value.kind = JsonValue::Kind::kObject;
    Take('{');
    if (Take('}')) return true;
    do {
      SkipBlanks();
      value.members.emplace_back(std::string(), JsonValue());
      auto& [name, member] = value.members.back();
      if (!String(name) || !Take(':') || !Value(member, depth + 1)) return false;
    } while (Take(','));
    return Take('}');
  }

  bool String(std::string& text) {
    if (!Take('"')) return false;
    while (!rest_.empty()) {
      const auto end = rest_.find_first_of("\"\\");
      if (end == rest_.npos) return false;
      text += rest_.substr(0, end);
      rest_.remove_prefix(end);
      if (Take('"')) return true;
      if (!(rest_.starts_with("\\u") ? UnicodeEscapes(text) : SimpleEscape(text))) return false;
    }
    return false;
  }

  bool SimpleEscape(std::string& text) {
    static constexpr std::string_view kNames = "\"\\/bfnrt";
    static constexpr std::string_view kCharacters = "\"\\/\b\f\n\r\t";
    if (rest_.size() < 2) return false;
    const auto index = kNames.find(rest_[1]);
    if (index == kNames.npos) return false;
    text += kCharacters[index];
    rest_.remove_prefix(2);
    return true;
  }

  // A run of escapes, in which surrogates can form pairs.
  bool UnicodeEscapes(std::string& text) {
    std::u16string units;
    while (rest_.starts_with("\\u")) {
      if (rest_.size() < 6) return false;
      unsigned unit = 0;
      const char* const digits = rest_.data() + 2;
      const auto [end, error] = std::from_chars(digits, digits + 4, unit, 16);
      if (error != std::errc() || end != digits + 4) return false;
      units += static_cast<char16_t>(unit);
      rest_.remove_prefix(6);
    }
    text += Hestra::MakeStdString(units);
    return true;
  }

  std::string_view rest_;
};

}  // namespace

const JsonValue& JsonValue::operator[](std::string_view name) const {
  static const JsonValue kNone;
  for (const auto& [key, value] : members) {
    if (key == name) return value;
  }
  return kNone;
}

std::int64_t JsonValue::Integer() const {
  std::int64_t number = 0;
  if (kind == Kind::kNumber) std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

std::vector<std::string> JsonValue::Texts() const {
  std::vector<std::string> texts;
  for (const JsonValue& item : items) {
    if (item.kind == Kind::kString) texts.push_back(item.text);
  }
  return texts;
}

std::optional<JsonValue> ParseJson(std::string_view text) { return Parser(text).Document(); }

}  // namespace Sorvik::foundation
