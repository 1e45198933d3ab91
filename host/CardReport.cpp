// SPDX-License-Identifier: MIT
#include "CardReport.h"

#include <algorithm>
#include <map>
#include <set>

#include "Paths.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "Values.h"

namespace host {
namespace {

using Sorvik::ContentMap;
using Sorvik::StructureFindings;
using Sorvik::StructurePart;
using Sorvik::UTF16String;

// Maps a path to the keys of the clips that list it. Listing a folder doesn't make a clip the owner
// of the files in it: such folders are often shared by all clips.
using Owners = std::map<std::string, std::vector<std::string>>;

UTF16String Folded(const std::string& path) {
  return tarnwick::utility::FoldCase(tarnwick::utility::UTF8to16(path));
}

// Paths as the library spells them. Cards often use case-insensitive file systems, on which the
// spelling on disk can differ from the one that a provider used.
class KnownPaths {
 public:
  void Add(const std::string& path) { spellings_.emplace(Folded(path), path); }

  // Returns the known spelling of the file at `path`, or `path` itself if there is none.
  std::string SpellingOf(const std::string& path) const {
    const auto [begin, end] = spellings_.equal_range(Folded(path));
    std::string other = path;
    for (auto known = begin; known != end; ++known) {
      if (known->second == path) return path;
      if (IsSameFile(known->second, path)) other = known->second;
    }
    return other;
  }

 private:
  std::multimap<UTF16String, std::string> spellings_;
};

Owners ListedPaths(const ContentMap& entries) {
  Owners owners;
  for (const auto& [key, fields] : entries) {
    for (const std::string& path : EntryPaths(fields)) owners[path].push_back(key);
  }
  return owners;
}

std::vector<std::string> OwnersOf(const std::string& file, const Owners& listed) {
  const auto found = listed.find(file);
  return found == listed.end() ? std::vector<std::string>() : found->second;
}

std::set<std::string> PathsOf(const std::vector<StructurePart>& parts) {
  std::set<std::string> paths;
  for (const StructurePart& part : parts) paths.insert(part.path);
  return paths;
}

// The parts that the library reports as missing, and paths that clips list but that don't exist.
std::vector<StructurePart> MissingParts(const Owners& listed, const StructureFindings& findings) {
  std::vector<StructurePart> missing = findings.missing;
  std::set<std::string> known = PathsOf(missing);
  known.insert(findings.structureFiles.begin(), findings.structureFiles.end());
  for (const auto& [path, keys] : listed) {
    if (known.contains(path) || Exists(path)) continue;
    for (const std::string& key : keys) missing.push_back({key, "file", path});
  }
  return missing;
}

}  // namespace

bool CardReport::IsComplete() const {
  return missing.empty() && std::none_of(files.begin(), files.end(), [](const CardFile& file) {
           return file.role == FileRole::kOrphaned;
         });
}

CardReport MakeCardReport(const std::string& root, const ContentMap& entries,
                          const StructureFindings& findings, const std::atomic<bool>& stop) {
  const Owners listed = ListedPaths(entries);
  const std::set<std::string> orphaned = PathsOf(findings.unreached);
  const std::set<std::string> structure(findings.structureFiles.begin(),
                                        findings.structureFiles.end());
  KnownPaths known;
  for (const auto& [path, keys] : listed) known.Add(path);
  for (const std::string& path : orphaned) known.Add(path);
  for (const std::string& path : structure) known.Add(path);
  CardReport report;
  report.missing = MissingParts(listed, findings);
  WalkFiles(root, stop, [&](const std::string& path) {
    const std::string spelling = known.SpellingOf(path);
    CardFile file{path, FileRole::kUnrelated, OwnersOf(spelling, listed)};
    if (!file.owners.empty()) {
      file.role = FileRole::kClip;
    } else if (orphaned.contains(spelling)) {
      file.role = FileRole::kOrphaned;
    } else if (structure.contains(spelling)) {
      file.role = FileRole::kStructure;
    }
    report.files.push_back(std::move(file));
  });
  return report;
}

}  // namespace host
