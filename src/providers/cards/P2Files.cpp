// SPDX-License-Identifier: MIT
// The files of P2 cards by the clip whose id they bear.
#include <algorithm>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "foundation/CallScope.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "providers/cards/P2Shots.h"

namespace Sorvik::p2 {
namespace {

namespace PathUtils = Hestra::PathUtils;
using foundation::Lookup;
using Hestra::MakeString;
using platform::FileKind;
using platform::FolderItem;
using tarnwick::utility::FoldCase;

// The folders of a card in the order in which they are reported.
constexpr std::u16string_view kP2Folders[] = {kAudio, kClip,  kIcon,  kProxy,
                                              kVideo, kVoice, kAVClip};

constexpr std::size_t kIdLength = 6;
// A sound file's title is the id and two digits of the channel.
constexpr std::size_t kSoundTitleLength = 8;

// By clip id, files in the order of the scan.
struct P2FolderFileMap {
  std::unordered_map<UTF16String, std::vector<UTF16String>> files;
};

// The clip that a file in a P2 folder belongs to by its title; empty for none.
UTF16String ClipOfFile(const UTF16String& path, bool isAudio) {
  const UTF16String title = PathUtils::GetFilePart(path);
  if (isAudio)
    return title.size() == kSoundTitleLength ? title.substr(0, kIdLength) : UTF16String();
  return title.size() == kIdLength || title.size() == kSoundTitleLength ? title : UTF16String();
}

void Scan(const std::string& folder, int depthLeft, P2FolderFileMap& map) {
  const auto items = Hestra::Directory::GetItems(folder);
  if (!items) return;
  const UTF16String name = PathUtils::GetFullFilePart(MakeString(folder));
  const bool isAudio = name == kAudio;
  if (std::ranges::find(kP2Folders, name) != std::end(kP2Folders)) {
    const UTF16String prefix =
        PathUtils::AddTrailingSlash(PathUtils::ToNormalizedPath(MakeString(folder)));
    for (const FolderItem& item : *items) {
      if (item.kind != FileKind::kRegular) continue;
      UTF16String path = prefix + MakeString(item.name);
      const UTF16String clip = ClipOfFile(path, isAudio);
      if (!clip.empty()) map.files[clip].push_back(std::move(path));
    }
  }
  if (depthLeft <= 0) return;
  for (const FolderItem& item : *items) {
    if (item.kind != FileKind::kDirectory || item.isLink) continue;
    Scan(folder + platform::kSeparator + item.name, depthLeft - 1, map);
  }
}

std::shared_ptr<const P2FolderFileMap> FilesOf(const UTF16String& contents) {
  const std::string folder = Hestra::MakeStdString(contents);
  return foundation::CallScope::Remember<P2FolderFileMap>(folder, [&folder] {
    P2FolderFileMap map;
    Scan(folder, Hestra::Directory::kMaxListingDepth, map);
    return map;
  });
}

void AddFilesOfClips(const P2ShotInfo& shot, const P2FolderFileMap& map,
                     std::vector<UTF16String>& paths) {
  const UTF16String essence = FoldCase(EssenceForClipXml(shot.chosenClipPath));
  std::vector<UTF16String> clips = shot.otherClipPaths;
  clips.push_back(shot.primaryClipPath);
  std::set<UTF16String> done;  // clips of two cards may bear the same title
  for (const UTF16String& clip : clips) {
    const UTF16String title = PathUtils::GetFilePart(clip);
    const auto found = map.files.find(title);
    if (found == map.files.end() || !done.insert(title).second) continue;
    std::ranges::copy_if(found->second, std::back_inserter(paths),
                         [&essence](const auto& path) { return FoldCase(path) != essence; });
  }
}

}  // namespace

std::vector<UTF16String> CollectShotExtraPaths(const P2ShotInfo& shot) {
  std::vector<UTF16String> paths;
  for (const UTF16String& contents : shot.contentsRoots) {
    AddFilesOfClips(shot, *FilesOf(contents), paths);
    for (const std::u16string_view name : kP2Folders) {
      UTF16String folder = PathUtils::CombinePaths(contents, name);
      if (foundation::IsPresent(folder, Lookup::kListing)) paths.push_back(std::move(folder));
    }
  }
  return paths;
}

}  // namespace Sorvik::p2
