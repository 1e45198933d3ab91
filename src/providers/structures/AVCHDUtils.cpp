// SPDX-License-Identifier: MIT
#include "providers/structures/AVCHDUtils.h"

#include <algorithm>
#include <unordered_set>

#include "foundation/FolderNames.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "foundation/tarnwick/FileSupport.h"

namespace Sorvik::AVCHDUtils {
namespace {

using formats::avchd::PlayItem;
using foundation::FolderNames;
using tarnwick::filesupport::CompareFileNames;
using tarnwick::filesupport::Dir;
using tarnwick::filesupport::File;

constexpr char16_t kBDMV[] = u"BDMV";
constexpr char16_t kStream[] = u"STREAM";
constexpr char16_t kClipInfo[] = u"CLIPINF";
constexpr char16_t kPlaylist[] = u"PLAYLIST";

constexpr std::size_t kClipNameLength = 5;

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

// Collects the run of items that holds the target: from the last one that starts a shot up to the
// next.
class PlayItemClipFinder final : public PlayItemVisitor {
 public:
  PlayItemClipFinder(const std::string& target, bool& found, std::vector<std::string>& clips)
      : target_(target), found_(found), clips_(clips) {}

  bool Visit(const PlayItem& item) override {
    if (!item.ContinuesShot()) {
      if (found_) return false;
      clips_.clear();
    }
    clips_.emplace_back(item.ClipName());
    if (!found_) found_ = item.ClipName() == target_;
    return true;
  }

 private:
  const std::string& target_;
  bool& found_;
  std::vector<std::string>& clips_;
};

bool IsClipName(const UTF16String& title) {
  return title.size() == kClipNameLength &&
         std::ranges::all_of(title, [](char16_t c) { return c >= u'0' && c <= u'9'; });
}

}  // namespace

void ForEachPlayItem(const UTF16String& path, PlayItemVisitor& visitor) {
  const auto playlist = formats::avchd::LoadPlaylist(Hestra::MakeStdString(path));
  for (const PlayItem& item : playlist->items) {
    if (!visitor.Visit(item)) return;
  }
}

void FindClipFiles(const UTF16String& streamFolder, const std::vector<std::string>& names,
                   std::vector<UTF16String>& out) {
  const UTF16String prefix = Hestra::PathUtils::AddTrailingSlash(streamFolder);
  const auto folder =
      FolderNames::Of(Hestra::MakeStdString(Hestra::PathUtils::RemoveTrailingSlash(streamFolder)));
  for (const std::string& name : names) {
    for (const auto* extension : {".MTS", ".m2ts"}) {
      if (!folder->Holds(name + extension)) continue;
      out.push_back(prefix + Hestra::MakeString(name + extension));
      break;
    }
  }
}

std::vector<UTF16String> ListPlaylists(const UTF16String& bdmv) {
  namespace PathUtils = Hestra::PathUtils;
  std::vector<UTF16String> playlists =
      Hestra::Directory::GetContainedFilePaths(PathUtils::CombinePaths(bdmv, kPlaylist));
  PathUtils::FilterHiddenFiles(playlists);
  std::erase_if(playlists, [](const UTF16String& path) {
    const UTF16String extension = PathUtils::GetExtensionPart(path);
    return extension != u".MPL" && extension != u".mpls";
  });
  return playlists;
}

void GetShotHeadClips(const UTF16String& playlist, std::vector<UTF16String>& out) {
  const Dir stream = File(playlist).Parent().Parent().SubDir(kStream);
  if (!FolderNames::Of(Hestra::MakeStdString(stream.Parent().FullPath()))
           ->HoldsFolder(Hestra::MakeStdString(stream.GetName()))) {
    return;
  }
  std::vector<std::string> names;
  GetShotHeadNames(playlist, names);
  FindClipFiles(stream.FullPath(), names, out);
}

void GetShotClips(const UTF16String& streamFile, std::vector<UTF16String>& out) {
  const auto shot = formats::avchd::FindShotOfStream(Hestra::MakeStdString(streamFile));
  if (!shot) return;
  std::vector<std::string> names;
  std::unordered_set<std::string_view> seen;
  for (std::size_t i = shot->first; i < shot->end; ++i) {
    const std::string_view name = shot->playlist->items[i].ClipName();
    if (seen.insert(name).second) names.emplace_back(name);
  }
  FindClipFiles(File(streamFile).Parent().FullPath(), names, out);
}

void GetShotHeadNames(const UTF16String& playlist, std::vector<std::string>& names) {
  ShotHeadClipFinder finder(names);
  ForEachPlayItem(playlist, finder);
}

bool FindShotOfClip(const std::string& clip, const UTF16String& playlist,
                    std::vector<std::string>& names) {
  bool found = false;
  PlayItemClipFinder finder(clip, found, names);
  ForEachPlayItem(playlist, finder);
  return found;
}

bool IsStructureFile(const UTF16String& path) {
  const File file(path);
  if (!IsClipName(file.GetTitle())) return false;
  const UTF16String extension = file.GetExtension(true);
  const bool isStream = extension == u".mts" || extension == u".m2ts";
  if (!isStream && extension != u".cpi" && extension != u".clpi") return false;
  const Dir folder = file.Parent();
  const char16_t* const expected = isStream ? kStream : kClipInfo;
  if (folder.IsTopLevelDir() || CompareFileNames(folder.GetName(), expected) != 0) return false;
  const Dir root = folder.Parent();
  if (CompareFileNames(root.GetName(), kBDMV) != 0) return false;
  return root.SubDir(kPlaylist).Exists() && root.SubDir(isStream ? kClipInfo : kStream).Exists();
}

}  // namespace Sorvik::AVCHDUtils
