// SPDX-License-Identifier: MIT
#include <map>
#include <string>
#include <string_view>

#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "providers/common/StructureParts.h"
#include "providers/structures/CanonXFNames.h"
#include "providers/structures/ProviderCanonXF.h"
#include "providers/structures/ProviderSonyHDV.h"
#include "providers/structures/SonyHDVNames.h"

namespace Sorvik {
namespace {

using foundation::CardFolder;
using foundation::FileStem;
using foundation::JoinPath;

// The titles of the spans of a clip folder by number.
std::map<int, std::string> SpansOf(const CardFolder& clip) {
  std::map<int, std::string> spans;
  for (const std::string& name : clip.Files(canonxf::kSpanExtension)) {
    const int number = canonxf::GetSpanNumber(FileStem(name));
    if (number > 0) spans.emplace(number, FileStem(name));
  }
  return spans;
}

std::string SpanName(std::string_view clipId, int number) {
  std::string name(clipId);
  name.append(number < 10 ? "0" : "").append(std::to_string(number));
  return name.append(canonxf::kSpanExtension);
}

void CheckClip(const CardFolder& clip, std::string_view id, StructureFindings& findings) {
  const auto spans = SpansOf(clip);
  if (spans.empty()) {
    findings.missing.push_back({"", "span", clip.PathOf(SpanName(id, 1))});
    return;
  }
  const std::string& key = spans.begin()->second;
  for (int number = 1; number < spans.rbegin()->first; ++number) {
    if (spans.contains(number)) continue;
    findings.missing.push_back({key, "span", clip.PathOf(SpanName(id, number))});
  }
  const std::string clipInfo = clip.PathOf(std::string(id).append(canonxf::kClipInfoExtension));
  if (!foundation::FindOnCard(clipInfo)) {
    findings.missing.push_back({key, "clip information", clipInfo});
  }
}

}  // namespace

StructureFindings ProviderCanonXF::CheckStructure(const std::string& path) const {
  const foundation::CallScope scope;
  StructureFindings findings;
  const auto clipRoot = CardFolder::Of(canonxf::ClipRootOf(path));
  for (const std::string& name : clipRoot->Folders()) {
    if (!canonxf::IsClipFolderName(name)) continue;
    CheckClip(*CardFolder::Of(clipRoot->PathOf(name)), name, findings);
  }
  AddStructureFiles(clipRoot->Path(), {canonxf::kIndexFile}, findings);
  AddStructureFilesBelow(clipRoot->PathOf(canonxf::kJournal), findings);
  AddUnreachedMedia(*this, path, {clipRoot->Path()}, findings);
  return findings;
}

StructureFindings ProviderSonyHDV::CheckStructure(const std::string& path) const {
  const foundation::CallScope scope;
  StructureFindings findings;
  const std::string folder = sonyhdv::ClipFolderOf(path);
  const ContentMap content = GetContent(path, FieldNameSet(), nullptr);
  std::string previous;  // all files of a recording share the index file of the first one
  for (const auto& [key, fields] : content) {
    const std::string number = sonyhdv::ClipNumberOf(key);
    if (number == previous) continue;
    previous = number;
    const std::string index =
        JoinPath(folder, std::string(FileStem(key)).append(sonyhdv::kIndexExtension));
    if (!foundation::ExistsOnDisk(index)) findings.missing.push_back({key, "index", index});
  }
  // An extra path of all clips, but not required.
  findings.structureFiles.push_back(JoinPath(folder, sonyhdv::kTracksFile));
  AddStructureFiles(folder, {sonyhdv::kTracksFile}, findings);
  AddUnreachedMedia(*this, path, {folder}, findings);
  return findings;
}

}  // namespace Sorvik
