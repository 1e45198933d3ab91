// SPDX-License-Identifier: MIT
// Text formatting for people.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

// Escapes control characters and invalid UTF-8 as \xNN, so that file names can't send escape
// sequences to a terminal.
std::string EscapedForTerminal(std::string_view text);

// Returns the width of UTF-8 text in terminal cells.
std::size_t CellWidth(std::string_view text);

// Returns the length in bytes of the UTF-8 sequence at the beginning of `text` and stores its code
// point in `character`; returns 0 if it is malformed.
std::size_t DecodeUTF8(std::string_view text, char32_t& character);

// Formats a size in powers of 1000: "1.4 MB".
std::string SizeText(unsigned long long bytes);

// Removes the fractional seconds of a date text; returns any other text unchanged.
std::string WithoutFraction(std::string_view text);

}  // namespace host
