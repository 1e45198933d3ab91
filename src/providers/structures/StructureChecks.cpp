// SPDX-License-Identifier: MIT
#include <algorithm>
#include <map>
#include <vector>

#include "foundation/CallScope.h"
#include "foundation/FoldedNames.h"
#include "foundation/Paths.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "providers/common/StructureParts.h"
#include "providers/structures/CanonXFNames.h"
#include "providers/structures/ProviderCanonXF.h"
#include "providers/structures/ProviderSonyHDV.h"

namespace Sorvik {
namespace {

namespace Directory = Hestra::Directory;
namespace PathUtils = Hestra::PathUtils;

std::vector<UTF16String> SubFolders(const UTF16String& folder) {
  std::vector<UTF16String> files;
  std::vector<UTF16String> folders;
  Directory::GetContainedFileAndDirectoryPaths(folder, files, folders);
  return folders;
}

// The spans of a clip folder by number.
std::map<int, UTF16String> SpansOf(const UTF16String& clip) {
  std::map<int, UTF16String> spans;
  for (const UTF16String& file : Directory::GetContainedFilePaths(clip, u".MXF")) {
    const int number = canonxf::GetSpanNumber(PathUtils::GetFilePart(file));
    if (number > 0) spans.emplace(number, file);
  }
  return spans;
}

void CheckClip(const UTF16String& clip, StructureFindings& findings) {
  const UTF16String id = PathUtils::GetFullFilePart(clip);
  const auto spans = SpansOf(clip);
  const auto pathOf = [&](const UTF16String& name) {
    return Hestra::MakeStdString(PathUtils::CombinePaths(clip, name));
  };
  if (spans.empty()) {
    findings.missing.push_back({"", "span", pathOf(id + u"01.MXF")});
    return;
  }
  const std::string key = Hestra::MakeStdString(PathUtils::GetFilePart(spans.begin()->second));
  for (int number = 1; number < spans.rbegin()->first; ++number) {
    if (spans.contains(number)) continue;
    const UTF16String digits =
        tarnwick::utility::AsciiToUTF16((number < 10 ? "0" : "") + std::to_string(number));
    findings.missing.push_back({key, "span", pathOf(id + digits + u".MXF")});
  }
  if (!foundation::FoundOnDisk(PathUtils::CombinePaths(clip, id + u".CIF"))) {
    findings.missing.push_back({key, "clip information", pathOf(id + u".CIF")});
  }
}

}  // namespace

StructureFindings ProviderCanonXF::CheckStructure(const std::string& path) const {
  const foundation::CallScope scope;
  StructureFindings findings;
  const UTF16String clips = canonxf::ClipRootOf(Hestra::MakeString(path));
  for (const UTF16String& clip : SubFolders(clips)) {
    if (canonxf::IsClipFolderName(PathUtils::GetFullFilePart(clip))) CheckClip(clip, findings);
  }
  const std::string clipRoot = Hestra::MakeStdString(clips);
  AddStructureFiles(clipRoot, {"INDEX.MIF"}, findings);
  AddStructureFilesBelow(foundation::JoinPath(clipRoot, "JOURNAL"), findings);
  AddUnreachedMedia(*this, path, {clipRoot}, findings);
  return findings;
}

StructureFindings ProviderSonyHDV::CheckStructure(const std::string& path) const {
  const foundation::CallScope scope;
  StructureFindings findings;
  const UTF16String folder =
      PathUtils::CombinePaths(PathUtils::CombinePaths(Hestra::MakeString(path), u"VIDEO"), u"HVR");
  const ContentMap content = GetContent(path, FieldNameSet(), nullptr);
  std::string run;  // the clip number of the recording before, all of whose files share an index
  for (const auto& [key, fields] : content) {
    const UTF16String title = PathUtils::GetFilePart(Hestra::MakeString(key));
    const std::string number = key.substr(3, 4);
    if (number == run) continue;
    run = number;
    const UTF16String index = PathUtils::CombinePaths(folder, title + u".IDX");
    if (!PathUtils::ExistsOnDisk(index)) {
      findings.missing.push_back({key, "index", Hestra::MakeStdString(index)});
    }
  }
  // Clips name the track list whether it is there or not, and the layout does without.
  const UTF16String tracks = PathUtils::CombinePaths(folder, u"TRACKS.DAT");
  findings.structureFiles.push_back(Hestra::MakeStdString(tracks));
  AddStructureFiles(Hestra::MakeStdString(folder), {"TRACKS.DAT"}, findings);
  AddUnreachedMedia(*this, path, {Hestra::MakeStdString(folder)}, findings);
  return findings;
}

}  // namespace Sorvik
