// SPDX-License-Identifier: MIT
#include "providers/common/StructureParts.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "formats/MediaNames.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/platform/FileSystem.h"

namespace Sorvik {
namespace {

using foundation::CardFolder;
using foundation::FoldCase;

// Without the contents of hidden folders, in which file servers keep copies of a folder's files.
std::vector<std::string> VisibleFilesBelow(const std::string& folder) {
  std::vector<std::string> files = foundation::ListFilesBelow(folder);
  std::erase_if(files, [&](const std::string& file) {
    return file.find("/.", folder.size()) != std::string::npos;
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

void AddStructureFiles(const std::string& folder, std::initializer_list<std::string_view> names,
                       StructureFindings& findings) {
  const auto listed = CardFolder::Of(folder);
  for (const std::string& file : listed->Files()) {
    const bool known = std::ranges::any_of(names, [&file](std::string_view name) {
      return foundation::EqualIgnoringCase(name, file);
    });
    if (known) findings.structureFiles.push_back(listed->PathOf(file));
  }
}

void AddStructureFilesBelow(const std::string& folder, StructureFindings& findings) {
  for (std::string& file : VisibleFilesBelow(folder)) {
    findings.structureFiles.push_back(std::move(file));
  }
}

void AddUnreached(const Provider& provider, const std::string& path, const std::string& kind,
                  const std::vector<std::string>& files, StructureFindings& findings) {
  if (files.empty()) return;
  const std::set<std::string> reached = ReachedPaths(provider, path);
  const std::set<std::string> onDisk(files.begin(), files.end());
  // A reached path that exists but isn't listed in that spelling was found by a case-insensitive
  // file system.
  std::map<std::string, std::string> reachedByFoldedPath;
  for (const std::string& file : reached) {
    if (!onDisk.contains(file)) reachedByFoldedPath.emplace(FoldCase(file), file);
  }
  for (const std::string& file : files) {
    if (reached.contains(file)) continue;
    const auto same = reachedByFoldedPath.find(FoldCase(file));
    if (same != reachedByFoldedPath.end() && platform::KindOf(same->second)) continue;
    findings.unreached.push_back({"", kind, file});
  }
}

void AddUnreachedMedia(const Provider& provider, const std::string& path,
                       const std::vector<std::string>& folders, StructureFindings& findings) {
  std::vector<std::string> media;
  for (const std::string& folder : folders) {
    for (std::string& file : VisibleFilesBelow(folder)) {
      if (formats::HasMediaExtension(file)) media.push_back(std::move(file));
    }
  }
  AddUnreached(provider, path, "media of no clip", media, findings);
}

}  // namespace Sorvik
