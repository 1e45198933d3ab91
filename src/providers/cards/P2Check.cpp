// SPDX-License-Identifier: MIT
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/XmlTree.h"
#include "providers/cards/P2Shots.h"
#include "providers/cards/P2Siblings.h"
#include "providers/cards/ProviderP2.h"
#include "providers/common/CardParts.h"

namespace Sorvik {
namespace {

using foundation::CardFolder;
using foundation::ExistsOnCard;
using foundation::FileStem;
using foundation::FoldCase;
using foundation::JoinPath;
using foundation::Lookup;
using foundation::XmlElement;
using p2::kMaxChannels;
using p2::kMaxClipXmlBytes;

constexpr std::size_t kClipIdLength = 6;

// Another clip of a shot, as referenced by a clip of the entry `entryKey`.
struct ClipReference {
  std::string entryKey;
  std::string globalId;
  std::string description;
};

struct Card {
  std::string contents;
  EntryOfPath owners;
  CardDescription& description;
  std::set<std::string> clipIds;    // of the clips with a record
  std::set<std::string> globalIds;  // of the clips found, here or next to the card
  std::vector<ClipReference> references;
};

struct Clip {
  std::string id;
  std::string key;  // of its entry
};

std::string FileOf(const Card& card, const Clip& clip, std::string_view folder,
                   std::string_view end) {
  return p2::ContentsFile(card.contents, folder, clip.id, end);
}

void ExpectMedia(Card& card, const Clip& clip, const char* role, std::string path,
                 std::uint64_t minBytes = 0) {
  card.description.Expect({.path = std::move(path),
                           .role = role,
                           .entryKeys = {clip.key},
                           .content = CardPart::Content::kMedia,
                           .minBytes = minBytes,
                           .minBytesSource = "the clip record"});
}

// The end of the essence in its file, by the index in the record; 0 if there is none.
std::uint64_t EssenceEnd(const XmlElement& essence, std::string_view indexName) {
  const XmlElement* index = essence.Child(indexName);
  if (index == nullptr) return 0;
  const auto number = [index](std::string_view name) {
    const std::string_view text = index->TextOf(name);
    std::uint64_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return std::min(value, std::uint64_t{1} << 62);
  };
  return number("StartByteOffset") + number("DataSize");
}

// Clips of long-GOP codecs have picture and sound in one file.
bool IsLongGop(const Card& card, const Clip& clip, const XmlElement* video) {
  if (ExistsOnCard(FileOf(card, clip, p2::kAVClip, ".MXF"), Lookup::kListing)) return true;
  const std::string_view codec = video == nullptr ? std::string_view() : video->TextOf("Codec");
  return codec.starts_with("AVC-G") || codec.starts_with("AVC-LongG");
}

void ExpectEssence(Card& card, const Clip& clip, const XmlElement& content) {
  const XmlElement* essence = content.Child("EssenceList");
  if (essence == nullptr) return;
  const XmlElement* video = essence->Child("Video");
  if (IsLongGop(card, clip, video)) {
    return ExpectMedia(card, clip, card_role::kEssence, FileOf(card, clip, p2::kAVClip, ".MXF"));
  }
  if (video != nullptr) {
    ExpectMedia(card, clip, card_role::kEssence, FileOf(card, clip, p2::kVideo, ".MXF"),
                EssenceEnd(*video, "VideoIndex"));
  }
  const auto channels = essence->ChildrenNamed("Audio");
  for (std::size_t i = 0; i < std::min(channels.size(), kMaxChannels); ++i) {
    const std::string digits = (i < 10 ? "0" : "") + std::to_string(i);
    ExpectMedia(card, clip, card_role::kSound, FileOf(card, clip, p2::kAudio, digits + ".MXF"),
                EssenceEnd(*channels[i], "AudioIndex"));
  }
}

void ExpectProxyAndIcon(Card& card, const Clip& clip, const XmlElement& content) {
  const XmlElement* metadata = content.Child("ClipMetadata");
  if (metadata == nullptr) return;
  if (const XmlElement* proxy = metadata->Child("Proxy")) {
    const std::string_view format = proxy->TextOf("ProxyFormat");
    const bool isMov = foundation::EqualIgnoringCase(format, "MOV");
    ExpectMedia(card, clip, card_role::kProxy,
                FileOf(card, clip, p2::kProxy, isMov ? ".MOV" : ".MP4"));
  }
  if (metadata->Child("Thumbnail") != nullptr) {
    ExpectMedia(card, clip, card_role::kThumbnail, FileOf(card, clip, p2::kIcon, ".BMP"));
  }
}

// Files of the clip that its record doesn't require, among them all of a clip whose record can't be
// read.
void AddExistingFiles(Card& card, const Clip& clip) {
  struct Folder {
    std::string_view name;
    const char* role;
    bool numbered;  // two digits follow the clip id
  };
  static constexpr Folder kFolders[] = {
      {p2::kVideo, card_role::kEssence, false}, {p2::kAVClip, card_role::kEssence, false},
      {p2::kAudio, card_role::kSound, true},    {p2::kIcon, card_role::kThumbnail, false},
      {p2::kProxy, card_role::kProxy, false},   {p2::kVoice, card_role::kVoiceMemo, true}};
  for (const Folder& folder : kFolders) {
    const auto listed = CardFolder::Of(JoinPath(card.contents, folder.name));
    const std::size_t length = kClipIdLength + (folder.numbered ? 2 : 0);
    const auto add = [&](const std::string& name) {
      card.description.Expect({.path = listed->PathOf(name),
                               .role = folder.role,
                               .entryKeys = {clip.key},
                               .content = CardPart::Content::kMedia,
                               .required = false});
    };
    if (!folder.numbered) {
      for (const char* end : {".MXF", ".MP4", ".MOV", ".BIN", ".BMP"}) {
        if (listed->Contains(clip.id + end)) add(clip.id + end);
      }
      continue;
    }
    for (std::size_t i = 0; i < kMaxChannels; ++i) {
      const std::string stem = clip.id + (i < 10 ? "0" : "") + std::to_string(i);
      for (const char* end : {".MXF", ".WAV"}) {
        if (stem.size() == length && listed->Contains(stem + end)) add(stem + end);
      }
    }
  }
}

// To a user, the clip's name and the serial number of its card mean more than its id.
std::string DescribeClip(const XmlElement& clip) {
  std::string text(clip.TextOf("ClipName"));
  if (text.empty()) text = clip.TextOf("GlobalClipID");
  const auto serial = clip.TextOf("P2SerialNo.");
  if (!serial.empty()) text.append(" on card ").append(serial);
  return text;
}

void AddReferences(Card& card, const Clip& clip, const XmlElement& content) {
  const XmlElement* connection = content.Find({"Relation", "Connection"});
  if (connection == nullptr) return;
  for (const char* name : {"Top", "Previous", "Next"}) {
    const XmlElement* other = connection->Child(name);
    if (other == nullptr || other->TextOf("GlobalClipID").empty()) continue;
    card.references.push_back(
        {clip.key, FoldCase(other->TextOf("GlobalClipID")), DescribeClip(*other)});
  }
}

void DescribeClipOf(Card& card, const std::string& xmlPath) {
  Clip clip{std::string(FileStem(xmlPath)), card.owners.KeyOf(xmlPath)};
  if (clip.key.empty()) clip.key = clip.id;
  card.clipIds.insert(FoldCase(clip.id));
  card.description.Expect(
      {.path = xmlPath, .role = card_role::kClipRecord, .entryKeys = {clip.key}});
  AddExistingFiles(card, clip);
  const auto document = foundation::ReadXmlFile(xmlPath, {.bytes = kMaxClipXmlBytes});
  const XmlElement* content = document ? document->Root().Child("ClipContent") : nullptr;
  if (content == nullptr) {
    card.description.Report(Finding::Kind::kUnreadable, card_role::kClipRecord, xmlPath, {clip.key},
                            "not a clip record");
    return;
  }
  card.globalIds.insert(FoldCase(content->TextOf("GlobalClipID")));
  AddReferences(card, clip, *content);
  ExpectEssence(card, clip, *content);
  ExpectProxyAndIcon(card, clip, *content);
}

// Reports the clips of which media exists, but no record.
void ReportLostRecords(Card& card) {
  std::set<std::string> reported;
  for (const std::string_view folder : {p2::kVideo, p2::kAVClip, p2::kAudio}) {
    for (const std::string& name :
         CardFolder::Of(JoinPath(card.contents, folder))->VisibleFiles(".MXF")) {
      const std::string id(FileStem(name).substr(0, kClipIdLength));
      if (card.clipIds.contains(FoldCase(id)) || !reported.insert(id).second) continue;
      card.description.Report(Finding::Kind::kMissing, card_role::kClipRecord,
                              p2::ContentsFile(card.contents, p2::kClip, id, ".XML"), {},
                              "media of this clip exists");
    }
  }
}

// Collects the ids of the clips on the cards next to this one, until all references are found. A
// clip counts only if its essence exists.
class ClipIdVisitor final : public p2::DirVisitor {
 public:
  explicit ClipIdVisitor(Card& card) : card_(card) {}

