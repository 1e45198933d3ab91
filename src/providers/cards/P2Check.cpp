// SPDX-License-Identifier: MIT
#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "foundation/CallScope.h"
#include "foundation/Paths.h"
#include "foundation/XmlTree.h"
#include "providers/cards/CardChecks.h"
#include "providers/cards/P2Shots.h"
#include "providers/cards/P2Siblings.h"
#include "providers/cards/ProviderP2.h"
#include "providers/common/StructureParts.h"

namespace Sorvik {
namespace {

using foundation::FoldCase;
using foundation::XmlElement;

constexpr std::size_t kMaxChannels = 16;

// Another clip of a shot, as referenced by the clip `entryKey`.
struct ClipReference {
  std::string entryKey;
  std::string globalId;
  std::string description;
};

struct Card {
  std::string contents;
  StructureFindings findings;
  std::set<std::string> globalIds;  // of the clips found
  std::vector<ClipReference> references;
};

void Require(Card& card, const std::string& key, const char* kind, const std::string& path) {
  if (foundation::ExistsOnCard(path, foundation::Lookup::kListing)) return;
  card.findings.missing.push_back({key, kind, path});
}

// To a user, the clip's name and the serial number of its card mean more than its id.
std::string DescribeClip(const XmlElement& clip) {
  std::string text(clip.TextOf("ClipName"));
  if (text.empty()) text = clip.TextOf("GlobalClipID");
  const auto serial = clip.TextOf("P2SerialNo.");
  if (!serial.empty()) text.append(" on card ").append(serial);
  return text;
}

void AddReferences(Card& card, const std::string& key, const XmlElement& content) {
  const XmlElement* connection = content.Find({"Relation", "Connection"});
  if (connection == nullptr) return;
  for (const char* name : {"Top", "Previous", "Next"}) {
    const XmlElement* clip = connection->Child(name);
    if (clip == nullptr || clip->TextOf("GlobalClipID").empty()) continue;
    card.references.push_back({key, FoldCase(clip->TextOf("GlobalClipID")), DescribeClip(*clip)});
  }
}

void CheckEssence(Card& card, const std::string& id, const XmlElement& content) {
  const XmlElement* essence = content.Child("EssenceList");
  if (essence == nullptr) return;
  const auto pathOf = [&card, &id](std::string_view folder, const std::string& end) {
    return p2::ContentsFile(card.contents, folder, id, end);
  };
  const bool isLongGop =
      foundation::ExistsOnCard(pathOf(p2::kAVClip, ".MXF"), foundation::Lookup::kListing);
  if (isLongGop) return;  // picture and sound are in one file
  if (essence->Child("Video") != nullptr) Require(card, id, "video", pathOf(p2::kVideo, ".MXF"));
  const std::size_t channels = std::min(essence->ChildrenNamed("Audio").size(), kMaxChannels);
  for (std::size_t i = 0; i < channels; ++i) {
    const std::string digits = (i < 10 ? "0" : "") + std::to_string(i);
    Require(card, id, "sound channel", pathOf(p2::kAudio, digits + ".MXF"));
  }
}

void CheckClip(Card& card, const std::string& xmlPath) {
  const std::string id(foundation::FileStem(xmlPath));
  const auto document = foundation::ReadXmlFile(xmlPath, {.bytes = kMaxClipXmlBytes});
  const XmlElement* content = document ? document->Root().Child("ClipContent") : nullptr;
  if (content == nullptr) {
    card.findings.missing.push_back({id, "readable clip record", xmlPath});
    return;
  }
  card.globalIds.insert(FoldCase(content->TextOf("GlobalClipID")));
  AddReferences(card, id, *content);
  CheckEssence(card, id, *content);
  const XmlElement* metadata = content->Child("ClipMetadata");
  if (metadata == nullptr) return;
  if (metadata->Child("Proxy") != nullptr) {
    Require(card, id, "proxy", p2::ContentsFile(card.contents, p2::kProxy, id, ".MP4"));
  }
  if (metadata->Child("Thumbnail") != nullptr) {
    Require(card, id, "icon", p2::ContentsFile(card.contents, p2::kIcon, id, ".BMP"));
  }
}

// Collects the ids of the clips on the cards next to this one, until all references are found.
class ClipIdVisitor final : public p2::DirVisitor {
 public:
  explicit ClipIdVisitor(Card& card) : card_(card) {}

  bool Visit(const std::string& dir) override {
    for (const std::string& xml : p2::ListClipXmlFiles(dir)) {
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

void CheckShots(Card& card, const std::string& root) {
  ClipIdVisitor visitor(card);
  if (!visitor.AllFound()) p2::VisitSiblingDirectories(root, visitor);
  std::set<std::string> reported;
  for (const ClipReference& reference : card.references) {
    if (card.globalIds.contains(reference.globalId)) continue;
    if (!reported.insert(reference.globalId).second) continue;
    card.findings.missing.push_back({reference.entryKey, "span", reference.description});
  }
}

}  // namespace

StructureFindings ProviderP2::CheckStructure(const std::string& path) const {
  const foundation::CallScope scope;
  Card card{foundation::JoinPath(path, p2::kContents), {}, {}, {}};
  for (const std::string& xml : p2::ListClipXmlFiles(path)) CheckClip(card, xml);
  CheckShots(card, path);
  AddStructureFiles(path, {"LASTCLIP.TXT"}, card.findings);
  AddUnreachedMedia(*this, path, {card.contents}, card.findings);
  return std::move(card.findings);
}

}  // namespace Sorvik
