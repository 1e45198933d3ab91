// SPDX-License-Identifier: MIT
// A contact sheet: one self-contained HTML file that works offline.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

struct SheetClip {
  std::string name;
  std::string png;  // a PNG file; empty if there is no picture
  std::vector<std::pair<std::string, std::string>> facts;  // label and text
};

std::string SheetHtml(const std::string& path, const std::string& provider,
                      const std::vector<SheetClip>& clips);

// Escapes markup, and replaces characters that HTML doesn't allow by U+FFFD.
std::string HtmlText(std::string_view text);

}  // namespace host
