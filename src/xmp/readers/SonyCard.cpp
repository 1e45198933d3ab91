// SPDX-License-Identifier: MIT
#include "xmp/readers/SonyCard.h"

#include <unordered_map>
#include <vector>

#include "foundation/CallScope.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "foundation/sony/TakePlaylist.h"

namespace Sorvik::xmp {
namespace {

namespace PathUtils = Hestra::PathUtils;

using foundation::CallScope;
using foundation::sony::Material;
using foundation::sony::MediaProfile;
using foundation::sony::TakePlaylist;
using Hestra::MakeStdString;
using Hestra::MakeString;
using Hestra::UTF16String;
using tarnwick::utility::FoldCase;

constexpr std::string_view kCardFolder = "/BPAV/";

// ".../BPAV" of a path on an XDCAM EX card, else empty.
std::string CardFolderOf(const std::string& xmlPath) {
  const auto at = xmlPath.rfind(kCardFolder);
  return at == xmlPath.npos ? std::string() : xmlPath.substr(0, at + kCardFolder.size() - 1);
}

// The material list in `folder` under its name in any case; empty if there is none.
UTF16String ListIn(const std::string& folder) {
  const auto items = Hestra::Directory::GetItems(folder);
  if (!items) return {};
  for (const platform::FolderItem& item : *items) {
    if (item.kind == platform::FileKind::kRegular &&
        FoldCase(MakeString(item.name)) == u"mediapro.xml") {
      return MakeString(folder + platform::kSeparator + item.name);
    }
  }
  return {};
}

struct ListRecord {
  std::shared_ptr<const MediaProfile> list;  // null if there is none
};

std::shared_ptr<const MediaProfile> ReadList(const std::string& folder) {
  return CallScope::Remember<ListRecord>(folder,
                                         [&folder] {
                                           const UTF16String path = ListIn(folder);
                                           if (path.empty()) return ListRecord{};
                                           return ListRecord{MediaProfile::Of(path)};
                                         })
      ->list;
}

std::string FolderAbove(const std::string& path) {
  const auto slash = path.rfind(platform::kSeparator);
  return slash == path.npos ? std::string() : path.substr(0, slash);
}

// The list that knows the clip lies at the top of a card, and otherwise above the clips' folder.
std::shared_ptr<const MediaProfile> ListOfClip(const std::string& xmlPath) {
  const std::string card = CardFolderOf(xmlPath);
  const std::string folder = card.empty() ? FolderAbove(FolderAbove(xmlPath)) : card;
  return folder.empty() ? nullptr : ReadList(folder);
}

// Which take names a umid, by the playlists of the card alone.
struct PlaylistRecord {
  std::unordered_map<UTF16String, std::string> takes;  // by folded umid
};

PlaylistRecord ReadPlaylists(const UTF16String& takesFolder) {
  PlaylistRecord record;
  std::vector<UTF16String> files;
  std::vector<UTF16String> takes;
  Hestra::Directory::GetContainedFileAndDirectoryPaths(takesFolder, files, takes);
  for (const UTF16String& take : takes) {
    for (const UTF16String& path : Hestra::Directory::GetContainedFilePaths(take, u".SMI")) {
      const auto playlist = TakePlaylist::Read(path);
      if (!playlist) continue;
      const UTF16String name =
          playlist->umid.empty() ? PathUtils::GetFilePart(path) : playlist->umid;
      for (const UTF16String& source : playlist->sources) {
        if (!source.empty()) record.takes.emplace(FoldCase(source), MakeStdString(name));
      }
    }
  }
  return record;
}

std::string TakeByPlaylists(const std::string& card, std::string_view umid) {
  const std::string folder = card + "/TAKR";
  const auto record = CallScope::Remember<PlaylistRecord>(
      folder, [&folder] { return ReadPlaylists(MakeString(folder)); });
  const auto found = record->takes.find(FoldCase(MakeString(umid)));
  return found == record->takes.end() ? std::string() : found->second;
}

}  // namespace

std::shared_ptr<const Material> MaterialOfClip(const std::string& xmlPath) {
  const auto list = ListOfClip(xmlPath);
  if (!list) return nullptr;
  return {list, list->OfFile(PathUtils::GetFullFilePart(MakeString(xmlPath)))};
}

bool IsOnXDCAMEX(const std::string& xmlPath) { return !CardFolderOf(xmlPath).empty(); }

std::string TakeOfClip(const std::string& xmlPath, std::string_view umid) {
  const std::string card = CardFolderOf(xmlPath);
  if (card.empty()) return {};
  const auto list = ReadList(card);
  if (!list || !list->IsReadable()) {
    return umid.empty() ? std::string() : TakeByPlaylists(card, umid);
  }
  const Material* take = list->TakeWith(MakeString(umid));
  if (take == nullptr) {
    const auto material = MaterialOfClip(xmlPath);
    if (material) take = list->TakeWith(material->umid);
  }
  return take == nullptr ? std::string() : MakeStdString(take->umid);
}

}  // namespace Sorvik::xmp
