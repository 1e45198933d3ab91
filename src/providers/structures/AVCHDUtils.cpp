// SPDX-License-Identifier: MIT
#include "providers/structures/AVCHDUtils.h"

#include <cstddef>
#include <string_view>
#include <unordered_set>

#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/tarnwick/FileSupport.h"
#include "providers/common/NameMask.h"
#include "providers/structures/AVCHDNames.h"

namespace Sorvik::AVCHDUtils {
namespace {

using formats::avchd::PlayItem;
using foundation::CardFolder;
using foundation::JoinPath;
using foundation::ParentFolder;
using Hestra::MakeStdString;

class ShotHeadClipFinder final : public PlayItemVisitor {
 public:
  explicit ShotHeadClipFinder(std::vector<std::string>& clips) : clips_(clips) {}

  bool Visit(const PlayItem& item) override {
    if (!item.ContinuesShot()) clips_.emplace_back(item.ClipName());
    return true;
  }

 private:
  std::vector<std::string>& clips_;
};

}  // namespace

void ForEachPlayItem(const UTF16String& path, PlayItemVisitor& visitor) {
  const auto playlist = formats::avchd::LoadPlaylist(MakeStdString(path));
  for (const PlayItem& item : playlist->items) {
    if (!visitor.Visit(item)) return;
  }
}

void FindClipFiles(const UTF16String& streamFolder, const std::vector<std::string>& names,
                   std::vector<UTF16String>& out) {
  const std::string path = MakeStdString(streamFolder);
  const auto folder = CardFolder::Of(path);
  for (const std::string& name : names) {
    for (const auto* extension : {".MTS", ".m2ts"}) {
      if (!folder->Contains(name + extension)) continue;
      out.push_back(Hestra::MakeString(JoinPath(path, name + extension)));
      break;
    }
  }
}

std::vector<std::string> ListPlaylists(const std::string& bdmv) {
  std::vector<std::string> playlists;
  const auto folder = CardFolder::Of(JoinPath(bdmv, avchd::kPlaylist));
  for (const std::string& name : folder->VisibleFiles()) {
    const std::string_view extension = foundation::FileExtension(name);
    if (extension == ".MPL" || extension == ".mpls") playlists.push_back(folder->PathOf(name));
  }
  return playlists;
}

void GetShotHeadClips(const UTF16String& playlist, std::vector<UTF16String>& out) {
  const std::string path = MakeStdString(playlist);
  const auto bdmv = CardFolder::Of(ParentFolder(ParentFolder(path)));
  if (!bdmv->ContainsFolder(avchd::kStream)) return;
  std::vector<std::string> names;
  GetShotHeadNames(playlist, names);
  FindClipFiles(Hestra::MakeString(bdmv->PathOf(avchd::kStream)), names, out);
}

void GetShotClips(const UTF16String& streamFile, std::vector<UTF16String>& out) {
  const std::string path = MakeStdString(streamFile);
  const auto shot = formats::avchd::FindShotOfStream(path);
  if (!shot) return;
  std::vector<std::string> names;
  // A small playlist can repeat a name 65,535 times.
  std::unordered_set<std::string_view> seen;
  for (std::size_t i = shot->first; i < shot->end; ++i) {
    const std::string_view name = shot->playlist->items[i].ClipName();
    if (seen.insert(name).second) names.emplace_back(name);
  }
  FindClipFiles(Hestra::MakeString(ParentFolder(path)), names, out);
}

void GetShotHeadNames(const UTF16String& playlist, std::vector<std::string>& names) {
  ShotHeadClipFinder finder(names);
  ForEachPlayItem(playlist, finder);
}

bool FindShotOfClip(const std::string& clip, const UTF16String& playlist,
                    std::vector<std::string>& names) {
  const auto shot =
      formats::avchd::FindShot(formats::avchd::LoadPlaylist(MakeStdString(playlist)), clip);
  if (!shot) return false;
  names.clear();
  for (std::size_t i = shot->first; i < shot->end; ++i) {
    names.emplace_back(shot->playlist->items[i].ClipName());
  }
  return true;
}

bool IsStructureFile(const UTF16String& path) {
  using namespace tarnwick::filesupport;
  const File file(path);
  if (!MatchesMask(MakeStdString(file.GetTitle()), avchd::kClipMask)) return false;
  const UTF16String extension = file.GetExtension(true);
  const bool isStream = extension == u".mts" || extension == u".m2ts";
  if (!isStream && extension != u".cpi" && extension != u".clpi") return false;
  const Dir folder = file.Parent();
  const Dir bdmv = folder.Parent();
  const auto isNamed = [](const Dir& dir, std::string_view name) {
    return CompareFileNames(dir.GetName(), Hestra::MakeString(name)) == 0;
  };
  if (!isNamed(folder, isStream ? avchd::kStream : avchd::kClipInfo)) return false;
  if (!isNamed(bdmv, avchd::kBDMV)) return false;
  const std::string card = MakeStdString(bdmv.FullPath());
  const std::string_view other = isStream ? avchd::kClipInfo : avchd::kStream;
  return foundation::FolderExistsOnDisk(JoinPath(card, avchd::kPlaylist)) &&
         foundation::FolderExistsOnDisk(JoinPath(card, other));
}

}  // namespace Sorvik::AVCHDUtils
