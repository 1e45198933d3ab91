// SPDX-License-Identifier: MIT
#include "ContactSheet.h"

#include "Paths.h"
#include "SorvikProvider/foundation/EscapedText.h"
#include "Text.h"
#include "Values.h"

namespace host {
namespace {

using Hestra::FileUrl;
using Hestra::XmlText;

constexpr std::string_view kStyle = R"(
:root { color-scheme: light dark; font: 14px/1.4 system-ui, sans-serif; }
body { margin: 1.5rem; }
header { display: flex; flex-wrap: wrap; gap: .5rem 1.5rem; align-items: baseline; }
h1 { font-size: 1.3rem; margin: 0; overflow-wrap: anywhere; }
header p { margin: 0; opacity: .7; }
input { font: inherit; padding: .3rem .6rem; min-width: 16rem; margin: 1rem 0; }
main { display: grid; grid-template-columns: repeat(auto-fill, minmax(14rem, 1fr)); gap: 1rem; }
article { border: 1px solid #8886; border-radius: .4rem; padding: .7rem; break-inside: avoid;
          content-visibility: auto; contain-intrinsic-size: auto 18rem; }
article[hidden] { display: none; }
.picture { height: 7rem; display: flex; align-items: center; justify-content: center;
           background: #8882; border-radius: .3rem; margin-bottom: .5rem; }
.picture img { width: 100%; height: 100%; object-fit: contain; }
a { color: inherit; }
a:focus-visible, input:focus-visible { outline: 2px solid Highlight; outline-offset: 2px; }
h2 { font-size: 1rem; margin: 0 0 .3rem; overflow-wrap: anywhere; }
dl { display: grid; grid-template-columns: auto 1fr; gap: 0 .7rem; margin: 0; font-size: .85rem; }
dt { opacity: .65; } dd { margin: 0; overflow-wrap: anywhere; }
.short { white-space: nowrap; }
@media print {
  input { display: none; }
  body { margin: 0; font-size: 10px; }
  main { grid-template-columns: repeat(4, 1fr); gap: .5rem; }
  article { content-visibility: visible; }
}
)";

constexpr std::string_view kScript = R"(
const box = document.querySelector("input"), count = document.querySelector("#count");
const clips = [...document.querySelectorAll("article")];
const texts = clips.map(clip => clip.textContent.toLowerCase());
const all = count.textContent;
function filter() {
  const words = box.value.toLowerCase().split(/\s+/).filter(Boolean);
  let shown = 0;
  clips.forEach((clip, i) => {
    const hide = !words.every(word => texts[i].includes(word));
    if (clip.hidden !== hide) clip.hidden = hide;
    shown += hide ? 0 : 1;
  });
  count.textContent = shown === clips.length ? all : `${shown} / ${all}`;
}
box.addEventListener("input", filter);
const seen = new IntersectionObserver(entries => entries.forEach(entry => {
  if (!entry.isIntersecting) return;
  entry.target.src = entry.target.dataset.src;
  seen.unobserve(entry.target);
}), { rootMargin: "100%" });
document.querySelectorAll("img[data-src]").forEach(image => seen.observe(image));
window.addEventListener("beforeprint", () => document.querySelectorAll("img[data-src]")
  .forEach(image => { image.src = image.dataset.src; }));
)";

// A date with time stays on one line.
constexpr std::size_t kMaxUnbrokenCells = 16;

std::string FactHtml(const std::string& label, const std::string& html) {
  return "<dt>" + XmlText(label) + "</dt><dd>" + html + "</dd>";
}

std::string TextFactHtml(const std::string& label, const std::string& text) {
  if (CellWidth(text) > kMaxUnbrokenCells) return FactHtml(label, XmlText(text));
  return "<dt>" + XmlText(label) + "</dt><dd class=\"short\">" + XmlText(text) + "</dd>";
}

}  // namespace

std::string SheetBegin(const SheetPage& page) {
  const std::string title = XmlText(FileName(page.path));
  const std::string filter = XmlText(Translated("$$$/Sorvik/Sheet/Filter=Filter"));
  std::string html = "<!DOCTYPE html>\n<html lang=\"" + XmlText(page.language) +
                     "\"><head><meta charset=\"utf-8\"><title>" + title +
                     "</title>\n<meta name=\"viewport\" content=\"width=device-width\">\n<style>";
  html += kStyle;
  html += "</style></head><body>\n<header><h1>" + title + "</h1><p>" + XmlText(page.provider) +
          "</p><p>" + XmlText(page.path) + "</p><p>" +
          XmlText(Translated("$$$/Sorvik/Sheet/Clips=Clips")) + ": <span id=\"count\">" +
          std::to_string(page.clips) + "</span></p>";
  for (const auto& [label, text] : page.totals) {
    html += "<p>" + XmlText(label) + ": " + XmlText(text) + "</p>";
  }
  return html + "</header>\n<input type=\"search\" placeholder=\"" + filter + "\" aria-label=\"" +
         filter + "\">\n<main>\n";
}

std::string SheetClipHtml(const SheetClip& clip) {
  std::string html = "<article><div class=\"picture\">";
  if (!clip.picture.empty()) {
    // Thousands of files with loading="lazy" delay the page by seconds; the script loads those in
    // view.
    const bool embedded = clip.picture.starts_with("data:");
    html += std::string("<img alt=\"\" ") + (embedded ? "src" : "data-src") + "=\"" +
            XmlText(clip.picture) + "\">";
  }
  html += "</div><h2>" + XmlText(clip.name) + "</h2><dl>";
  html += TextFactHtml(Translated("$$$/Sorvik/Column/Key=Key"), clip.key);
  if (!clip.path.empty()) {
    html +=
        FactHtml(Translated("$$$/Sorvik/Sheet/File=File"),
                 "<a href=\"" + FileUrl(clip.path) + "\">" + XmlText(FileName(clip.path)) + "</a>");
  }
  for (const auto& [label, text] : clip.facts) html += TextFactHtml(label, text);
  return html + "</dl></article>\n";
}

std::string SheetEnd() {
  return "</main>\n<script>" + std::string(kScript) + "</script>\n</body></html>\n";
}

}  // namespace host
