// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "foundation/CallScope.h"
#include "foundation/FolderNames.h"
#include "foundation/avchd/Playlist.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "providers/structures/AVCHDUtils.h"
#include "providers/structures/StructureChecks.h"

namespace Sorvik {
namespace {

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
  for (const auto& item : foundation::avchd::LoadPlaylist(path)->items) {
    const std::string clip(item.ClipName());
    if (clip.find_first_not_of("0123456789") != clip.npos) continue;
    if (!item.ContinuesShot() || entryKey.empty()) {
      entryKey = FindPart(card.bdmv + "/STREAM", clip, kStreamExtensions).value_or(clip + ".MTS");
    }
    CheckClip(clip, entryKey, card);
  }
}

// The spellings by which a listing finds the streams that playlists name.
constexpr std::array kListedExtensions{"MTS", "m2ts"};

// Whether a listing gets at the stream `name` of a clip that a playlist names. Where the file
// system heeds case, a stream in another spelling is never found.
bool IsListed(const std::string& streams, const std::string& title, const std::string& name) {
  const auto items = Hestra::Directory::GetItems(streams);
  bool exact = false;
  for (const char* extension : kListedExtensions) {
    const std::string listed = title + "." + extension;
    if (name == listed) return true;
    exact = exact || std::any_of(items->begin(), items->end(),
                                 [&](const platform::FolderItem& i) { return i.name == listed; });
  }
  return !exact && FindPart(streams, title, kListedExtensions).has_value();
}

// Playlists alone decide what is a clip, so a stream that none names is never listed.
void AddUnreachedStreams(Card& card) {
  const std::string streams = card.bdmv + "/STREAM";
  for (const UTF16String& file :
       Hestra::Directory::GetContainedFilePaths(Hestra::MakeString(streams))) {
    if (!AVCHDUtils::IsStructureFile(file)) continue;
    const std::string title = Hestra::MakeStdString(PathUtils::GetFilePart(file));
    const std::string name = Hestra::MakeStdString(PathUtils::GetFullFilePart(file));
    if (!card.named.contains(title)) {
      card.findings.unreached.push_back({"", "stream in no playlist", streams + "/" + name});
    } else if (!IsListed(streams, title, name)) {
      card.findings.unreached.push_back(
          {"", "stream in an unusual spelling", streams + "/" + name});
    }
  }
}

void AddFilesOf(const std::string& folder, std::u16string_view extension, bool recursive,
                Card& card) {
  for (const UTF16String& file :
       Hestra::Directory::GetContainedFilePaths(Hestra::MakeString(folder), extension, recursive)) {
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

StructureFindings CheckAVCHDFolder(const std::string& path) {
  const foundation::CallScope scope;
  Card card{FindBDMV(path), {}, {}};
  const UTF16String playlists = Hestra::MakeString(card.bdmv + "/PLAYLIST");
  for (const auto* extension : {u".MPL", u".mpls"}) {
    for (const UTF16String& file : Hestra::Directory::GetContainedFilePaths(playlists, extension)) {
      CheckPlaylist(Hestra::MakeStdString(file), card);
    }
  }
  AddUnreachedStreams(card);
  AddStructureFiles(card);
  return std::move(card.findings);
}

}  // namespace Sorvik
