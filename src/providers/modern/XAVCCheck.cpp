// SPDX-License-Identifier: MIT
#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "frame/CardChecker.h"
#include "providers/common/CardParts.h"
#include "providers/modern/ProviderSonyXAVC.h"
#include "providers/modern/XAVCCard.h"

namespace Sorvik {
namespace {

using formats::sony::Material;
using formats::sony::MaterialPart;
using foundation::FileName;
using foundation::FileStem;
using foundation::HasExtension;
using foundation::JoinPath;
using xavc::Card;
using xavc::Clip;

struct RoleOfFile {
  const char* role;
  CardPart::Content content;
};

RoleOfFile RoleOf(std::string_view name) {
  using Content = CardPart::Content;
  if (xavc::IsFileOfKind(name, 'M') && HasExtension(name, ".xml")) {
    return {card_role::kClipRecord, Content::kXml};
  }
  if (xavc::IsFileOfKind(name, 'T')) return {card_role::kThumbnail, Content::kMedia};
  if (xavc::IsFileOfKind(name, 'R')) return {card_role::kRealTimeMeta, Content::kOpaque};
  if (xavc::IsFileOfKind(name, 'S')) return {card_role::kProxy, Content::kMedia};
  // The pieces of a proxy aren't complete files.
  if (xavc::IsEssenceName(name)) return {card_role::kProxy, Content::kOpaque};
  return {card_role::kSidecar, Content::kOpaque};
}

// The path of a uri ("./CLIP/C0001M01.XML"); empty if it leads off the card.
std::string PathOfUri(const Card& card, std::string_view uri) {
  std::string path = foundation::NormalizedPath(JoinPath(card.Root(), uri));
  return foundation::IsInside(path, card.Root()) ? path : std::string();
}

// Adds the files that the material list names and that don't exist.
void ExpectListedFiles(const Card& card, const Clip& clip, const std::string& key,
                       CardDescription& description) {
  if (clip.material == nullptr) return;
  std::set<std::string> existing;
  for (const std::string& file : clip.files) existing.insert(foundation::FoldCase(file));
  for (const MaterialPart& part : clip.material->parts) {
    const std::string path = PathOfUri(card, part.uri);
    if (path.empty() || existing.contains(foundation::FoldCase(path))) continue;
    const RoleOfFile role = RoleOf(FileName(path));
    description.Expect(
        {.path = path, .role = role.role, .entryKeys = KeyList(key), .content = role.content});
  }
}

void DescribeClip(const Card& card, const Clip& clip, const std::string& key,
                  CardDescription& description) {
  const std::string essence = card.PathOf(clip);
  description.Expect({.path = essence,
                      .role = card_role::kEssence,
                      .entryKeys = KeyList(key),
                      .content = CardPart::Content::kMedia});
  for (const std::string& file : clip.files) {
    const RoleOfFile role = RoleOf(FileName(file));
    description.Expect(
        {.path = file, .role = role.role, .entryKeys = KeyList(key), .content = role.content});
  }
  ExpectListedFiles(card, clip, key, description);
  if (clip.material == nullptr && card.Index().IsReadable()) {
    description.Report(Finding::Kind::kUnlisted, card_role::kEssence, essence, KeyList(key),
                       "not listed in " + std::string(FileName(card.IndexPath())));
  }
}

void DescribeRecording(const Card& card, const Clip& first, CardDescription& description) {
  DescribeClip(card, first, first.essence, description);
  for (const Clip* part : card.PartsAfter(first)) {
    DescribeClip(card, *part, first.essence, description);
    description.Report({Finding::Kind::kUnlisted, Finding::Severity::kNote, card_role::kSpan,
                        card.PathOf(*part), KeyList(first.essence),
                        "inferred: continues the timecode, device, codec and time of the clip "
                        "before it"});
  }
}

void DescribeIndex(const Card& card, CardDescription& description) {
  const bool exists = !card.IndexPath().empty();
  const std::string path = exists ? card.IndexPath() : JoinPath(card.Root(), xavc::kIndex);
  description.Expect({.path = path, .role = card_role::kIndex});
  if (exists && !card.Index().IsReadable()) {
    description.Report(Finding::Kind::kUnreadable, card_role::kIndex, path, {},
                       "not a material list");
  }
  for (const Material* material : card.StaleMaterials()) {
    description.Report(
        {Finding::Kind::kStale,
         Finding::Severity::kWarning,
         card_role::kEssence,
         PathOfUri(card, material->uri),
         {},
         "listed in " + std::string(FileName(path)) + ", but no file of the clip exists"});
  }
}

// Records of clips that no list names and whose essence doesn't exist.
void DescribeLooseFiles(const Card& card, CardDescription& description) {
  const bool isMXF = std::ranges::any_of(
      card.Clips(), [](const Clip& clip) { return HasExtension(clip.essence, ".mxf"); });
  for (const std::string& file : card.LooseFiles()) {
    const RoleOfFile role = RoleOf(FileName(file));
    if (role.role == std::string_view(card_role::kClipRecord)) {
      std::string stem = JoinPath(foundation::ParentFolder(file), FileStem(file));
      stem.resize(stem.size() - xavc::kKindSize);
      description.AddStructureFile(file);
      description.Report(Finding::Kind::kMissing, card_role::kEssence,
                         stem + (isMXF ? ".MXF" : ".MP4"), {},
                         "its record " + std::string(FileName(file)) + " exists");
    }
  }
}

}  // namespace

void ProviderSonyXAVC::DescribeCard(const std::string& path, const ContentMap&,
                                    CardDescription& description) const {
  const auto card = Card::Of(std::string(foundation::WithoutTrailingSlash(path)));
  DescribeIndex(*card, description);
  for (const Clip& clip : card->Clips()) {
    if (!card->IsLaterPart(clip)) DescribeRecording(*card, clip, description);
  }
  DescribeLooseFiles(*card, description);
  for (const std::string& file : card->SharedFiles()) description.AddStructureFile(file);
  for (const std::string& folder : card->SharedFolders()) {
    AddStructureFilesBelow(folder, description);
  }
  const auto root = foundation::CardFolder::Of(card->Root());
  for (const std::string_view name : xavc::kStructureFolders) {
    const auto folder = root->Find(name);
    if (!folder || !root->ContainsFolder(*folder)) continue;
    description.AddFolder(root->PathOf(*folder));
    if (name == xavc::kClipFolder || name == xavc::kProxyFolder) {
      description.AddMediaFolder(root->PathOf(*folder));
    }
  }
}

}  // namespace Sorvik
