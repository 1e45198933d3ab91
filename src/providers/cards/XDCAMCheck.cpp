// SPDX-License-Identifier: MIT
#include <string>

#include "formats/sony/MediaProfile.h"
#include "foundation/CallScope.h"
#include "foundation/FoldedNames.h"
#include "foundation/Presence.h"
#include "foundation/XmlTree.h"
#include "foundation/hestra/PathUtils.h"
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

namespace PathUtils = Hestra::PathUtils;
using formats::sony::Material;
using formats::sony::MaterialPart;
using formats::sony::MediaProfile;
using PathUtils::CombinePaths;
using xdcamex::MediaProCard;
using xdcamex::MediaProEntry;

void Miss(StructureFindings& findings, const UTF16String& key, const char* kind,
          const UTF16String& path) {
  findings.missing.push_back({Hestra::MakeStdString(key), kind, Hestra::MakeStdString(path)});
}

void Require(StructureFindings& findings, const UTF16String& key, const char* kind,
             const UTF16String& path) {
  if (path.empty() || foundation::IsPresent(path, foundation::Lookup::kListing)) return;
  Miss(findings, key, kind, path);
}

struct RecordState {
  bool readable;
};

// A record that is there and damaged; asked once a file, for hostile lists name one again and
// again.
void RequireReadable(StructureFindings& findings, const UTF16String& key) {
  if (!foundation::IsPresent(key, foundation::Lookup::kListing)) return;
  const std::string path = Hestra::MakeStdString(key);
  const auto state = foundation::CallScope::Remember<RecordState>(path, [&path] {
    return RecordState{foundation::ReadXmlFile(path, {.bytes = kMaxClipXmlBytes}).has_value()};
  });
  if (!state->readable) Miss(findings, key, "readable clip record", key);
}

const char* KindOf(const MaterialPart& part) {
  if (part.kind == MaterialPart::Kind::kProxy) return "proxy";
  if (part.kind == MaterialPart::Kind::kComponent) return "component";
  return part.type == u"XML" ? "clip record" : "relevant information";
}

// The clip XML of a material is the key of its entry.
UTF16String KeyOf(const UTF16String& root, const Material& material) {
  for (const MaterialPart& part : material.parts) {
    if (part.kind != MaterialPart::Kind::kRelevantInfo || part.type != u"XML") continue;
    return xdcam::PathOfUri(root, part.uri).value_or(UTF16String());
  }
  return {};
}

