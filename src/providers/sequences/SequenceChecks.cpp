// SPDX-License-Identifier: MIT
#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "foundation/CallScope.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "providers/common/StructureParts.h"
#include "providers/sequences/ProviderARRIRAW.h"
#include "providers/sequences/ProviderCanonRAW.h"
#include "providers/sequences/ProviderCinemaDNG.h"
#include "providers/sequences/ProviderRED.h"

namespace Sorvik {
namespace {

namespace Directory = Hestra::Directory;
namespace PathUtils = Hestra::PathUtils;
using tarnwick::utility::FoldCase;

// More gaps than this in one run are named by their first and last alone.
constexpr std::uint64_t kMaxNamedGaps = 100;

constexpr std::u16string_view kSegment = u".R3D";

// A file name around its last run of digits: "A001." 0000123 ".ari".
struct NumberedName {
  std::string before;
  std::string after;
  std::size_t width;
  std::uint64_t number;
};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::optional<NumberedName> SplitNumber(const std::string& name) {
  const auto dot = std::min(name.rfind('.'), name.size());
  const auto last =
      std::find_if(name.rend() - static_cast<std::ptrdiff_t>(dot), name.rend(), IsDigit);
  if (last == name.rend()) return std::nullopt;
  const auto first = std::find_if_not(last, name.rend(), IsDigit);
  const auto begin = static_cast<std::size_t>(first.base() - name.begin());
  const auto end = static_cast<std::size_t>(last.base() - name.begin());
  NumberedName split{name.substr(0, begin), name.substr(end), end - begin, 0};
  const auto [stop, error] = std::from_chars(name.data() + begin, name.data() + end, split.number);
  if (error != std::errc() || stop != name.data() + end) return std::nullopt;
  return split;
}

std::string Joined(const NumberedName& name, std::uint64_t number) {
  std::string digits = std::to_string(number);
  if (digits.size() < name.width) digits.insert(0, name.width - digits.size(), '0');
  return name.before + digits + name.after;
}

// Names the numbers between `from` and `to` (not included) that stand for nothing.
void AddGap(const NumberedName& like, std::uint64_t from, std::uint64_t to,
            const std::string& folder, const std::string& key, const std::string& kind,
            StructureFindings& findings) {
  if (to - from > kMaxNamedGaps) {
    findings.missing.push_back({key, kind + "s from here", folder + "/" + Joined(like, from)});
    findings.missing.push_back({key, kind + "s up to here", folder + "/" + Joined(like, to - 1)});
    return;
  }
  for (std::uint64_t number = from; number < to; ++number) {
    findings.missing.push_back({key, kind, folder + "/" + Joined(like, number)});
  }
}

// The numbered files of one kind in a folder, by what stands around their numbers. The extension is
// compared regardless of case, as it is where frames are told.
using Runs = std::map<std::pair<std::string, std::string>, std::vector<NumberedName>>;

Runs NumberedFiles(const std::string& folder, std::u16string_view extension) {
  Runs runs;
  std::vector<UTF16String> files =
      Directory::GetContainedFilePaths(Hestra::MakeString(folder), extension);
  // What a desktop leaves beside some of the files is no run of its own.
  PathUtils::FilterHiddenFiles(files);
  for (const UTF16String& path : files) {
    if (auto name = SplitNumber(Hestra::MakeStdString(PathUtils::GetFullFilePart(path)))) {
      const std::string folded = Hestra::MakeStdString(FoldCase(Hestra::MakeString(name->after)));
      runs[{name->before, folded}].push_back(std::move(*name));
    }
  }
  for (auto& [around, names] : runs) {
    std::sort(names.begin(), names.end(),
              [](const NumberedName& a, const NumberedName& b) { return a.number < b.number; });
  }
  return runs;
}

std::string FirstVisible(const std::string& folder, std::u16string_view extension) {
  std::vector<UTF16String> files =
      Directory::GetContainedFilePaths(Hestra::MakeString(folder), extension);
  PathUtils::FilterHiddenFiles(files);
  return files.empty() ? std::string() : Hestra::MakeStdString(files.front());
}

// Sound that bears the clip's name, but not the one that its provider goes by.
void AddUnreachedSound(const Provider& provider, const std::string& path, const std::string& head,
                       StructureFindings& findings) {
  const UTF16String clip = FoldCase(PathUtils::GetFilePart(Hestra::MakeString(head)));
  std::vector<std::string> sounds;
  for (const UTF16String& file :
       Directory::GetContainedFilePaths(Hestra::MakeString(path), u".WAV")) {
    if (!clip.starts_with(FoldCase(PathUtils::GetFilePart(file)))) continue;
    sounds.push_back(Hestra::MakeStdString(file));
  }
  AddUnreached(provider, path, "sound under another name", sounds, findings);
}

StructureFindings CheckFrames(const Provider& provider, const std::string& path,
                              std::u16string_view extension) {
  const foundation::CallScope scope;
  StructureFindings findings;
  const std::string key = FirstVisible(path, extension);
  for (const auto& [around, names] : NumberedFiles(path, extension)) {
    for (std::size_t i = 1; i < names.size(); ++i) {
      const std::uint64_t last = names[i - 1].number;
      if (names[i].number - last > 1) {
        AddGap(names[i - 1], last + 1, names[i].number, path, key, "frame", findings);
      }
    }
  }
  AddUnreachedSound(provider, path, key, findings);
  return findings;
}

// The segment that a listing takes for the clip, whose spelling is exact; empty if there is none.
std::string FirstSegment(const UTF16String& folder) {
  std::vector<UTF16String> files = Directory::GetContainedFilePaths(folder);
  PathUtils::FilterHiddenFiles(files);
  const auto first = std::find_if(files.begin(), files.end(), [](const UTF16String& file) {
    return PathUtils::GetExtensionPart(file) == kSegment;
  });
  return first == files.end() ? std::string() : Hestra::MakeStdString(*first);
}

void CheckSegments(const std::string& folder, const std::string& key, StructureFindings& findings) {
  for (const auto& [around, names] : NumberedFiles(folder, kSegment)) {
    // "A001_C001_003 copy.R3D" is no segment of a run that starts at 1.
    if (around.second.front() != '.') continue;
    std::uint64_t last = 0;
    for (const NumberedName& name : names) {
      if (name.number - last > 1) {
        AddGap(name, last + 1, name.number, folder, key, "segment", findings);
      }
      last = name.number;
    }
  }
}

}  // namespace

StructureFindings ProviderARRIRAW::CheckStructure(const std::string& path) const {
  return CheckFrames(*this, path, u".ARI");
}

StructureFindings ProviderCanonRAW::CheckStructure(const std::string& path) const {
  return CheckFrames(*this, path, u".RMF");
}

StructureFindings ProviderCinemaDNG::CheckStructure(const std::string& path) const {
  return CheckFrames(*this, path, u".DNG");
}

StructureFindings ProviderRED::CheckStructure(const std::string& path) const {
  const foundation::CallScope scope;
  StructureFindings findings;
  std::vector<UTF16String> files;
  std::vector<UTF16String> folders;
  Directory::GetContainedFileAndDirectoryPaths(Hestra::MakeString(path), files, folders);
  std::vector<std::string> clips;
  for (const UTF16String& folder : folders) {
    const std::string key = FirstSegment(folder);
    const bool named = PathUtils::GetExtensionPart(folder) == u".RDC";
    const std::string clip = Hestra::MakeStdString(folder);
    // A listing takes folders of other names with a segment for clips as well.
    if (named || !key.empty()) clips.push_back(clip);
    if (named && key.empty()) findings.missing.push_back({"", "segment", clip});
    if (named && !key.empty()) CheckSegments(clip, key, findings);
  }
  AddUnreachedMedia(*this, path, clips, findings);
  return findings;
}

}  // namespace Sorvik
