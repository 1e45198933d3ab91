// SPDX-License-Identifier: MIT
#include "ContactSheet.h"

#include <algorithm>

#include "Paths.h"
#include "Picture.h"
#include "Text.h"

namespace host {
namespace {

constexpr std::string_view kStyle = R"(
:root { color-scheme: light dark; font: 14px/1.4 system-ui, sans-serif; }
body { margin: 1.5rem; }
header { display: flex; flex-wrap: wrap; gap: .5rem 1.5rem; align-items: baseline; }
h1 { font-size: 1.3rem; margin: 0; overflow-wrap: anywhere; }
header p { margin: 0; opacity: .7; }
input { font: inherit; padding: .3rem .6rem; min-width: 16rem; margin: 1rem 0; }
main { display: grid; grid-template-columns: repeat(auto-fill, minmax(14rem, 1fr)); gap: 1rem; }
article { border: 1px solid #8886; border-radius: .4rem; padding: .7rem; break-inside: avoid; }
article[hidden] { display: none; }
.picture { height: 7rem; display: flex; align-items: center; justify-content: center;
           background: #8882; border-radius: .3rem; margin-bottom: .5rem; }
.picture img { max-width: 100%; max-height: 100%; }
h2 { font-size: 1rem; margin: 0 0 .3rem; overflow-wrap: anywhere; }
dl { display: grid; grid-template-columns: auto 1fr; gap: 0 .7rem; margin: 0; font-size: .85rem; }
dt { opacity: .65; } dd { margin: 0; overflow-wrap: anywhere; }
@media print { input { display: none; } }
)";

constexpr std::string_view kScript = R"(
const box = document.querySelector("input"), count = document.querySelector("#count");
const clips = [...document.querySelectorAll("article")];
const texts = clips.map(clip => clip.textContent.toLowerCase());
function filter() {
  const words = box.value.toLowerCase().split(/\s+/).filter(Boolean);
  let shown = 0;
  clips.forEach((clip, i) => {
    clip.hidden = !words.every(word => texts[i].includes(word));
    shown += clip.hidden ? 0 : 1;
  });
  count.textContent = shown === clips.length ? `${shown}` : `${shown} / ${clips.length}`;
}
box.addEventListener("input", filter);
filter();
)";

std::string ClipHtml(const SheetClip& clip) {
  std::string html = "<article><div class=\"picture\">";
  if (!clip.png.empty()) {
    html += "<img alt=\"\" src=\"data:image/png;base64," + Base64(clip.png) + "\">";
  }
  html += "</div><h2>" + HtmlText(clip.name) + "</h2><dl>";
  for (const auto& [label, text] : clip.facts) {
    html += "<dt>" + HtmlText(label) + "</dt><dd>" + HtmlText(text) + "</dd>";
  }
  return html + "</dl></article>\n";
}

}  // namespace

std::string HtmlText(std::string_view text) {
  constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
  std::string html;
  while (!text.empty()) {
    char32_t character = 0;
    const std::size_t decoded = DecodeUTF8(text, character);
    const bool control = character < 0x20 || (character >= 0x7F && character < 0xA0);
    if (decoded == 0 || control) {
      html += kReplacement;
    } else if (character == U'&') {
      html += "&amp;";
    } else if (character == U'<') {
      html += "&lt;";
    } else if (character == U'>') {
      html += "&gt;";
    } else if (character == U'"') {
      html += "&quot;";
    } else {
      html += text.substr(0, decoded);
    }
    text.remove_prefix(std::max<std::size_t>(decoded, 1));
  }
  return html;
}

std::string SheetHtml(const std::string& path, const std::string& provider,
                      const std::vector<SheetClip>& clips) {
  const std::string title = HtmlText(FileName(path));
  std::string html = "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>" + title +
                     "</title>\n<meta name=\"viewport\" content=\"width=device-width\">\n<style>";
  html += kStyle;
  html += "</style></head><body>\n<header><h1>" + title + "</h1><p>" + HtmlText(provider) +
          "</p><p>" + HtmlText(path) + "</p><p id=\"count\">" + std::to_string(clips.size()) +
          "</p></header>\n<input type=\"search\" placeholder=\"Filter\" "
          "aria-label=\"Filter\">\n<main>\n";
  for (const SheetClip& clip : clips) html += ClipHtml(clip);
  html += "</main>\n<script>";
  html += kScript;
  return html + "</script>\n</body></html>\n";
}

}  // namespace host
