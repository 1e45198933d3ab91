// SPDX-License-Identifier: MIT
// A contact sheet: one self-contained HTML file that works offline, written in parts: SheetBegin,
// then each clip, then SheetEnd.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

struct SheetClip {
  std::string name;
  std::string key;      // as `sorvik ls` shows it
  std::string path;     // the main file; empty if there is none
  std::string picture;  // URL of the picture; empty if there is none
  std::vector<std::pair<std::string, std::string>> facts;  // label and text
};

struct SheetPage {
  std::string path;
  std::string provider;
  std::string language;                                     // such as "de-DE"
  std::vector<std::pair<std::string, std::string>> totals;  // label and text
  std::size_t clips = 0;                                    // number of clips
};

std::string SheetBegin(const SheetPage& page);
std::string SheetClipHtml(const SheetClip& clip);
std::string SheetEnd();

// Returns the URL of an absolute path.
std::string FileUrl(std::string_view path);
// Escapes a path for the part of a URL after the scheme.
std::string UrlPath(std::string_view path);

// Escapes markup, and replaces characters that HTML doesn't allow by U+FFFD.
std::string HtmlText(std::string_view text);

}  // namespace host
