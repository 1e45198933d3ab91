// SPDX-License-Identifier: MIT
#include "xmp/readers/SonyCard.h"

#include "foundation/CallScope.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"

namespace Sorvik::xmp {
namespace {

namespace PathUtils = Hestra::PathUtils;

using formats::sony::Material;
using formats::sony::MediaProfile;
using foundation::CallScope;
using Hestra::MakeStdString;
using Hestra::MakeString;
using Hestra::UTF16String;
using tarnwick::utility::FoldCase;

constexpr std::string_view kCardFolder = "/BPAV/";

// Returns ".../BPAV" of a path on an XDCAM EX card, otherwise empty.
std::string CardFolderOf(const std::string& xmlPath) {
  const auto at = xmlPath.rfind(kCardFolder);
  return at == xmlPath.npos ? std::string() : xmlPath.substr(0, at + kCardFolder.size() - 1);
}

// Returns the material list in `folder`, case-insensitive; empty if there is none.
UTF16String FindList(const std::string& folder) {
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
                                           const UTF16String path = FindList(folder);
                                           if (path.empty()) return ListRecord{};
                                           return ListRecord{MediaProfile::Of(path)};
                                         })
      ->list;
}

std::string ParentFolder(const std::string& path) {
  const auto slash = path.rfind(platform::kSeparator);
  return slash == path.npos ? std::string() : path.substr(0, slash);
}

// The list that contains the clip is at the root of the card, otherwise in the parent of the clips'
// folder.
std::shared_ptr<const MediaProfile> ListOfClip(const std::string& xmlPath) {
  const std::string card = CardFolderOf(xmlPath);
  const std::string folder = card.empty() ? ParentFolder(ParentFolder(xmlPath)) : card;
  return folder.empty() ? nullptr : ReadList(folder);
}

}  // namespace

std::shared_ptr<const Material> MaterialOfClip(const std::string& xmlPath) {
  const auto list = ListOfClip(xmlPath);
  if (!list) return nullptr;
  return {list, list->OfFile(PathUtils::GetFullFilePart(MakeString(xmlPath)))};
}

bool IsOnXDCAMEX(const std::string& xmlPath) { return !CardFolderOf(xmlPath).empty(); }

std::string TakeOfClip(const std::string& xmlPath) {
  const std::string card = CardFolderOf(xmlPath);
  const auto list = card.empty() ? nullptr : ReadList(card);
  if (list == nullptr) return {};
  const UTF16String name = PathUtils::GetFullFilePart(MakeString(xmlPath));
  const Material* clip = list->OfFile(name);
  if (clip == nullptr) {
    // Lists may contain only the name of the essence.
    const auto end = FoldCase(name).rfind(u"m01.xml");
    if (end != name.npos) clip = list->OfFile(name.substr(0, end) + u".MP4");
  }
  const Material* take = clip == nullptr ? nullptr : list->TakeWith(clip->umid);
  return take == nullptr ? std::string() : MakeStdString(take->umid);
}

}  // namespace Sorvik::xmp
