// SPDX-License-Identifier: MIT
#include "xmp/Sidecars.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "foundation/hestra/Directory.h"
#include "foundation/platform/FileSystem.h"

namespace Sorvik::xmp {
namespace {

constexpr char kSlash = platform::kSeparator;

// All names that decide here are ASCII.
bool SameName(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char x, char y) { return lower(x) == lower(y); });
}

bool EndsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && SameName(text.substr(text.size() - end.size()), end);
}

// A path in its parts: "/x/CLIPR/A/B.C" has the folder "/x/CLIPR/A", the title "B" and the
// extension ".C".
struct PathParts {
  std::string_view folder;      // without a trailing separator
  std::string_view folderName;  // "A"
  std::string_view parent;      // "/x/CLIPR"
  std::string_view parentName;  // "CLIPR"
  std::string_view stem;        // the whole path without the extension
  std::string_view title;
  std::string_view extension;
};

// The part of a path behind its last separator, and the part before it.
std::pair<std::string_view, std::string_view> SplitLast(std::string_view path) {
  const auto slash = path.rfind(kSlash);
  if (slash == path.npos) return {{}, path};
  return {path.substr(0, slash), path.substr(slash + 1)};
}

PathParts PartsOf(std::string_view path) {
  PathParts parts;
  std::string_view name;
  std::tie(parts.folder, name) = SplitLast(path);
  std::tie(parts.parent, parts.folderName) = SplitLast(parts.folder);
  parts.parentName = SplitLast(parts.parent).second;
  const auto dot = name.rfind('.');
  const bool hasExtension = dot != name.npos && dot != 0;
  parts.title = hasExtension ? name.substr(0, dot) : name;
  parts.extension = hasExtension ? name.substr(dot) : std::string_view();
  parts.stem = path.substr(0, path.size() - parts.extension.size());
  return parts;
}

std::string Join(std::string_view a, std::string_view b) { return std::string(a).append(b); }

// P2: one sidecar in CLIP for all files of a clip. Names of audio files have two digits more than
// the clip's.
std::vector<std::string> P2Places(const PathParts& parts) {
  if (!SameName(parts.parentName, "CONTENTS")) return {};
  constexpr std::size_t kClipName = 6;
  std::string place(parts.parent);
  place.append("/CLIP/").append(parts.title.substr(0, kClipName)).append(".XMP");
  return {place};
}

// XDCAM and XDCAM EX: beside the clip's M01.XML and under its stem, else named for the essence.
std::vector<std::string> SonyPlaces(const PathParts& parts) {
  constexpr std::string_view kXml = "M01.XML";
  const bool onDisc = SameName(parts.folderName, "Clip");
  if (!onDisc && !SameName(parts.parentName, "CLPR")) return {};
  const std::string whole = Join(parts.stem, parts.extension);
  if (EndsWith(whole, kXml)) {
    const auto clip = std::string_view(whole).substr(0, whole.size() - kXml.size());
    if (onDisc) return {Join(clip, "M01.XMP"), Join(clip, ".MXF.XMP")};
    return {Join(clip, "M01.XMP"), Join(clip, "V01.MXF.XMP"), Join(clip, "A01.MXF.XMP")};
  }
  std::string_view clip = parts.stem;
  const bool component = EndsWith(clip, "V01") || EndsWith(clip, "A01");
  if (!onDisc && component && SameName(parts.extension, ".MXF")) clip.remove_suffix(3);
  return {Join(clip, "M01.XMP"), whole + ".XMP"};
}

// Canon XF: named for the clip, whose name begins the names of its spans.
std::vector<std::string> CanonXFPlaces(const PathParts& parts) {
  if (!SameName(parts.parentName, "CLIPS001")) return {};
  constexpr std::size_t kClipName = 6;
  const std::string wanted = Join(parts.title.substr(0, kClipName), ".XMP");
  const auto items = Hestra::Directory::GetItems(std::string(parts.folder));
  if (items == nullptr) return {};
  for (const platform::FolderItem& item : *items) {
    if (SameName(item.name, wanted)) return {Join(parts.folder, "/") + item.name};
  }
  return {};
}

// Adds a place without the spellings that a stronger place has already: beside a card's clip XML
// both are often the same file, which isn't read twice.
void AddPlace(std::vector<std::string> spellings, std::vector<std::vector<std::string>>& places) {
  std::erase_if(spellings, [&places](const std::string& spelling) {
    return std::any_of(places.begin(), places.end(), [&spelling](const auto& stronger) {
      return std::find(stronger.begin(), stronger.end(), spelling) != stronger.end();
    });
  });
  if (!spellings.empty()) places.push_back(std::move(spellings));
}

}  // namespace

std::vector<std::vector<std::string>> SidecarPlaces(const std::string& path) {
  const PathParts parts = PartsOf(path);
  std::vector<std::vector<std::string>> places{{path + ".xmp"}};
  for (const auto card : {P2Places, SonyPlaces, CanonXFPlaces}) AddPlace(card(parts), places);
  AddPlace({Join(parts.stem, ".xmp"), Join(parts.stem, ".XMP")}, places);
  return places;
}

}  // namespace Sorvik::xmp
