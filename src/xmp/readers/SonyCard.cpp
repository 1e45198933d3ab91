// SPDX-License-Identifier: MIT
#include "xmp/readers/SonyCard.h"

#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"

namespace Sorvik::xmp {
namespace {

using formats::sony::Material;
using formats::sony::MediaProfile;
using foundation::CallScope;
using foundation::CardFolder;
using foundation::JoinPath;
using foundation::ParentFolder;

constexpr std::string_view kCardFolder = "/BPAV/";
constexpr std::string_view kListName = "MEDIAPRO.XML";

// Returns ".../BPAV" of a path on an XDCAM EX card, otherwise empty.
std::string CardFolderOf(const std::string& xmlPath) {
  const auto at = xmlPath.rfind(kCardFolder);
  return at == xmlPath.npos ? std::string() : xmlPath.substr(0, at + kCardFolder.size() - 1);
}

// The offset of the last "M01.XML" in a file name, ignoring case; npos if there is none.
std::size_t LastClipXmlEnd(std::string_view name) {
  static constexpr std::string_view kEnd = "M01.XML";
  for (std::size_t at = name.size(); at-- > 0;) {
    if (foundation::EqualIgnoringCase(name.substr(at, kEnd.size()), kEnd)) return at;
  }
  return name.npos;
}

struct ListRecord {
  std::shared_ptr<const MediaProfile> list;  // null if there is none
};

std::shared_ptr<const MediaProfile> ReadList(const std::string& folder) {
  return CallScope::Remember<ListRecord>(
             folder,
             [&folder] {
               const auto name = CardFolder::Of(folder)->Find(kListName);
               if (!name) return ListRecord{};
               return ListRecord{MediaProfile::Of(JoinPath(folder, *name))};
             })
      ->list;
}

// The list that contains the clip is at the root of the card, otherwise in the parent of the clips'
// folder.
std::shared_ptr<const MediaProfile> ListOfClip(const std::string& xmlPath) {
  const std::string card = CardFolderOf(xmlPath);
  const std::string folder = card.empty() ? std::string(ParentFolder(ParentFolder(xmlPath))) : card;
  return folder.empty() ? nullptr : ReadList(folder);
}

}  // namespace

std::shared_ptr<const Material> MaterialOfClip(const std::string& xmlPath) {
  const auto list = ListOfClip(xmlPath);
  if (!list) return nullptr;
  return {list, list->FindMaterial(foundation::FileName(xmlPath))};
}

bool IsOnXDCAMEX(const std::string& xmlPath) { return !CardFolderOf(xmlPath).empty(); }

std::string TakeOfClip(const std::string& xmlPath) {
  const std::string card = CardFolderOf(xmlPath);
  const auto list = card.empty() ? nullptr : ReadList(card);
  if (list == nullptr) return {};
  const std::string_view name = foundation::FileName(xmlPath);
  const Material* clip = list->FindMaterial(name);
  if (clip == nullptr) {
    // Lists may contain only the name of the essence.
    const auto end = LastClipXmlEnd(name);
    if (end != name.npos) clip = list->FindMaterial(std::string(name.substr(0, end)) + ".MP4");
  }
  const Material* take = clip == nullptr ? nullptr : list->FindTake(clip->umid);
  return take == nullptr ? std::string() : take->umid;
}

}  // namespace Sorvik::xmp
