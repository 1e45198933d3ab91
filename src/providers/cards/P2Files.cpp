// SPDX-License-Identifier: MIT
// The files of P2 cards, by the clip id in their names.
#include <algorithm>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "foundation/CallScope.h"
#include "foundation/Paths.h"
#include "providers/cards/P2Shots.h"

namespace Sorvik::p2 {
namespace {

using foundation::FileName;
using foundation::FileStem;

// The folders of a card in the order in which they are reported.
constexpr std::string_view kP2Folders[] = {kAudio, kClip, kIcon, kProxy, kVideo, kVoice, kAVClip};

// In 16-bit code units.
constexpr std::size_t kIdLength = 6;
// The stem of a sound file's name is the id and two digits of the channel.
constexpr std::size_t kSoundStemLength = 8;

// By clip id, files in the order of the scan.
struct P2FolderFileMap {
  std::unordered_map<std::string, std::vector<std::string>> files;
};

// The clip id in the name of a file in a P2 folder; empty if it has none.
std::string ClipOfFile(std::string_view path, bool isAudio) {
  const std::string_view stem = FileStem(path);
  const std::size_t length = foundation::CountCodeUnits(stem);
  if (isAudio) {
    return length == kSoundStemLength ? foundation::SubstrOfCodeUnits(stem, 0, kIdLength)
                                      : std::string();
  }
  return length == kIdLength || length == kSoundStemLength ? std::string(stem) : std::string();
}

P2FolderFileMap ScanContents(const std::string& contents) {
  P2FolderFileMap map;
  for (const std::string& file : foundation::ListFilesBelow(contents)) {
    const std::string_view folder = FileName(foundation::ParentFolder(file));
    if (std::ranges::find(kP2Folders, folder) == std::end(kP2Folders)) continue;
    const std::string clip = ClipOfFile(file, folder == kAudio);
    if (!clip.empty()) map.files[clip].push_back(foundation::NormalizedPath(file));
  }
  return map;
}

std::shared_ptr<const P2FolderFileMap> FilesOf(const std::string& contents) {
  return foundation::CallScope::Remember<P2FolderFileMap>(
      contents, [&contents] { return ScanContents(contents); });
}

void AddFilesOfClips(const P2ShotInfo& shot, const P2FolderFileMap& map,
                     std::vector<std::string>& paths) {
  const std::string essence = EssenceForClipXml(shot.chosenClipPath);
  std::vector<std::string> clips = shot.otherClipPaths;
  clips.push_back(shot.primaryClipPath);
  std::set<std::string_view> done;  // clips of two cards may have the same id
  for (const std::string& clip : clips) {
    const std::string_view id = FileStem(clip);
    const auto found = map.files.find(std::string(id));
    if (found == map.files.end() || !done.insert(id).second) continue;
    std::ranges::copy_if(found->second, std::back_inserter(paths), [&essence](const auto& path) {
      return !foundation::EqualIgnoringCase(path, essence);
    });
  }
}

}  // namespace

std::vector<std::string> CollectShotExtraPaths(const P2ShotInfo& shot) {
  std::vector<std::string> paths;
  for (const std::string& contents : shot.contentsRoots) {
    AddFilesOfClips(shot, *FilesOf(contents), paths);
    const auto folder = foundation::CardFolder::Of(contents);
    for (const std::string_view name : kP2Folders) {
      if (folder->Contains(name)) paths.push_back(folder->PathOf(name));
    }
  }
  return paths;
}

}  // namespace Sorvik::p2
