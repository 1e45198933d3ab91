// SPDX-License-Identifier: MIT
#include "SorvikProvider/foundation/JsonText.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "SorvikProvider/foundation/UTF16String.h"

namespace Hestra {
namespace {

bool IsHigh(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
bool IsLow(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

std::string Escape(char16_t unit) {
  switch (unit) {
    case u'"':
      return "\\\"";
    case u'\\':
      return "\\\\";
    case u'\n':
      return "\\n";
    case u'\t':
      return "\\t";
    default:
      break;
  }
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "\\u%04x", static_cast<unsigned>(unit));
  return text.data();
}

bool NeedsEscape(char16_t unit) {
  return unit < 0x20 || unit == u'"' || unit == u'\\' || (unit >= 0x7F && unit < 0xA0) ||
         IsHigh(unit) || IsLow(unit);
}

bool IsPlainAscii(char c) { return c >= 0x20 && c < 0x7F && c != '"' && c != '\\'; }

}  // namespace

void AppendJsonString(std::string& json, std::u16string_view text) {
  json += '"';
  while (!text.empty()) {
    const bool pair = text.size() > 1 && IsHigh(text[0]) && IsLow(text[1]);
    std::size_t length = pair ? 2 : 0;
    if (!pair) {
      while (length < text.size() && !NeedsEscape(text[length])) ++length;
    }
    if (length == 0) {
      json += Escape(text[0]);
      length = 1;
    } else {
      json += MakeStdString(text.substr(0, length));
    }
    text.remove_prefix(length);
  }
  json += '"';
}

void AppendJsonString(std::string& json, std::string_view text) {
  if (std::ranges::all_of(text, IsPlainAscii)) {
    json.append(1, '"').append(text).append(1, '"');
  } else {
    AppendJsonString(json, MakeString(text));
  }
}

}  // namespace Hestra
