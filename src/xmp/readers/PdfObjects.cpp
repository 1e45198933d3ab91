// SPDX-License-Identifier: MIT
#include "xmp/readers/PdfObjects.h"

#include <algorithm>

#include "xmp/readers/CameraXml.h"

namespace Sorvik::xmp {

namespace {

constexpr std::string_view kWhiteSpace{"\0\t\n\f\r ", 6};
constexpr std::string_view kDelimiters{"\0\t\n\f\r ()<>[]{}/%", 16};

}  // namespace

std::string_view PdfLexer::Take(std::size_t end) {
  const std::size_t begin = at_;
  at_ = std::min(end, text_.size());
  return text_.substr(begin, at_ - begin);
}

// Parentheses nest; a backslash escapes the next character.
std::string_view PdfLexer::String() {
  std::size_t depth = 0;
  for (std::size_t i = at_; i < text_.size(); ++i) {
    if (text_[i] == '\\')
      ++i;
    else if (text_[i] == '(')
      ++depth;
    else if (text_[i] == ')' && --depth == 0)
      return Take(i + 1);
  }
  return Take(text_.size());
}

std::string_view PdfLexer::Next() {
  at_ = std::min(text_.find_first_not_of(kWhiteSpace, at_), text_.size());
  while (at_ < text_.size() && text_[at_] == '%') {
    at_ = std::min(text_.find_first_of("\r\n", at_), text_.size());
    at_ = std::min(text_.find_first_not_of(kWhiteSpace, at_), text_.size());
  }
  if (at_ == text_.size()) return {};
  const std::string_view rest = text_.substr(at_);
  if (rest.starts_with("<<") || rest.starts_with(">>")) return Take(at_ + 2);
  switch (rest[0]) {
    case '(':
      return String();
    case '<': {
      const std::size_t end = text_.find('>', at_);
      return Take(end == text_.npos ? end : end + 1);
    }
    case '>':
    case '[':
    case ']':
    case '{':
    case '}':
    case ')':
      return Take(at_ + 1);
    default:
      return Take(text_.find_first_of(kDelimiters, at_ + 1));
  }
}

std::string_view PdfLexer::NextObject() {
  const std::string_view first = Next();
  const std::size_t begin = at_ - first.size();
  if (first == "<<" || first == "[") {
    for (std::size_t depth = 1; depth > 0;) {
      const std::string_view token = Next();
      if (token.empty()) return {};
      if (token == "<<" || token == "[") ++depth;
      if (token == ">>" || token == "]") --depth;
    }
  } else if (PdfInteger(first)) {
    const std::size_t afterFirst = at_;
    const bool reference = PdfInteger(Next()) && Next() == "R";
    if (!reference) at_ = afterFirst;
  }
  return text_.substr(begin, at_ - begin);
}

std::string_view PdfValue(std::string_view dictionary, std::string_view key) {
  PdfLexer lexer(dictionary);
  if (lexer.Next() != "<<") return {};
  while (true) {
    const std::string_view name = lexer.Next();
    if (!name.starts_with('/')) return {};
    const std::string_view value = lexer.NextObject();
    if (name == key) return value;
  }
}

std::optional<std::uint64_t> PdfReference(std::string_view object) {
  PdfLexer lexer(object);
  const auto number = PdfInteger(lexer.Next());
  if (!PdfInteger(lexer.Next()) || lexer.Next() != "R") return std::nullopt;
  return number;
}

std::optional<std::uint64_t> PdfInteger(std::string_view object) { return ParseUnsigned(object); }

}  // namespace Sorvik::xmp
