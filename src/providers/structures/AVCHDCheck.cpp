// SPDX-License-Identifier: MIT
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "formats/avchd/Playlist.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "providers/common/StructureParts.h"
#include "providers/structures/AVCHDNames.h"
#include "providers/structures/AVCHDUtils.h"
#include "providers/structures/ProviderAVCHD.h"

namespace Sorvik {
namespace {

using namespace avchd;  // NOLINT(google-build-using-namespace): this file is about these names
using foundation::JoinPath;

constexpr std::string_view kIndexExtensions[] = {".bdmv", ".bdm"};

// The findings of one card, with the clips that have been checked so far.
struct Card {
  std::string bdmv;
  StructureFindings findings;
  std::set<std::string> checkedClips;
};

void CheckPart(const char* kind, std::string_view subfolder, Extensions extensions,
               std::string_view expectedName, const std::string& clip, const std::string& entryKey,
               Card& card) {
  if (FindPartFile(card.bdmv, subfolder, clip, extensions)) return;
  card.findings.missing.push_back(
      {entryKey, kind, JoinPath(JoinPath(card.bdmv, subfolder), expectedName)});
}

void CheckClip(const std::string& clip, const std::string& entryKey, Card& card) {
  if (!card.checkedClips.insert(clip).second) return;
  CheckPart("stream", kStream, kStreamExtensions, clip + ".MTS", clip, entryKey, card);
  CheckPart("clip information", kClipInfo, kClipInfoExtensions, clip + ".CPI", clip, entryKey,
            card);
}

std::string StreamName(const std::string& clip, const std::string& bdmv) {
  const auto stream = FindPartFile(bdmv, kStream, clip, kStreamExtensions);
  return stream ? std::string(foundation::FileName(*stream)) : clip + ".MTS";
}

void CheckPlaylist(const std::string& path, Card& card) {
  std::string entryKey;
  for (const auto& item : formats::avchd::LoadPlaylist(path)->items) {
    const std::string clip(item.ClipName());
    if (clip.find_first_not_of("0123456789") != clip.npos) continue;
    if (!item.ContinuesShot() || entryKey.empty()) entryKey = StreamName(clip, card.bdmv);
    CheckClip(clip, entryKey, card);
  }
}

void AddFilesOf(const std::string& folder, Extensions extensions, Card& card) {
  const auto listed = foundation::CardFolder::Of(folder);
  for (const std::string_view extension : extensions) {
    for (const std::string& name : listed->Files(extension)) {
      card.findings.structureFiles.push_back(listed->PathOf(name));
    }
  }
}

// Adds the index files and the camera's copies of them. Most are extra paths of the clips, too.
void AddStructureFiles(Card& card) {
  AddFilesOf(card.bdmv, kIndexExtensions, card);
  AddFilesOf(JoinPath(card.bdmv, kPlaylist), kPlaylistExtensions, card);
  AddFilesOf(JoinPath(card.bdmv, kClipInfo), kClipInfoExtensions, card);
  for (std::string& file : foundation::ListFilesBelow(JoinPath(card.bdmv, kBackup))) {
    card.findings.structureFiles.push_back(std::move(file));
  }
}

}  // namespace

StructureFindings ProviderAVCHD::CheckStructure(const std::string& path) const {
  const foundation::CallScope scope;
  Card card{FindBDMVFolder(path), {}, {}};
  for (const std::string& playlist : AVCHDUtils::ListPlaylists(card.bdmv)) {
    CheckPlaylist(playlist, card);
  }
  // A stream that a playlist contains can still belong to no entry: a clip's shot is searched in
  // the playlists up to its number only.
  AddUnreachedMedia(*this, path, {JoinPath(card.bdmv, kStream)}, card.findings);
  AddStructureFiles(card);
  return std::move(card.findings);
}

}  // namespace Sorvik