  bool Visit(const std::string& dir) override {
    for (const std::string& xml : p2::ListClipXmlFiles(dir)) {
      if (p2::EssenceForClipXml(xml).empty()) continue;
      const auto document = foundation::ReadXmlFile(xml, {.bytes = kMaxClipXmlBytes});
      const XmlElement* content = document ? document->Root().Child("ClipContent") : nullptr;
      if (content != nullptr) card_.globalIds.insert(FoldCase(content->TextOf("GlobalClipID")));
    }
    return !AllFound();
  }
  bool AllFound() const {
    return std::ranges::all_of(card_.references, [this](const ClipReference& reference) {
      return card_.globalIds.contains(reference.globalId);
    });
  }

 private:
  Card& card_;
};

void ReportMissingSpans(Card& card, const std::string& root) {
  ClipIdVisitor visitor(card);
  if (!visitor.AllFound()) p2::VisitSiblingDirectories(root, visitor);
  std::set<std::string> reported;
  for (const ClipReference& reference : card.references) {
    if (card.globalIds.contains(reference.globalId)) continue;
    if (!reported.insert(reference.globalId).second) continue;
    card.description.Report(Finding::Kind::kMissing, card_role::kSpan, reference.description,
                            {reference.entryKey}, "neither on this card nor next to it");
  }
}

}  // namespace

void ProviderP2::DescribeCard(const std::string& path, const ContentMap& entries,
                              CardDescription& description) const {
  Card card{JoinPath(path, p2::kContents), EntryOfPath(entries, {".XML"}), description, {}, {}, {}};
  for (const std::string& xml : p2::ListClipXmlFiles(path)) DescribeClipOf(card, xml);
  ReportLostRecords(card);
  ReportMissingSpans(card, path);
  AddStructureFiles(path, {"LASTCLIP.TXT"}, description);
  description.AddMediaFolder(card.contents);
  for (const std::string_view folder :
       {p2::kAudio, p2::kClip, p2::kIcon, p2::kProxy, p2::kVideo, p2::kVoice, p2::kAVClip}) {
    description.AddFolder(JoinPath(card.contents, folder));
  }
}

}  // namespace Sorvik
