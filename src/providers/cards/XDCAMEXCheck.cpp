// SPDX-License-Identifier: MIT
#include <algorithm>
#include <set>
#include <string>
#include <utility>

#include "formats/sony/MediaProfile.h"
#include "formats/sony/TakePlaylist.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "providers/cards/MediaPro.h"
#include "providers/cards/ProviderXDCAMEX.h"
#include "providers/cards/TakeFiles.h"
#include "providers/common/CardParts.h"

namespace Sorvik {
namespace {

using formats::sony::MediaProfile;
using formats::sony::TakePlaylist;
using foundation::CardFolder;
using foundation::FindOnCard;
using foundation::JoinPath;
using xdcamex::MediaProCard;
using xdcamex::MediaProEntry;
using Content = CardPart::Content;

// Cameras and listings compare names ignoring case.
std::string OnCard(const std::string& path) { return FindOnCard(path).value_or(path); }

// The entry of a clip: that of its take, which the first clip represents, or its own XML.
std::string KeyOf(const MediaProEntry& clip, const EntryOfPath& owners) {
  const std::string xml = OnCard(clip.xmlPath);
  const std::string key = owners.KeyOf(xml);
  return key.empty() ? xml : key;
}

void Expect(CardDescription& card, const std::string& path, const char* role,
            const std::string& key, Content content, bool required = true) {
  if (path.empty()) return;
  card.Expect({.path = OnCard(path),
               .role = role,
               .entryKeys = KeyList(key),
               .content = content,
               .required = required});
}

void DescribeClip(const MediaProEntry& clip, const std::string& key, CardDescription& card) {
  const auto exists = [](const std::string& path) {
    return !path.empty() && FindOnCard(path).has_value();
  };
  if (!exists(clip.essencePath) && !exists(clip.xmlPath) && !exists(clip.bimPath) &&
      !exists(clip.ppnPath) && !exists(clip.materialPath)) {
    card.Report(Finding::Kind::kStale, card_role::kEssence,
                clip.essencePath.empty() ? clip.xmlPath : clip.essencePath, KeyList(key),
                "listed in MEDIAPRO.XML, but no file of the clip exists");
    return;
  }
  Expect(card, clip.essencePath, card_role::kEssence, key, Content::kMedia);
  Expect(card, clip.xmlPath, card_role::kClipRecord, key, Content::kXml);
  Expect(card, clip.bimPath, card_role::kRealTimeMeta, key, Content::kOpaque);
  Expect(card, clip.ppnPath, card_role::kRealTimeMeta, key, Content::kOpaque);
  // Some cameras list the playlist of a single clip without writing it.
  Expect(card, clip.materialPath, card_role::kPlaylist, key, Content::kOpaque, false);
}

// The first clip of a take that is on this card; null if none is.
const MediaProEntry* ClipOfTake(const MediaProCard& list, const MediaProEntry& take) {
  for (const std::string& umid : take.componentUmids) {
    const auto* indexes = list.WithUmid(umid);
    if (indexes == nullptr) continue;
    const MediaProEntry& part = list.Entries()[indexes->front()];
    if (part.kind == MediaProEntry::kClip) return &part;
  }
  return nullptr;
}

void DescribeTake(const MediaProCard& list, const MediaProEntry& take, const EntryOfPath& owners,
                  CardDescription& card) {
  const MediaProEntry* clip = ClipOfTake(list, take);
  const std::string key = clip == nullptr ? std::string() : KeyOf(*clip, owners);
  Expect(card, take.xmlPath, card_role::kClipRecord, key, Content::kXml);
  Expect(card, take.materialPath, card_role::kPlaylist, key, Content::kOpaque);
  const auto playlist = FindOnCard(take.materialPath);
  if (playlist && !TakePlaylist::Read(*playlist)) {
    card.Report(Finding::Kind::kUnreadable, card_role::kPlaylist, *playlist, KeyList(key),
                "not a playlist");
  }
  if (clip == nullptr) return;
  for (const xdcamex::MissingPart& part : xdcamex::MissingParts(take.mediaProPath, take)) {
    card.Report(Finding::Kind::kMissing, card_role::kSpan,
                part.path.empty() ? part.umid : part.path, KeyList(key),
                "part of take " + std::string(foundation::FileStem(take.materialPath)));
  }
}

// An entry whose clip XML no material names.
void AddUnlistedClips(const std::set<std::string>& listed, const ContentMap& entries,
                      CardDescription& card) {
  for (const auto& [key, fields] : entries) {
    if (listed.contains(foundation::FoldCase(key))) continue;
    card.Report(Finding::Kind::kUnlisted, card_role::kClipRecord, key, {key},
                "not listed in MEDIAPRO.XML");
    const auto folder = CardFolder::Of(foundation::ParentFolder(key));
    for (const std::string& name : folder->VisibleFiles()) {
      const bool isXml = foundation::HasExtension(name, ".XML");
      Expect(card, folder->PathOf(name), isXml ? card_role::kClipRecord : card_role::kEssence, key,
             isXml ? Content::kXml : Content::kMedia, false);
    }
  }
}

}  // namespace

void ProviderXDCAMEX::DescribeCard(const std::string& path, const ContentMap& entries,
                                   CardDescription& card) const {
  const std::string bpav = JoinPath(path, "BPAV");
  const std::string index = JoinPath(bpav, "MEDIAPRO.XML");
  card.Expect({.path = index, .role = card_role::kIndex});
  const bool readable = MediaProfile::Of(index)->IsReadable();
  if (!readable) {
    card.Report(Finding::Kind::kUnreadable, card_role::kIndex, index, {}, "not a material list");
  }
  const EntryOfPath owners(entries, {".XML"});
  const auto list = MediaProCard::Of(index);
  std::set<std::string> listed;
  for (const MediaProEntry& entry : list->Entries()) {
    listed.insert(foundation::FoldCase(entry.xmlPath));
    if (entry.kind == MediaProEntry::kClip) DescribeClip(entry, KeyOf(entry, owners), card);
    if (entry.kind == MediaProEntry::kTake) DescribeTake(*list, entry, owners, card);
  }
  if (readable) AddUnlistedClips(listed, entries, card);
  AddStructureFiles(bpav, {"MEDIAPRO.XML", "MEDIAPRO.BAK", "MEDIAPRO.BUP", "CUEUP.XML"}, card);
  // A take may consist of clips that are all on other cards.
  AddStructureFilesBelow(JoinPath(bpav, "TAKR"), card);
  for (const char* folder : {"CLPR", "TAKR"}) card.AddFolder(JoinPath(bpav, folder));
  card.AddMediaFolder(JoinPath(bpav, "CLPR"));
}

}  // namespace Sorvik
