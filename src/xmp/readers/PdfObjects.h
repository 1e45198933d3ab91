// SPDX-License-Identifier: MIT
// The syntax of PDF objects.
// Facts: ISO 32000-1, 7.2 and 7.3.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace Sorvik::xmp {

// Splits text into tokens: names with their "/", strings with their delimiters, "<<", ">>", "[",
// "]", numbers and keywords. White space and comments are skipped.
class PdfLexer {
 public:
  explicit PdfLexer(std::string_view text) : text_(text) {}

  // Returns the next token; empty at the end.
  std::string_view Next();
  // Returns the text of the next object: a token, an array or dictionary with its delimiters, or a
  // reference such as "12 0 R". Empty at the end and for an unclosed object.
  std::string_view NextObject();
  // The offset after the last token.
  std::size_t Offset() const noexcept { return at_; }

 private:
  std::string_view Take(std::size_t end);
  std::string_view String();

  std::string_view text_;
  std::size_t at_ = 0;
};

// Returns the value of a key of a dictionary, which starts with "<<"; empty if it is missing.
// `key` includes its "/".
std::string_view PdfValue(std::string_view dictionary, std::string_view key);

// Returns the object number of a reference; nullopt for other objects.
std::optional<std::uint64_t> PdfReference(std::string_view object);

// Returns a non-negative integer; nullopt for other objects.
std::optional<std::uint64_t> PdfInteger(std::string_view object);

}  // namespace Sorvik::xmp
