// SPDX-License-Identifier: MIT
#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "foundation/CallScope.h"
#include "foundation/XmlTree.h"
#include "foundation/hestra/PathUtils.h"
#include "providers/cards/CardChecks.h"
#include "providers/cards/P2Shots.h"
#include "providers/cards/P2Siblings.h"
#include "providers/cards/ProviderP2.h"
#include "providers/common/StructureParts.h"

namespace Sorvik {
namespace {

namespace PathUtils = Hestra::PathUtils;
using foundation::XmlElement;

constexpr std::size_t kMaxChannels = 16;

// Another clip of the shot, as a clip names it.
struct Neighbour {
  std::string entryKey;
  std::string globalId;
  std::string description;
};

struct Card {
  UTF16String contents;
  StructureFindings findings;
  std::set<std::string> globalIds;  // of the clips that are there
  std::vector<Neighbour> neighbours;
};

UTF16String PartPath(const Card& card, const char16_t* folder, const UTF16String& name) {
  return PathUtils::CombinePaths(PathUtils::CombinePaths(card.contents, folder), name);
}

void Require(Card& card, const std::string& key, const char* kind, const UTF16String& path) {
  if (foundation::IsPresent(path, foundation::Lookup::kListing)) return;
  card.findings.missing.push_back({key, kind, Hestra::MakeStdString(path)});
}

std::string FoldedId(std::string_view id) {
  return Hestra::MakeStdString(tarnwick::utility::FoldCase(Hestra::MakeString(id)));
}

// The clip's name and the serial number of its card say more to a person than the id.
std::string DescribeNeighbour(const XmlElement& clip) {
  std::string text(clip.TextOf("ClipName"));
  if (text.empty()) text = clip.TextOf("GlobalClipID");
  const auto serial = clip.TextOf("P2SerialNo.");
  if (!serial.empty()) text.append(" on card ").append(serial);
  return text;
}

void NoteNeighbours(Card& card, const std::string& key, const XmlElement& content) {
  const XmlElement* connection = content.Find({"Relation", "Connection"});
  if (connection == nullptr) return;
  for (const char* name : {"Top", "Previous", "Next"}) {
    const XmlElement* clip = connection->Child(name);
    if (clip == nullptr || clip->TextOf("GlobalClipID").empty()) continue;
    card.neighbours.push_back(
        {key, FoldedId(clip->TextOf("GlobalClipID")), DescribeNeighbour(*clip)});
  }
}

void CheckEssence(Card& card, const std::string& key, const UTF16String& id,
                  const XmlElement& content) {
  const XmlElement* essence = content.Child("EssenceList");
  if (essence == nullptr) return;
  const bool longGop = foundation::IsPresent(PartPath(card, p2::kAVClip, id + u".MXF"),
                                             foundation::Lookup::kListing);
  if (longGop) return;  // one file holds picture and sound
  if (essence->Child("Video") != nullptr) {
    Require(card, key, "video", PartPath(card, p2::kVideo, id + u".MXF"));
  }
  const std::size_t channels = std::min(essence->ChildrenNamed("Audio").size(), kMaxChannels);
  for (std::size_t i = 0; i < channels; ++i) {
    const UTF16String digits =
        tarnwick::utility::AsciiToUTF16((i < 10 ? "0" : "") + std::to_string(i));
    Require(card, key, "sound channel", PartPath(card, p2::kAudio, id + digits + u".MXF"));
  }
}

void CheckClip(Card& card, const UTF16String& xmlPath) {
  const UTF16String id = PathUtils::GetFilePart(xmlPath);
  const std::string key = Hestra::MakeStdString(id);
  const auto document =
      foundation::ReadXmlFile(Hestra::MakeStdString(xmlPath), {.bytes = kMaxClipXmlBytes});
  const XmlElement* content = document ? document->Root().Child("ClipContent") : nullptr;
  if (content == nullptr) {
    card.findings.missing.push_back({key, "readable clip record", Hestra::MakeStdString(xmlPath)});
    return;
  }
  card.globalIds.insert(FoldedId(content->TextOf("GlobalClipID")));
  NoteNeighbours(card, key, *content);
  CheckEssence(card, key, id, *content);
  const XmlElement* metadata = content->Child("ClipMetadata");
  if (metadata == nullptr) return;
  if (metadata->Child("Proxy") != nullptr) {
    Require(card, key, "proxy", PartPath(card, p2::kProxy, id + u".MP4"));
  }
  if (metadata->Child("Thumbnail") != nullptr) {
    Require(card, key, "icon", PartPath(card, p2::kIcon, id + u".BMP"));
  }
}

// Notes the clips of the cards beside this one, as far as any clip of a shot is still looked for.
class NeighbourCardVisitor final : public p2::DirVisitor {
 public:
  explicit NeighbourCardVisitor(Card& card) : card_(card) {}

  bool Visit(const tarnwick::filesupport::Dir& dir) override {
    for (const UTF16String& xml : p2::ListClipXmlFiles(dir.FullPath())) {
      const auto document =
          foundation::ReadXmlFile(Hestra::MakeStdString(xml), {.bytes = kMaxClipXmlBytes});
      const XmlElement* content = document ? document->Root().Child("ClipContent") : nullptr;
      if (content != nullptr) card_.globalIds.insert(FoldedId(content->TextOf("GlobalClipID")));
    }
    return !AllFound();
  }
  bool AllFound() const {
    return std::all_of(card_.neighbours.begin(), card_.neighbours.end(),
                       [&](const Neighbour& n) { return card_.globalIds.contains(n.globalId); });
  }

 private:
  Card& card_;
};

void CheckShots(Card& card, const UTF16String& root) {
  NeighbourCardVisitor visitor(card);
  if (!visitor.AllFound()) p2::VisitSiblingDirectories(root, visitor);
  std::set<std::string> told;
  for (const Neighbour& neighbour : card.neighbours) {
    if (card.globalIds.contains(neighbour.globalId) || !told.insert(neighbour.globalId).second) {
      continue;
    }
    card.findings.missing.push_back({neighbour.entryKey, "span", neighbour.description});
  }
}

}  // namespace

StructureFindings ProviderP2::CheckStructure(const std::string& path) const {
  const foundation::CallScope scope;
  const UTF16String root = Hestra::MakeString(path);
  Card card{PathUtils::CombinePaths(root, p2::kContents), {}, {}, {}};
  for (const UTF16String& xml : p2::ListClipXmlFiles(root)) CheckClip(card, xml);
  CheckShots(card, root);
  AddStructureFiles(path, {"LASTCLIP.TXT"}, card.findings);
  AddUnreachedMedia(*this, path, {Hestra::MakeStdString(card.contents)}, card.findings);
  return std::move(card.findings);
}

}  // namespace Sorvik
