// SPDX-License-Identifier: MIT
// Text for people.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

// Control characters, and bytes that are no UTF-8, as \xNN: no name on a card may drive a terminal.
std::string EscapedForTerminal(std::string_view text);

// The number of terminal cells that UTF-8 text takes.
std::size_t CellWidth(std::string_view text);

// The length in bytes of the UTF-8 sequence at the beginning of `text`, 0 if there is none that is
// well-formed; `character` receives its code point.
std::size_t DecodeUTF8(std::string_view text, char32_t& character);

// "1.4 MB": powers of 1000, as on the labels of cards.
std::string SizeText(unsigned long long bytes);

// A date text with the fraction of its seconds cut off; any other text as it stands.
std::string WithoutFraction(std::string_view text);

}  // namespace host
