// SPDX-License-Identifier: MIT
#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/sony/MediaProfile.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "providers/cards/ProviderXDCAM.h"
#include "providers/cards/XDCAMFiles.h"
#include "providers/cards/XDCAMIndex.h"
#include "providers/common/CardParts.h"

namespace Sorvik {
namespace {

using formats::sony::Material;
using formats::sony::MaterialPart;
using formats::sony::MediaProfile;
using foundation::CardFolder;
using foundation::ExistsOnCard;
using foundation::JoinPath;
using foundation::Lookup;

// The parts of a clip as an index lists them. A clip of which nothing exists is a stale entry.
class ListedClip {
 public:
  explicit ListedClip(std::string key) : key_(std::move(key)) {}

  void Add(const char* role, std::string path, CardPart::Content content) {
    if (path.empty()) return;
    anyExists_ = anyExists_ || ExistsOnCard(path, Lookup::kListing);
    parts_.push_back(
        {.path = std::move(path), .role = role, .entryKeys = KeyList(key_), .content = content});
  }
  const std::string& Key() const { return key_; }

  // `staleSeverity` is that of a stale entry.
  void Describe(const std::string& indexPath, Finding::Severity staleSeverity,
                CardDescription& card) const {
    if (parts_.empty()) return;
    if (!anyExists_) {
      card.Report({Finding::Kind::kStale, staleSeverity, card_role::kEssence, parts_.front().path,
                   KeyList(key_),
                   "listed in " + std::string(foundation::FileName(indexPath)) +
                       ", but no file of the clip exists"});
      return;
    }
    for (const CardPart& part : parts_) card.Expect(part);
  }

