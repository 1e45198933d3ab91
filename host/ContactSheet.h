// SPDX-License-Identifier: MIT
// A contact sheet: one HTML file that needs nothing else, neither a network nor other files.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

struct SheetClip {
  std::string name;
  std::string png;                                         // a whole PNG file; empty for no picture
  std::vector<std::pair<std::string, std::string>> facts;  // label and text
};

std::string SheetHtml(const std::string& path, const std::string& provider,
                      const std::vector<SheetClip>& clips);

// Text for HTML: markup escaped, and everything that can't stand in a document as U+FFFD.
std::string HtmlText(std::string_view text);

}  // namespace host
