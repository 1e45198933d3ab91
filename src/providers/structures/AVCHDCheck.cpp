// SPDX-License-Identifier: MIT
#include <array>
#include <optional>
#include <set>
#include <string>

#include "formats/avchd/Playlist.h"
#include "foundation/CallScope.h"
#include "foundation/FolderNames.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "providers/common/StructureParts.h"
#include "providers/structures/AVCHDUtils.h"
#include "providers/structures/ProviderAVCHD.h"
namespace Sorvik {
namespace {

namespace Directory = Hestra::Directory;
namespace PathUtils = Hestra::PathUtils;
using foundation::FolderNames;

constexpr std::array kStreamExtensions{"MTS", "mts", "M2TS", "m2ts"};
constexpr std::array kClipInfoExtensions{"clpi", "CLP", "CPI"};

// The parts of one card, with what the playlists have named so far.
struct Card {
  std::string bdmv;
  StructureFindings findings;
  std::set<std::string> named;
};

std::string FindBDMV(const std::string& path) {
  const std::string direct = path + "/BDMV";
  return PathUtils::IsDirectory(Hestra::MakeString(direct)) ? direct : path + "/AVCHD/BDMV";
}

template <std::size_t N>
std::optional<std::string> FindPart(const std::string& folder, const std::string& title,
                                    const std::array<const char*, N>& extensions) {
  for (const char* extension : extensions) {
    const std::string name = title + "." + extension;
    if (FolderNames::Of(folder)->Holds(name)) return name;
  }
  return std::nullopt;
}

void CheckClip(const std::string& clip, const std::string& entryKey, Card& card) {
  if (!card.named.insert(clip).second) return;
  const std::string streams = card.bdmv + "/STREAM";
  const std::string clipInfos = card.bdmv + "/CLIPINF";
  if (!FindPart(streams, clip, kStreamExtensions)) {
    card.findings.missing.push_back({entryKey, "stream", streams + "/" + clip + ".MTS"});
  }
  if (!FindPart(clipInfos, clip, kClipInfoExtensions)) {
    card.findings.missing.push_back(
        {entryKey, "clip information", clipInfos + "/" + clip + ".CPI"});
  }
}

void CheckPlaylist(const std::string& path, Card& card) {
  std::string entryKey;
  for (const auto& item : formats::avchd::LoadPlaylist(path)->items) {
    const std::string clip(item.ClipName());
    if (clip.find_first_not_of("0123456789") != clip.npos) continue;
    if (!item.ContinuesShot() || entryKey.empty()) {
      entryKey = FindPart(card.bdmv + "/STREAM", clip, kStreamExtensions).value_or(clip + ".MTS");
    }
    CheckClip(clip, entryKey, card);
  }
}

void AddFilesOf(const std::string& folder, std::u16string_view extension, bool recursive,
                Card& card) {
  for (const UTF16String& file :
       Directory::GetContainedFilePaths(Hestra::MakeString(folder), extension, recursive)) {
    card.findings.structureFiles.push_back(Hestra::MakeStdString(file));
  }
}

// Indexes, and the camera's copies of them. Most are listed with the clips as well.
void AddStructureFiles(Card& card) {
  for (const char16_t* extension : {u".bdmv", u".bdm"}) {
    AddFilesOf(card.bdmv, extension, false, card);
  }
  for (const char16_t* extension : {u".mpls", u".MPL"}) {
    AddFilesOf(card.bdmv + "/PLAYLIST", extension, false, card);
  }
  for (const char16_t* extension : {u".clpi", u".CLP", u".CPI"}) {
    AddFilesOf(card.bdmv + "/CLIPINF", extension, false, card);
  }
  AddFilesOf(card.bdmv + "/BACKUP", {}, true, card);
}

}  // namespace

StructureFindings ProviderAVCHD::CheckStructure(const std::string& path) const {
  const foundation::CallScope scope;
  Card card{FindBDMV(path), {}, {}};
  for (const UTF16String& file : AVCHDUtils::ListPlaylists(Hestra::MakeString(card.bdmv))) {
    CheckPlaylist(Hestra::MakeStdString(file), card);
  }
  // Playlists alone decide what is a clip, and a clip's shot is looked for in some of them only: a
  // stream can be named and belong to no entry all the same.
  AddUnreachedMedia(*this, path, {card.bdmv + "/STREAM"}, card.findings);
  AddStructureFiles(card);
  return std::move(card.findings);
}

}  // namespace Sorvik
