// SPDX-License-Identifier: MIT
#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "providers/common/StructureParts.h"
#include "providers/sequences/ProviderARRIRAW.h"
#include "providers/sequences/ProviderCanonRAW.h"
#include "providers/sequences/ProviderCinemaDNG.h"
#include "providers/sequences/ProviderRED.h"
#include "providers/sequences/REDNames.h"

namespace Sorvik {
namespace {

using foundation::CardFolder;
using foundation::FoldCase;
using foundation::JoinPath;

// Of a longer gap, only the first and the last number are reported.
constexpr std::uint64_t kMaxReportedGap = 100;

// A file name split at its last run of digits: "A001." 0000123 ".ari".
struct NumberedName {
  std::string before;
  std::string after;
  std::size_t width;  // number of digits
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

// Reports the numbers from `from` up to `to` (excluded) as missing.
void AddGap(const NumberedName& pattern, std::uint64_t from, std::uint64_t to,
            const std::string& folder, const std::string& key, const std::string& kind,
            StructureFindings& findings) {
  const auto add = [&](const std::string& what, std::uint64_t number) {
    findings.missing.push_back({key, what, JoinPath(folder, Joined(pattern, number))});
  };
  if (to - from > kMaxReportedGap) {
    add(kind + "s from here", from);
    add(kind + "s up to here", to - 1);
    return;
  }
  for (std::uint64_t number = from; number < to; ++number) add(kind, number);
}

// The visible numbered files of a folder with the same extension, ignoring case as recognition of
// frames does. Grouped by the rest of their names and sorted by number.
using Runs = std::map<std::pair<std::string, std::string>, std::vector<NumberedName>>;

Runs NumberedFiles(const std::string& folder, std::string_view extension) {
  Runs runs;
  for (const std::string& file : CardFolder::Of(folder)->VisibleFiles(extension)) {
    if (auto name = SplitNumber(file)) {
      runs[{name->before, FoldCase(name->after)}].push_back(std::move(*name));
    }
  }
  for (auto& [pattern, names] : runs) {
    std::sort(names.begin(), names.end(),
              [](const NumberedName& a, const NumberedName& b) { return a.number < b.number; });
  }
  return runs;
}

// Reports sound whose name begins like the clip's, but isn't the one that the provider looks for.
void AddUnreachedSound(const Provider& provider, const std::string& path, const std::string& head,
                       StructureFindings& findings) {
  const std::string clip = FoldCase(foundation::FileStem(head));
  const auto folder = CardFolder::Of(path);
  std::vector<std::string> sounds;
  for (const std::string& name : folder->Files(".WAV")) {
    const std::string title = FoldCase(foundation::FileStem(name));
    if (foundation::StartsWithCharacters(clip, title)) sounds.push_back(folder->PathOf(name));
  }
  AddUnreached(provider, path, "sound under another name", sounds, findings);
}

StructureFindings CheckFrames(const Provider& provider, const std::string& path,
                              std::string_view extension) {
  const foundation::CallScope scope;
  StructureFindings findings;
  const auto folder = CardFolder::Of(path);
  const auto head = folder->FindVisibleFile(
      [extension](std::string_view name) { return foundation::HasExtension(name, extension); });
  const std::string key = head ? folder->PathOf(*head) : std::string();
  for (const auto& [pattern, names] : NumberedFiles(path, extension)) {
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

void CheckSegments(const std::string& folder, const std::string& key, StructureFindings& findings) {
  for (const auto& [pattern, names] : NumberedFiles(folder, red::kSegmentExtension)) {
    // "A001_C001_003 copy.R3D" doesn't belong to a run that starts at 1.
    if (pattern.second.front() != '.') continue;
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
  return CheckFrames(*this, path, ".ARI");
}

StructureFindings ProviderCanonRAW::CheckStructure(const std::string& path) const {
  return CheckFrames(*this, path, ".RMF");
}

StructureFindings ProviderCinemaDNG::CheckStructure(const std::string& path) const {
  return CheckFrames(*this, path, ".DNG");
}

StructureFindings ProviderRED::CheckStructure(const std::string& path) const {
  const foundation::CallScope scope;
  StructureFindings findings;
  std::vector<std::string> clips;
  const auto listed = CardFolder::Of(path);
  for (const std::string& name : listed->Folders()) {
    const auto clip = CardFolder::Of(listed->PathOf(name));
    const auto segment = clip->FindVisibleFile(IsClipSegment);
    const bool isClipFolder = red::IsClipFolderName(name);
    // A listing has an entry for any folder with a segment, whatever its name.
    if (isClipFolder || segment) clips.push_back(clip->Path());
    if (!isClipFolder) continue;
    if (segment) {
      CheckSegments(clip->Path(), clip->PathOf(*segment), findings);
    } else {
      findings.missing.push_back({"", "segment", clip->Path()});
    }
  }
  AddUnreachedMedia(*this, path, clips, findings);
  return findings;
}

}  // namespace Sorvik
