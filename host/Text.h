// SPDX-License-Identifier: MIT
// Text formatting for people.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

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

// Shortens a text to `width` terminal cells with an ellipsis in the middle, so that the end of a
// path stays visible.
std::string ShortenedMiddle(const std::string& text, std::size_t width);

// Breaks a text at blanks and after semicolons into lines of at most `width` cells. A longer word,
// such as a path, gets a line of its own.
std::vector<std::string> WrappedWords(const std::string& text, std::size_t width);

// Returns a frame size without the unit after the last number: "1920 x 1080".
std::string WithoutUnit(const std::string& text);

// Returns an ISO 8601 date with time as "YYYY-MM-DD HH:MM", in the local time zone if it has a zone
// offset; returns any other text unchanged.
std::string ShortLocalDate(const std::string& text);

// Returns the text with A to Z in lower case.
std::string LowerAscii(std::string_view text);

// Returns the seconds of a duration "HH:MM:SS:FF" (or with ';') at `rate` frames per second, or 0
// if it isn't one.
double DurationSeconds(const std::string& text, double rate);
// Returns seconds as "H:MM:SS".
std::string DurationText(double seconds);

}  // namespace host
