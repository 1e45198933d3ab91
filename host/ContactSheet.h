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

}  // namespace host
