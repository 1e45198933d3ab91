// SPDX-License-Identifier: MIT
#include "SorvikProvider/foundation/EscapedText.h"

#include <algorithm>

#include "SorvikProvider/foundation/UTF16String.h"

namespace Hestra {
namespace {

bool IsHigh(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
bool IsLow(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

// The length of the character at the beginning of `text`; 0 if XML can't contain it.
std::size_t CharacterLength(std::u16string_view text) {
  if (IsHigh(text[0])) return text.size() > 1 && IsLow(text[1]) ? 2 : 0;
  const bool isControl = text[0] < 0x20 || (text[0] >= 0x7F && text[0] < 0xA0);
  return isControl || IsLow(text[0]) ? 0 : 1;
}

std::string CsvText(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + "\"";
}

}  // namespace

std::string XmlText(std::string_view text) {
  constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
  const UTF16String units = MakeString(text);
  std::string xml;
  for (std::u16string_view rest = units; !rest.empty();) {
    const std::size_t length = CharacterLength(rest);
    if (length == 0) {
      xml += kReplacement;
    } else if (rest[0] == u'&') {
      xml += "&amp;";
    } else if (rest[0] == u'<') {
      xml += "&lt;";
    } else if (rest[0] == u'>') {
      xml += "&gt;";
    } else if (rest[0] == u'"') {
      xml += "&quot;";
    } else {
      xml += MakeStdString(rest.substr(0, length));
    }
    rest.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return xml;
}

std::string UrlPath(std::string_view path) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
  std::string url;
  for (const char c : path) {
    if (kPlain.find(c) != std::string_view::npos) {
      url += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      url += {'%', kDigits[byte >> 4], kDigits[byte & 0xF]};
    }
  }
  return url;
}

std::string FileUrl(std::string_view path) { return "file://" + UrlPath(path); }

std::string CsvLine(const std::vector<std::string>& row) {
  std::string line;
  for (std::size_t i = 0; i < row.size(); ++i) line += (i == 0 ? "" : ",") + CsvText(row[i]);
  return line;
}

}  // namespace Hestra
