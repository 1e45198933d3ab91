// SPDX-License-Identifier: MIT
#include <algorithm>
#include <set>
#include <string>
#include <string_view>

#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/XmlTree.h"
#include "providers/common/StructureParts.h"
#include "providers/modern/ProviderSonyXAVC.h"
#include "providers/modern/XAVCCard.h"

namespace Sorvik {
namespace {

using formats::sony::MaterialPart;
using foundation::FileName;
using foundation::FileStem;
using foundation::HasExtension;
using foundation::JoinPath;
using xavc::Card;
using xavc::Clip;

constexpr std::size_t kMaxRecordBytes = std::size_t{4} << 20;

bool IsRecord(std::string_view name) {
  return xavc::IsFileOfKind(name, 'M') && HasExtension(name, ".xml");
}

const char* KindOfFile(std::string_view name) {
  if (IsRecord(name)) return "clip record";
  if (xavc::IsFileOfKind(name, 'T')) return "thumbnail";
  if (xavc::IsFileOfKind(name, 'R')) return "real-time metadata";
  return xavc::IsEssenceName(name) ? "proxy" : "sidecar";
}

// Reports the files that the material list names and that don't exist, and a damaged record.
void CheckClip(const Card& card, const Clip& clip, const std::string& key,
               StructureFindings& findings) {
  if (!clip.exists) findings.missing.push_back({key, "essence", card.PathOf(clip)});
  std::set<std::string> existing;
  for (const std::string& file : clip.files) existing.insert(foundation::FoldCase(file));
  if (clip.material != nullptr) {
    for (const MaterialPart& part : clip.material->parts) {
      const std::string path = foundation::NormalizedPath(JoinPath(card.Root(), part.uri));
      if (!foundation::IsInside(path, card.Root())) continue;
      if (existing.contains(foundation::FoldCase(path))) continue;
      findings.missing.push_back({key, KindOfFile(FileName(path)), path});
    }
  }
  const std::string record = clip.Record();
  if (!record.empty() && !foundation::ReadXmlFile(record, {.bytes = kMaxRecordBytes})) {
    findings.missing.push_back({key, "readable clip record", record});
  }
}

void CheckIndex(const Card& card, StructureFindings& findings) {
  if (card.IndexPath().empty()) {
    findings.missing.push_back({"", "material list", JoinPath(card.Root(), xavc::kIndex)});
  } else if (!card.Index().IsReadable()) {
    findings.missing.push_back({"", "readable material list", card.IndexPath()});
  }
}

// A record that no list names proves that there was a clip.
void CheckLooseFiles(const Card& card, StructureFindings& findings) {
  const bool isMXF = std::ranges::any_of(
      card.Clips(), [](const Clip& clip) { return HasExtension(clip.essence, ".mxf"); });
  for (const std::string& file : card.LooseFiles()) {
    if (IsRecord(FileName(file))) {
      std::string stem = JoinPath(foundation::ParentFolder(file), FileStem(file));
      stem.resize(stem.size() - xavc::kKindSize);
      findings.missing.push_back({"", "essence", stem + (isMXF ? ".MXF" : ".MP4")});
      findings.structureFiles.push_back(file);
    }
  }
}

}  // namespace

StructureFindings ProviderSonyXAVC::CheckStructure(const std::string& path) const {
  const foundation::CallScope scope;
  StructureFindings findings;
  const auto card = Card::Of(std::string(foundation::WithoutTrailingSlash(path)));
  CheckIndex(*card, findings);
  for (const Clip& clip : card->Clips()) {
    if (card->IsLaterPart(clip)) continue;
    CheckClip(*card, clip, clip.essence, findings);
    for (const Clip* part : card->PartsAfter(clip)) {
      CheckClip(*card, *part, clip.essence, findings);
    }
  }
  CheckLooseFiles(*card, findings);
  for (const std::string& file : card->SharedFiles()) findings.structureFiles.push_back(file);
  const auto root = foundation::CardFolder::Of(card->Root());
  std::vector<std::string> mediaFolders;
  for (const std::string_view name : {xavc::kClipFolder, xavc::kProxyFolder}) {
    if (const auto folder = root->Find(name)) mediaFolders.push_back(root->PathOf(*folder));
  }
  AddUnreachedMedia(*this, path, mediaFolders, findings);
  for (const std::string& folder : card->SharedFolders()) AddStructureFilesBelow(folder, findings);
  return findings;
}

}  // namespace Sorvik