 private:
  std::string key_;
  std::vector<CardPart> parts_;
  bool anyExists_ = false;
};

void ReportUnreadableIndex(const std::string& path, const char* what, CardDescription& card) {
  card.Report(Finding::Kind::kUnreadable, card_role::kIndex, path, {}, what);
}

struct RoleOfPart {
  const char* role;
  CardPart::Content content;
};

RoleOfPart RoleOf(const MaterialPart& part) {
  using Content = CardPart::Content;
  if (part.kind == MaterialPart::Kind::kProxy) return {card_role::kProxy, Content::kMedia};
  if (part.kind == MaterialPart::Kind::kComponent) return {card_role::kEssence, Content::kMedia};
  if (part.type == "XML") return {card_role::kClipRecord, Content::kXml};
  if (part.type == "JPG") return {card_role::kThumbnail, Content::kMedia};
  return {card_role::kRealTimeMeta, Content::kOpaque};
}

// The clip XML of a material is the key of its entry.
std::string KeyOf(const std::string& root, const Material& material) {
  for (const MaterialPart& part : material.parts) {
    if (part.kind != MaterialPart::Kind::kRelevantInfo || part.type != "XML") continue;
    return xdcam::PathOfUri(root, part.uri).value_or(std::string());
  }
  return {};
}

// Cards whose media isn't formatted as a disc name clips that were deleted.
Finding::Severity StaleSeverity(const std::string& root) {
  for (const std::string_view name : {"XDROOT", "M4ROOT"}) {
    if (foundation::EqualIgnoringCase(foundation::FileName(root), name)) {
      return Finding::Severity::kWarning;
    }
  }
  return Finding::Severity::kError;
}

// Adds the files of a clip that no index lists. `stem` is the path of its files without their ends.
void AddUnlistedClip(const std::string& key, const std::string& indexPath,
                     const std::vector<std::string>& files, CardDescription& card) {
  card.Report(Finding::Kind::kUnlisted, card_role::kClipRecord, key, {key},
              "not listed in " + std::string(foundation::FileName(indexPath)));
  for (const std::string& file : files) {
    const bool isXml = foundation::HasExtension(file, ".XML");
    card.Expect({.path = file,
                 .role = isXml ? card_role::kClipRecord : card_role::kEssence,
                 .entryKeys = {key},
                 .content = isXml ? CardPart::Content::kXml : CardPart::Content::kMedia,
                 .required = false});
  }
}

void AddUnlistedDiscClips(const std::string& root, const std::string& index,
                          const ContentMap& entries, const std::set<std::string>& listed,
                          CardDescription& card) {
  const auto sub = CardFolder::Of(JoinPath(root, "Sub"));
  for (const auto& [key, fields] : entries) {
    const std::string essence = xdcam::EssenceForClipXml(key, Lookup::kListing);
    if (essence.empty() || listed.contains(key) || !ExistsOnCard(essence, Lookup::kListing)) {
      continue;
    }
    if (xdcam::FindMaterial(root, foundation::FileName(essence)) != nullptr) continue;
    std::vector<std::string> files{key, essence};
    const std::string proxy = std::string(foundation::FileStem(essence)) + "S01";
    for (const char* extension : {".MXF", ".MP4"}) {
      if (sub->Contains(proxy + extension)) files.push_back(sub->PathOf(proxy + extension));
    }
    AddUnlistedClip(key, index, files, card);
  }
}

void DescribeDisc(const std::string& root, const ContentMap& entries, CardDescription& card) {
  const std::string index = JoinPath(root, "MEDIAPRO.XML");
  const auto list = MediaProfile::Of(index);
  card.Expect({.path = index, .role = card_role::kIndex});
  if (!list->IsReadable()) ReportUnreadableIndex(index, "not a material list", card);
  std::set<std::string> listed;
  for (const Material& material : list->Materials()) {
    ListedClip clip(KeyOf(root, material));
    listed.insert(clip.Key());
    if (const auto essence = xdcam::PathOfUri(root, material.uri)) {
      clip.Add(card_role::kEssence, *essence, CardPart::Content::kMedia);
    }
    for (const MaterialPart& part : material.parts) {
      const auto path = xdcam::PathOfUri(root, part.uri);
      const RoleOfPart role = RoleOf(part);
      if (path) clip.Add(role.role, *path, role.content);
    }
    clip.Describe(index, StaleSeverity(root), card);
  }
  if (list->IsReadable()) AddUnlistedDiscClips(root, index, entries, listed, card);
}

RoleOfPart RoleOf(xdcam::IndexedFile::Kind kind) {
  using Content = CardPart::Content;
  using Kind = xdcam::IndexedFile::Kind;
  switch (kind) {
    case Kind::kPlaylist:
      return {card_role::kPlaylist, Content::kXml};
    case Kind::kSubStream:
      return {card_role::kProxy, Content::kMedia};
    case Kind::kRealTimeMeta:
      return {card_role::kRealTimeMeta, Content::kOpaque};
    case Kind::kMeta:
      return {card_role::kClipRecord, Content::kXml};
    case Kind::kSound:
      break;
  }
  return {card_role::kSound, Content::kMedia};
}

void DescribeProavClip(const std::string& root, const std::string& index,
                       const xdcam::IndexedClip& indexed, CardDescription& card) {
  const std::string clpr = JoinPath(JoinPath(root, xdcam::kProav), xdcam::kClpr);
  const std::string folder = JoinPath(clpr, indexed.clipId);
  if (indexed.clipId.empty() || !foundation::IsInside(folder, clpr)) return;
  ListedClip clip(JoinPath(folder, indexed.clipId).append(xdcam::kClipXmlEnd));
  const auto add = [&](const RoleOfPart& role, const std::string& name) {
    const std::string path = JoinPath(folder, name);
    if (foundation::IsInside(path, root)) clip.Add(role.role, path, role.content);
  };
  for (const std::string& picture : indexed.pictures) {
    add({card_role::kEssence, CardPart::Content::kMedia}, picture);
  }
  for (const xdcam::IndexedFile& file : indexed.files) add(RoleOf(file.kind), file.name);
  clip.Describe(index, Finding::Severity::kError, card);
}

void DescribeProav(const std::string& root, const ContentMap& entries, CardDescription& card) {
  const std::string proav = JoinPath(root, xdcam::kProav);
  const std::string index = JoinPath(proav, "INDEX.XML");
  card.Expect({.path = index, .role = card_role::kIndex});
  const auto clips = xdcam::IndexedClips(index);
  if (clips == nullptr) return ReportUnreadableIndex(index, "not a clip table", card);
  std::set<std::string> listed;
  for (const xdcam::IndexedClip& clip : *clips) {
    listed.insert(clip.clipId);
    DescribeProavClip(root, index, clip, card);
  }
  for (const auto& [key, fields] : entries) {
    const std::string folder(foundation::ParentFolder(key));
    if (!key.ends_with(xdcam::kClipXmlEnd)) continue;
    if (listed.contains(std::string(foundation::FileName(folder)))) continue;
    const auto files = CardFolder::Of(folder);
    std::vector<std::string> paths;
    for (const std::string& name : files->VisibleFiles()) paths.push_back(files->PathOf(name));
    AddUnlistedClip(key, index, paths, card);
  }
}

// Most of these are extra paths of each clip, but of none that the material list doesn't contain.
void AddDiscFiles(const std::string& root, CardDescription& card) {
  AddIndexFiles(root, {"DISCMETA.XML", "ALIAS.XML", "INDEX.XML"}, card);
  AddStructureFiles(root, {"MEDIAPRO.XML", "SYSPRO.XML", "CUEUP.XML"}, card);
  for (const char* folder : {"General", "Edit", "UserData", "Take"}) {
    AddStructureFilesBelow(JoinPath(root, folder), card);
  }
  for (const char* folder : {"Clip", "Sub", "Edit", "General"}) {
    card.AddFolder(JoinPath(root, folder));
  }
}

void AddProavFiles(const std::string& root, CardDescription& card) {
  const std::string proav = JoinPath(root, xdcam::kProav);
  AddIndexFiles(proav, {"DISCINFO.XML", "DISCMETA.XML"}, card);
  AddStructureFiles(proav, {"INDEX.XML", "INDEX.BUP", "DISCINFO.BUP"}, card);
  AddStructureFilesBelow(JoinPath(root, "General"), card);
  for (const char* folder : {"EDTR", "USERDATA"}) {
    AddStructureFilesBelow(JoinPath(proav, folder), card);
    card.AddFolder(JoinPath(proav, folder));
  }
  card.AddFolder(JoinPath(proav, xdcam::kClpr));
  card.AddFolder(JoinPath(root, "General"));
}

}  // namespace

void ProviderXDCAM::DescribeCard(const std::string& path, const ContentMap& entries,
                                 CardDescription& card) const {
  const std::string root(foundation::WithoutTrailingSlash(path));
  if (xdcam::HasClipFolder(root)) {
    DescribeDisc(root, entries, card);
    AddDiscFiles(root, card);
  } else {
    DescribeProav(root, entries, card);
    AddProavFiles(root, card);
  }
  for (const std::string& folder : {JoinPath(root, xdcam::kClipFolder), JoinPath(root, "Sub"),
                                    JoinPath(JoinPath(root, xdcam::kProav), xdcam::kClpr)}) {
    card.AddMediaFolder(folder);
  }
}

}  // namespace Sorvik
