// SPDX-License-Identifier: MIT
#include "providers/modern/CanonFlatCard.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "providers/common/CardParts.h"
#include "providers/common/NameMask.h"

namespace Sorvik::canonflat {
namespace {

using foundation::CardFolder;
using foundation::EqualIgnoringCase;
using foundation::FileName;
using foundation::FileStem;
using foundation::FoldCase;
using foundation::JoinPath;

constexpr std::string_view kProxyEnd = "_Proxy";
constexpr std::string_view kIndex = "INDEX.MIF";
// In this order the essence of a recording is chosen among files of one name.
constexpr std::string_view kExtensions[] = {".crm", ".mxf", ".mp4"};

constexpr std::string_view kNumberedName = "@_####@###@######_######**";

bool IsClipsFolder(std::string_view name) {
  constexpr std::string_view kPrefix = "CLIPS";
  return name.size() == kPrefix.size() + 3 &&
         EqualIgnoringCase(name.substr(0, kPrefix.size()), kPrefix) &&
         MatchesPattern(name.substr(kPrefix.size()), "###");
}

std::size_t ExtensionRank(std::string_view name) {
  const auto found = std::ranges::find_if(kExtensions, [name](std::string_view extension) {
    return foundation::HasExtension(name, extension);
  });
  return static_cast<std::size_t>(found - std::begin(kExtensions));
}

// "-007" for the part before "-008".
std::string NumberText(unsigned number, char separator) {
  std::string digits = std::to_string(number);
  return separator + std::string(digits.size() < 3 ? 3 - digits.size() : 0, '0') + digits;
}

// The files of one part: those of one name, with different extensions.
struct PartFiles {
  std::vector<std::string> originals;
  std::vector<std::string> proxies;
};

}  // namespace

ClipName ParseClipName(std::string_view stem) {
  ClipName name{stem, std::nullopt, false};
  if (stem.size() > kProxyEnd.size() &&
      EqualIgnoringCase(stem.substr(stem.size() - kProxyEnd.size()), kProxyEnd)) {
    name.isProxy = true;
    name.base.remove_suffix(kProxyEnd.size());
  }
  constexpr std::size_t kNumberSize = 4;  // "-008"; manuals show "_008"
  if (name.base.size() < kNumberedName.size() + kNumberSize ||
      !MatchesPattern(name.base.substr(0, kNumberedName.size()), kNumberedName)) {
    return name;
  }
  const std::string_view number = name.base.substr(name.base.size() - kNumberSize);
  if (!MatchesPattern(number, "-###") && !MatchesPattern(number, "_###")) return name;
  name.part = 0;
  for (const char digit : number.substr(1)) {
    name.part = *name.part * 10 + static_cast<unsigned>(digit - '0');
  }
  name.base.remove_suffix(kNumberSize);
  return name;
}

std::vector<NumberedPart> PartsWithGaps(const Recording& recording) {
  std::vector<NumberedPart> parts;
  unsigned previous = 0;
  for (const std::string& path : recording.parts) {
    const ClipName name = ParseClipName(FileStem(path));
    if (name.part) {
      const std::string folder(foundation::ParentFolder(path));
      const char separator = name.base.data()[name.base.size()];
      for (unsigned part = previous + 1; previous != 0 && part < *name.part; ++part) {
        const std::string missing = std::string(name.base) + NumberText(part, separator) +
                                    std::string(foundation::FileExtension(path));
        parts.push_back({JoinPath(folder, missing), false});
      }
      previous = *name.part;
    }
    parts.push_back({path, true});
  }
  return parts;
}

bool IsClipFile(std::string_view name) { return ExtensionRank(name) < std::size(kExtensions); }

class Card::Builder {
 public:
  explicit Builder(Card& card) : card_(card) {}

  void Build(const std::string& root) {
    const std::string contents = FindFolder(root, kContents);
    if (contents.empty()) return;
    const auto folder = CardFolder::Of(contents);
    for (const std::string& name : folder->VisibleFolders()) {
      if (IsClipsFolder(name)) AddFolder(folder->PathOf(name));
    }
    const std::string sounds = FindFolder(FindFolder(root, "PRIVATE"), "AUDIO");
    if (!sounds.empty()) AddSounds(sounds);
  }

