// SPDX-License-Identifier: MIT
#include "providers/common/StructureParts.h"

#include <algorithm>
#include <map>
#include <set>

#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"

namespace Sorvik {
namespace {

namespace Directory = Hestra::Directory;
namespace PathUtils = Hestra::PathUtils;
using tarnwick::utility::FoldCase;

// Folded as FoldCase does it. Frames of a sequence are no media by themselves.
constexpr std::u16string_view kMediaExtensions[] = {u".mxf", u".mp4", u".mov", u".mts", u".m2ts",
                                                    u".m2t", u".avi", u".dv",  u".wav", u".r3d"};

bool IsMedia(const UTF16String& path) {
  const UTF16String extension = FoldCase(PathUtils::GetExtensionPart(path));
  return std::find(std::begin(kMediaExtensions), std::end(kMediaExtensions), extension) !=
         std::end(kMediaExtensions);
}

// Copies in hidden folders, as file servers make them beside the files of each folder, count no
// more than hidden files do.
std::vector<UTF16String> VisibleFilesBelow(const UTF16String& folder) {
  std::vector<UTF16String> files = Directory::GetContainedFilePaths(folder, {}, true);
  std::erase_if(files, [&](const UTF16String& file) {
    return file.find(u"/.", folder.size()) != UTF16String::npos;
  });
  return files;
}

void AddPaths(const any_regular_t& value, std::set<std::string>& paths) {
  if (const auto* text = value.get_if<std::string>()) paths.insert(*text);
  if (const auto* list = value.get_if<std::vector<any_regular_t>>()) {
    for (const any_regular_t& item : *list) AddPaths(item, paths);
  }
}

std::set<std::string> ReachedPaths(const Provider& provider, const std::string& path) {
  const FieldNameSet fields{kPathField, kExtraPathField, kProxyPathField};
  std::set<std::string> reached;
  for (const auto& [key, values] : provider.GetContent(path, fields, nullptr)) {
    for (const std::string& field : fields) {
      const auto value = values.find(field);
      if (value != values.end()) AddPaths(value->second, reached);
    }
  }
  return reached;
}

}  // namespace

void AddStructureFiles(const UTF16String& folder, std::initializer_list<std::u16string_view> names,
                       StructureFindings& findings) {
  for (const UTF16String& file : Directory::GetContainedFilePaths(folder)) {
    const UTF16String name = FoldCase(PathUtils::GetFullFilePart(file));
    const bool own = std::any_of(names.begin(), names.end(), [&](std::u16string_view known) {
      return FoldCase(UTF16String(known)) == name;
    });
    if (own) findings.structureFiles.push_back(Hestra::MakeStdString(file));
  }
}

void AddStructureFilesBelow(const UTF16String& folder, StructureFindings& findings) {
  for (const UTF16String& file : VisibleFilesBelow(folder)) {
    findings.structureFiles.push_back(Hestra::MakeStdString(file));
  }
}

void AddUnreached(const Provider& provider, const std::string& path, const std::string& kind,
                  const std::vector<std::string>& files, StructureFindings& findings) {
  if (files.empty()) return;
  const std::set<std::string> reached = ReachedPaths(provider, path);
  const std::set<std::string> onDisk(files.begin(), files.end());
  // A path that is there and isn't listed as it stands was found by a file system that heeds no
  // case.
  std::map<UTF16String, UTF16String> reachedInAnyCase;
  for (const std::string& file : reached) {
    if (onDisk.contains(file)) continue;
    const UTF16String text = Hestra::MakeString(file);
    reachedInAnyCase.emplace(FoldCase(text), text);
  }
  for (const std::string& file : files) {
    if (reached.contains(file)) continue;
    const auto alike = reachedInAnyCase.find(FoldCase(Hestra::MakeString(file)));
    if (alike != reachedInAnyCase.end() && PathUtils::ExistsOnDisk(alike->second)) continue;
    findings.unreached.push_back({"", kind, file});
  }
}

void AddUnreachedMedia(const Provider& provider, const std::string& path,
                       const std::vector<UTF16String>& folders, StructureFindings& findings) {
  std::vector<std::string> media;
  for (const UTF16String& folder : folders) {
    for (const UTF16String& file : VisibleFilesBelow(folder)) {
      if (IsMedia(file)) media.push_back(Hestra::MakeStdString(file));
    }
  }
  AddUnreached(provider, path, "media of no clip", media, findings);
}

}  // namespace Sorvik
