// SPDX-License-Identifier: MIT
#include <string>

#include "formats/sony/MediaProfile.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/XmlTree.h"
#include "providers/cards/CardChecks.h"
#include "providers/cards/MediaPro.h"
#include "providers/cards/ProviderXDCAM.h"
#include "providers/cards/ProviderXDCAMEX.h"
#include "providers/cards/TakeFiles.h"
#include "providers/cards/XDCAMFiles.h"
#include "providers/cards/XDCAMIndex.h"
#include "providers/common/StructureParts.h"

namespace Sorvik {
namespace {

using formats::sony::Material;
using formats::sony::MaterialPart;
using formats::sony::MediaProfile;
using foundation::ExistsOnCard;
using foundation::FindOnCard;
using foundation::JoinPath;
using foundation::Lookup;
using xdcamex::MediaProCard;
using xdcamex::MediaProEntry;

void AddMissing(StructureFindings& findings, const std::string& key, const char* kind,
                const std::string& path) {
  findings.missing.push_back({key, kind, path});
}

void Require(StructureFindings& findings, const std::string& key, const char* kind,
             const std::string& path) {
  if (path.empty() || ExistsOnCard(path, Lookup::kListing)) return;
  AddMissing(findings, key, kind, path);
}

struct RecordState {
  bool readable;
};

// Reports a clip record that exists but can't be parsed. Each file is parsed once, even if an
// invalid list names it many times.
void RequireReadable(StructureFindings& findings, const std::string& key) {
  if (!ExistsOnCard(key, Lookup::kListing)) return;
  const auto state = foundation::CallScope::Remember<RecordState>(key, [&key] {
    return RecordState{foundation::ReadXmlFile(key, {.bytes = kMaxClipXmlBytes}).has_value()};
  });
  if (!state->readable) AddMissing(findings, key, "readable clip record", key);
}

const char* KindOf(const MaterialPart& part) {
  if (part.kind == MaterialPart::Kind::kProxy) return "proxy";
  if (part.kind == MaterialPart::Kind::kComponent) return "component";
  return part.type == "XML" ? "clip record" : "relevant information";
}

// The clip XML of a material is the key of its entry.
std::string KeyOf(const std::string& root, const Material& material) {
  for (const MaterialPart& part : material.parts) {
    if (part.kind != MaterialPart::Kind::kRelevantInfo || part.type != "XML") continue;
    return xdcam::PathOfUri(root, part.uri).value_or(std::string());
  }
  return {};
}

void CheckDisc(const std::string& root, StructureFindings& findings) {
  const std::string index = JoinPath(root, "MEDIAPRO.XML");
  const auto list = MediaProfile::Of(index);
  if (!list->IsReadable()) AddMissing(findings, {}, "readable material list", index);
  for (const Material& material : list->Materials()) {
    const std::string key = KeyOf(root, material);
    RequireReadable(findings, key);
    if (const auto essence = xdcam::PathOfUri(root, material.uri)) {
      Require(findings, key, "essence", *essence);
    }
    for (const MaterialPart& part : material.parts) {
      if (const auto path = xdcam::PathOfUri(root, part.uri)) {
        Require(findings, key, KindOf(part), *path);
      }
    }
  }
}

void CheckProav(const std::string& root, StructureFindings& findings) {
  const std::string proav = JoinPath(root, xdcam::kProav);
  const std::string index = JoinPath(proav, "INDEX.XML");
  const auto clips = xdcam::IndexedClips(index);
  if (clips == nullptr) return AddMissing(findings, {}, "readable clip table", index);
  for (const xdcam::IndexedClip& clip : *clips) {
    const std::string folder = JoinPath(JoinPath(proav, xdcam::kClpr), clip.clipId);
    if (clip.clipId.empty() || !foundation::IsInside(folder, root)) continue;
    const std::string key = JoinPath(folder, clip.clipId).append(xdcam::kClipXmlEnd);
    RequireReadable(findings, key);
    if (clip.pictures.empty()) {
      Require(findings, key, "essence", xdcam::EssenceForClipXml(key, Lookup::kListing));
    }
    for (const std::string& picture : clip.pictures) {
      const std::string path = JoinPath(folder, picture);
      if (foundation::IsInside(path, root)) Require(findings, key, "essence", path);
    }
    for (const xdcam::IndexedFile& file : clip.files) {
      const std::string path = JoinPath(folder, file.name);
      if (foundation::IsInside(path, root)) Require(findings, key, "clip file", path);
    }
  }
}

// Most of these are extra paths of each clip, but of none that the material list doesn't contain.
void AddDiscFiles(const std::string& root, StructureFindings& findings) {
  AddStructureFiles(
      root, {"MEDIAPRO.XML", "DISCMETA.XML", "ALIAS.XML", "INDEX.XML", "SYSPRO.XML", "CUEUP.XML"},
      findings);
  for (const char* folder : {"General", "Edit", "UserData", "Take"}) {
    AddStructureFilesBelow(JoinPath(root, folder), findings);
  }
}

void AddProavFiles(const std::string& root, StructureFindings& findings) {
  const std::string proav = JoinPath(root, xdcam::kProav);
  AddStructureFiles(
      proav, {"INDEX.XML", "INDEX.BUP", "DISCINFO.XML", "DISCINFO.BUP", "DISCMETA.XML"}, findings);
  AddStructureFilesBelow(JoinPath(root, "General"), findings);
  for (const char* folder : {"EDTR", "USERDATA"}) {
    AddStructureFilesBelow(JoinPath(proav, folder), findings);
  }
}

// The folders with media in either layout.
std::vector<std::string> MediaFolders(const std::string& root) {
  return {JoinPath(root, xdcam::kClipFolder), JoinPath(root, "Sub"),
          JoinPath(JoinPath(root, xdcam::kProav), xdcam::kClpr)};
}

// On XDCAM EX cards, cameras and listings compare names ignoring case.
void RequireIgnoringCase(StructureFindings& findings, const std::string& key, const char* kind,
                         const std::string& path) {
  if (!FindOnCard(path)) Require(findings, key, kind, path);
}

// The clip XML, as it is spelled on disk, is the key of the entry.
std::string KeyOf(const MediaProEntry& clip) {
  return FindOnCard(clip.xmlPath).value_or(clip.xmlPath);
}

void CheckClipOfCard(const MediaProEntry& clip, StructureFindings& findings) {
  const std::string key = KeyOf(clip);
  // The playlist of a single clip isn't required: some cameras list it without writing it.
  RequireIgnoringCase(findings, key, "essence", clip.essencePath);
  RequireIgnoringCase(findings, key, "clip record", clip.xmlPath);
  RequireReadable(findings, key);
  RequireIgnoringCase(findings, key, "BIM file", clip.bimPath);
  RequireIgnoringCase(findings, key, "PPN file", clip.ppnPath);
}

// The first clip of a take that is on this card; null if none is.
const MediaProEntry* ClipOfTake(const MediaProCard& card, const MediaProEntry& take) {
  for (const std::string& umid : take.componentUmids) {
    const auto* indexes = card.WithUmid(umid);
    if (indexes == nullptr) continue;
    const MediaProEntry& part = card.Entries()[indexes->front()];
    if (part.kind == MediaProEntry::kClip) return &part;
  }
  return nullptr;
}

void CheckTake(const MediaProCard& card, const MediaProEntry& take, StructureFindings& findings) {
  RequireIgnoringCase(findings, {}, "take record", take.xmlPath);
  RequireIgnoringCase(findings, {}, "take playlist", take.materialPath);
  const MediaProEntry* clip = ClipOfTake(card, take);
  if (clip == nullptr) return;
  for (const std::string& umid : xdcamex::MissingParts(take.mediaProPath, take)) {
    AddMissing(findings, KeyOf(*clip), "span", umid);
  }
}

}  // namespace

StructureFindings ProviderXDCAM::CheckStructure(const std::string& path) const {
  const foundation::CallScope scope;
  StructureFindings findings;
  const std::string root(foundation::WithoutTrailingSlash(path));
  if (xdcam::HasClipFolder(root)) {
    CheckDisc(root, findings);
    AddDiscFiles(root, findings);
  } else {
    CheckProav(root, findings);
    AddProavFiles(root, findings);
  }
  AddUnreachedMedia(*this, path, MediaFolders(root), findings);
  return findings;
}

StructureFindings ProviderXDCAMEX::CheckStructure(const std::string& path) const {
  const foundation::CallScope scope;
  StructureFindings findings;
  const std::string bpav = JoinPath(path, "BPAV");
  const std::string list = JoinPath(bpav, "MEDIAPRO.XML");
  const auto card = MediaProCard::Of(list);
  if (!MediaProfile::Of(list)->IsReadable()) {
    AddMissing(findings, {}, "readable material list", list);
  }
  for (const MediaProEntry& entry : card->Entries()) {
    if (entry.kind == MediaProEntry::kClip) CheckClipOfCard(entry, findings);
    if (entry.kind == MediaProEntry::kTake) CheckTake(*card, entry, findings);
  }
  AddStructureFiles(bpav, {"MEDIAPRO.XML", "MEDIAPRO.BAK", "MEDIAPRO.BUP", "CUEUP.XML"}, findings);
  // A take may consist of clips that are all on other cards.
  AddStructureFilesBelow(JoinPath(bpav, "TAKR"), findings);
  AddUnreachedMedia(*this, path, {JoinPath(bpav, xdcam::kClpr)}, findings);
  return findings;
}

}  // namespace Sorvik