  void AddFolder(const std::string& path) {
    const auto folder = CardFolder::Of(path);
    std::map<std::string, std::map<unsigned, PartFiles>> recordings;  // by folded base
    std::vector<std::string> others;
    for (std::string& name : folder->VisibleFiles()) {
      if (!IsClipFile(name)) {
        others.push_back(std::move(name));
        continue;
      }
      const ClipName parsed = ParseClipName(FileStem(name));
      PartFiles& part = recordings[FoldCase(parsed.base)][parsed.part.value_or(0)];
      (parsed.isProxy ? part.proxies : part.originals).push_back(folder->PathOf(name));
    }
    for (auto& [base, parts] : recordings) AddRecording(FileName(path), base, parts);
    for (const std::string& name : others) AddSidecar(folder->PathOf(name));
    byStem_.clear();  // sidecars are in the folder of their clip
  }

 private:
  using Parts = std::map<unsigned, PartFiles>;

  void AddRecording(std::string_view folder, const std::string& base, Parts& parts) {
    Recording recording;
    const bool onlyProxies =
        std::ranges::all_of(parts, [](const auto& part) { return part.second.originals.empty(); });
    for (auto& [number, part] : parts) {
      if (onlyProxies) std::swap(part.originals, part.proxies);
      std::ranges::stable_sort(part.originals, {}, [](const std::string& path) {
        return std::tuple(ExtensionRank(path), path);
      });
      for (const std::string& path : part.originals) {
        byStem_.emplace(FoldCase(FileStem(path)), card_.recordings_.size());
        byStem_.emplace(FoldCase(FileName(path)), card_.recordings_.size());
        const bool isEssence = path == part.originals.front();
        (isEssence ? recording.parts : recording.files).push_back(path);
      }
      for (const std::string& path : part.proxies) {
        byStem_.emplace(FoldCase(FileStem(path)), card_.recordings_.size());
        recording.proxies.push_back(path);
      }
    }
    byBase_.emplace(base, card_.recordings_.size());
    recording.key = FileName(recording.parts.front());
    // Two folders with the same name: the second is keyed by its path.
    if (!keys_.insert(recording.key).second) recording.key = JoinPath(folder, recording.key);
    card_.recordings_.push_back(std::move(recording));
  }

  void AddSidecar(const std::string& path) {
    const auto recording = byStem_.find(FoldCase(FileStem(path)));
    if (recording != byStem_.end()) {
      card_.recordings_[recording->second].files.push_back(path);
    } else if (EqualIgnoringCase(FileName(path), kIndex)) {
      card_.sharedFiles_.push_back(path);
    } else {
      card_.looseFiles_.push_back(path);
    }
  }

  // The sound of slow and fast motion clips has the name of the clip.
  void AddSounds(const std::string& path) {
    const auto folder = CardFolder::Of(path);
    for (const std::string& name : folder->VisibleFiles(".wav")) {
      const auto recording = byBase_.find(FoldCase(ParseClipName(FileStem(name)).base));
      if (recording == byBase_.end()) continue;
      card_.recordings_[recording->second].files.push_back(folder->PathOf(name));
    }
  }

  Card& card_;
  std::unordered_map<std::string, std::size_t> byStem_;  // of the folder, folded
  std::unordered_map<std::string, std::size_t> byBase_;  // folded
  std::unordered_set<std::string> keys_;
};

std::shared_ptr<const Card> Card::Of(const std::string& root) {
  return foundation::CallScope::Share<Card>(root, [&root] {
    const auto card = std::make_shared<Card>();
    Builder(*card).Build(root);
    return card;
  });
}

Card Card::OfClipFolder(const std::string& path) {
  Card card;
  Builder(card).AddFolder(path);
  return card;
}

const Recording* Card::Find(std::string_view key) const {
  const auto found = std::ranges::find(recordings_, key, &Recording::key);
  return found == recordings_.end() ? nullptr : &*found;
}

}  // namespace Sorvik::canonflat