void CheckDisc(const UTF16String& root, StructureFindings& findings) {
  const UTF16String index = CombinePaths(root, u"MEDIAPRO.XML");
  const auto list = MediaProfile::Of(index);
  if (!list->IsReadable()) Miss(findings, {}, "readable material list", index);
  for (const Material& material : list->Materials()) {
    const UTF16String key = KeyOf(root, material);
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

void CheckProav(const UTF16String& root, StructureFindings& findings) {
  const UTF16String proav = CombinePaths(root, xdcam::kProav);
  const UTF16String index = CombinePaths(proav, u"INDEX.XML");
  const auto clips = xdcam::IndexedClips(index);
  if (clips == nullptr) return Miss(findings, {}, "readable clip table", index);
  for (const xdcam::IndexedClip& clip : *clips) {
    const UTF16String folder = CombinePaths(CombinePaths(proav, xdcam::kClpr), clip.clipId);
    if (clip.clipId.empty() || !foundation::IsWithin(folder, root)) continue;
    const UTF16String key = CombinePaths(folder, clip.clipId + xdcam::kClipXmlEnd);
    RequireReadable(findings, key);
    Require(findings, key, "essence", xdcam::EssenceForClipXml(key, foundation::Lookup::kListing));
    for (const UTF16String& file : clip.files) {
      const UTF16String path = CombinePaths(folder, file);
      if (foundation::IsWithin(path, root)) Require(findings, key, "clip file", path);
    }
  }
}

// A clip hands out most of these; but for a clip without a known material a disc lists none.
void AddDiscFiles(const UTF16String& root, StructureFindings& findings) {
  AddStructureFiles(
      Hestra::MakeStdString(root),
      {"MEDIAPRO.XML", "DISCMETA.XML", "ALIAS.XML", "INDEX.XML", "SYSPRO.XML", "CUEUP.XML"},
      findings);
  for (const char16_t* folder : {u"General", u"Edit", u"UserData", u"Take"}) {
    AddStructureFilesBelow(Hestra::MakeStdString(CombinePaths(root, folder)), findings);
  }
}

void AddProavFiles(const UTF16String& root, StructureFindings& findings) {
  const UTF16String proav = CombinePaths(root, xdcam::kProav);
  AddStructureFiles(Hestra::MakeStdString(proav),
                    {"INDEX.XML", "INDEX.BUP", "DISCINFO.XML", "DISCINFO.BUP", "DISCMETA.XML"},
                    findings);
  AddStructureFilesBelow(Hestra::MakeStdString(CombinePaths(root, u"General")), findings);
  for (const char16_t* folder : {u"EDTR", u"USERDATA"}) {
    AddStructureFilesBelow(Hestra::MakeStdString(CombinePaths(proav, folder)), findings);
  }
}

// Media of all clips in either layout.
std::vector<std::string> MediaFolders(const UTF16String& root) {
  const UTF16String proav = CombinePaths(root, xdcam::kProav);
  return {Hestra::MakeStdString(CombinePaths(root, xdcam::kClipFolder)),
          Hestra::MakeStdString(CombinePaths(root, u"Sub")),
          Hestra::MakeStdString(CombinePaths(proav, xdcam::kClpr))};
}

// Cameras and listings pay no heed to the case of names on such a card.
void RequireInAnyCase(StructureFindings& findings, const UTF16String& key, const char* kind,
                      const UTF16String& path) {
  if (!foundation::FoundOnDisk(path)) Require(findings, key, kind, path);
}

// The clip XML as it is named on disk is the key of the entry.
UTF16String KeyOf(const MediaProEntry& clip) {
  return foundation::FoundOnDisk(clip.xmlPath).value_or(clip.xmlPath);
}

void CheckClipOfCard(const MediaProEntry& clip, StructureFindings& findings) {
  const UTF16String key = KeyOf(clip);
  // The playlist of a single clip is left out: some cameras list it without writing it.
  RequireInAnyCase(findings, key, "essence", clip.essencePath);
  RequireInAnyCase(findings, key, "clip record", clip.xmlPath);
  RequireReadable(findings, key);
  RequireInAnyCase(findings, key, "BIM file", clip.bimPath);
  RequireInAnyCase(findings, key, "PPN file", clip.ppnPath);
}

// The first clip of a take that lies on this card; null if none does.
const MediaProEntry* ClipOfTake(const MediaProCard& card, const MediaProEntry& take) {
  for (const UTF16String& umid : take.componentUmids) {
    const auto* places = card.WithUmid(umid);
    if (places == nullptr) continue;
    const MediaProEntry& part = card.Entries()[places->front()];
    if (part.kind == MediaProEntry::kClip) return &part;
  }
  return nullptr;
}

void CheckTake(const MediaProCard& card, const MediaProEntry& take, StructureFindings& findings) {
  RequireInAnyCase(findings, {}, "take record", take.xmlPath);
  RequireInAnyCase(findings, {}, "take playlist", take.materialPath);
  const MediaProEntry* clip = ClipOfTake(card, take);
  if (clip == nullptr) return;
  for (const UTF16String& umid : xdcamex::MissingParts(take.mediaProPath, take)) {
    Miss(findings, KeyOf(*clip), "span", umid);
  }
}

}  // namespace

StructureFindings ProviderXDCAM::CheckStructure(const std::string& path) const {
  const foundation::CallScope scope;
  StructureFindings findings;
  const UTF16String root = PathUtils::RemoveTrailingSlash(Hestra::MakeString(path));
  if (PathUtils::ExistsOnDisk(CombinePaths(root, xdcam::kClipFolder))) {
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
  const UTF16String bpav = CombinePaths(Hestra::MakeString(path), u"BPAV");
  const UTF16String list = CombinePaths(bpav, u"MEDIAPRO.XML");
  const auto card = MediaProCard::Of(list);
  if (!MediaProfile::Of(list)->IsReadable()) Miss(findings, {}, "readable material list", list);
  for (const MediaProEntry& entry : card->Entries()) {
    if (entry.kind == MediaProEntry::kClip) CheckClipOfCard(entry, findings);
    if (entry.kind == MediaProEntry::kTake) CheckTake(*card, entry, findings);
  }
  AddStructureFiles(Hestra::MakeStdString(bpav),
                    {"MEDIAPRO.XML", "MEDIAPRO.BAK", "MEDIAPRO.BUP", "CUEUP.XML"}, findings);
  // A take may join clips that all lie on other cards.
  AddStructureFilesBelow(Hestra::MakeStdString(CombinePaths(bpav, u"TAKR")), findings);
  AddUnreachedMedia(*this, path, {Hestra::MakeStdString(CombinePaths(bpav, xdcam::kClpr))},
                    findings);
  return findings;
}

}  // namespace Sorvik
