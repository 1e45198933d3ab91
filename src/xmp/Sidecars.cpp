// SPDX-License-Identifier: MIT
#include "xmp/Sidecars.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "foundation/CardFolder.h"
#include "foundation/Paths.h"

namespace Sorvik::xmp {
namespace {

using foundation::EqualIgnoringCase;
using foundation::FileName;
using foundation::JoinPath;
using foundation::ParentFolder;

bool EndsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && EqualIgnoringCase(text.substr(text.size() - end.size()), end);
}

// The parts of a path: "/x/CLIPR/A/B.C" has the folder "/x/CLIPR/A", the title "B" and the
// extension ".C".
struct PathParts {
  std::string_view folder;      // without a trailing separator
  std::string_view folderName;  // "A"
  std::string_view parent;      // "/x/CLIPR"
  std::string_view parentName;  // "CLIPR"
  std::string_view stem;        // the complete path without the extension
  std::string_view title;
  std::string_view extension;
};

PathParts PartsOf(std::string_view path) {
  PathParts parts;
  parts.folder = ParentFolder(path);
  parts.folderName = FileName(parts.folder);
  parts.parent = ParentFolder(parts.folder);
  parts.parentName = FileName(parts.parent);
  parts.title = foundation::FileStem(path);
  parts.extension = foundation::FileExtension(path);
  parts.stem = path.substr(0, path.size() - parts.extension.size());
  return parts;
}

std::string Join(std::string_view a, std::string_view b) { return std::string(a).append(b); }

// P2: one sidecar in CLIP for all files of a clip. Names of audio files have two digits more than
// the clip name.
std::vector<std::string> P2Candidates(const PathParts& parts) {
  if (!EqualIgnoringCase(parts.parentName, "CONTENTS")) return {};
  constexpr std::size_t kClipName = 6;
  return {JoinPath(JoinPath(parts.parent, "CLIP"), Join(parts.title.substr(0, kClipName), ".XMP"))};
}

// XDCAM and XDCAM EX: next to the clip's M01.XML with the same stem, otherwise named after the
// essence.
std::vector<std::string> SonyCandidates(const PathParts& parts) {
  constexpr std::string_view kXml = "M01.XML";
  const bool onDisc = EqualIgnoringCase(parts.folderName, "Clip");
  if (!onDisc && !EqualIgnoringCase(parts.parentName, "CLPR")) return {};
  const std::string fullPath = Join(parts.stem, parts.extension);
  if (EndsWith(fullPath, kXml)) {
    const auto clip = std::string_view(fullPath).substr(0, fullPath.size() - kXml.size());
    if (onDisc) return {Join(clip, "M01.XMP"), Join(clip, ".MXF.XMP")};
    return {Join(clip, "M01.XMP"), Join(clip, "V01.MXF.XMP"), Join(clip, "A01.MXF.XMP")};
  }
  std::string_view clip = parts.stem;
  const bool component = EndsWith(clip, "V01") || EndsWith(clip, "A01");
  if (!onDisc && component && EqualIgnoringCase(parts.extension, ".MXF")) clip.remove_suffix(3);
  return {Join(clip, "M01.XMP"), fullPath + ".XMP"};
}

// Canon XF: named after the clip, whose name is a prefix of the names of its spans.
std::vector<std::string> CanonXFCandidates(const PathParts& parts) {
  if (!EqualIgnoringCase(parts.parentName, "CLIPS001")) return {};
  constexpr std::size_t kClipName = 6;
  const std::string wanted = Join(parts.title.substr(0, kClipName), ".XMP");
  const auto sidecar = foundation::FindOnCard(JoinPath(parts.folder, wanted));
  return sidecar ? std::vector{*sidecar} : std::vector<std::string>();
}

// Adds a candidate without the spellings that a stronger candidate has already: next to a card's
// clip XML both are often the same file, which must not be read twice.
void AddCandidate(std::vector<std::string> spellings,
                  std::vector<std::vector<std::string>>& candidates) {
  std::erase_if(spellings, [&candidates](const std::string& spelling) {
    return std::any_of(candidates.begin(), candidates.end(), [&spelling](const auto& stronger) {
      return std::find(stronger.begin(), stronger.end(), spelling) != stronger.end();
    });
  });
  if (!spellings.empty()) candidates.push_back(std::move(spellings));
}

}  // namespace

std::vector<std::vector<std::string>> SidecarCandidates(const std::string& path) {
  const PathParts parts = PartsOf(path);
  std::vector<std::vector<std::string>> candidates{{path + ".xmp"}};
  for (const auto card : {P2Candidates, SonyCandidates, CanonXFCandidates})
    AddCandidate(card(parts), candidates);
  AddCandidate({Join(parts.stem, ".xmp"), Join(parts.stem, ".XMP")}, candidates);
  return candidates;
}

}  // namespace Sorvik::xmp
