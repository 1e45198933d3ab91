// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "formats/TiffLayout.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/platform/FileStatus.h"
#include "providers/common/CardParts.h"
#include "providers/common/NumberGaps.h"
#include "providers/common/REDNames.h"
#include "providers/sequences/ProviderARRIRAW.h"
#include "providers/sequences/ProviderCanonRAW.h"
#include "providers/sequences/ProviderCinemaDNG.h"
#include "providers/sequences/ProviderRED.h"

namespace Sorvik {
namespace {

using foundation::CardFolder;
using foundation::FileStem;
using foundation::FoldCase;
using foundation::JoinPath;

// Frame numbers of ARRI cameras count from midnight, so a clip over midnight has the numbers of
// both ends of the day.
bool PassesMidnight(const std::vector<NumberedName>& names) {
  constexpr std::uint64_t kSecondsPerDay = 24 * 60 * 60;
  if (names.front().number != 0) return false;
  const std::uint64_t frames = names.back().number + 1;
  return std::ranges::any_of(std::array{24, 25, 30, 48, 50, 60}, [frames](int rate) {
    return frames == kSecondsPerDay * static_cast<std::uint64_t>(rate);
  });
}

// The size of most frames; 0 if there is no majority.
std::uint64_t UsualSize(const std::string& folder, const std::vector<std::string>& names) {
  std::map<std::uint64_t, std::size_t> counts;
  for (const std::string& name : names) {
    const auto status = platform::StatusOf(JoinPath(folder, name));
    if (status) ++counts[status->bytes];
  }
  const auto usual = std::ranges::max_element(
      counts, {}, [](const auto& count) { return std::pair(count.second, count.first); });
  const bool majority = usual != counts.end() && usual->second * 2 > names.size();
  return majority ? usual->first : 0;
}

// The folder of one clip, whose entry is its first frame.
struct FrameFolder {
  std::string path;
  std::string_view extension;
  std::vector<std::string> keys;
  bool uncompressed = false;  // all frames have the same size
};

void ExpectFrames(const FrameFolder& folder, CardDescription& card) {
  const auto names = CardFolder::Of(folder.path)->VisibleFiles(folder.extension);
  const std::uint64_t minBytes = folder.uncompressed ? UsualSize(folder.path, names) : 0;
  for (const std::string& name : names) {
    card.Expect({.path = JoinPath(folder.path, name),
                 .role = card_role::kFrame,
                 .entryKeys = folder.keys,
                 .content = CardPart::Content::kMedia,
                 .minBytes = minBytes,
                 .minBytesSource = "the other frames"});
  }
}

void ReportFrameGaps(const FrameFolder& folder, const Runs& runs, const GapMeaning& usual,
                     CardDescription& card) {
  for (const auto& [pattern, names] : runs) {
    GapMeaning meaning = usual;
    if (PassesMidnight(names)) {
      meaning.severity = Finding::Severity::kWarning;
      meaning.detail = "the numbers pass midnight";
    }
    for (std::size_t i = 1; i < names.size(); ++i) {
      const std::uint64_t last = names[i - 1].number;
      if (names[i].number - last > 1) {
        ReportGap(names[i - 1], last + 1, names[i].number, folder.path, folder.keys, meaning, card);
      }
    }
  }
}

void ExpectSound(const FrameFolder& folder, const std::string& name, CardDescription& card) {
  card.Expect({.path = JoinPath(folder.path, name),
               .role = card_role::kSound,
               .entryKeys = folder.keys,
               .content = CardPart::Content::kMedia,
               .required = false});
}

// The sound files whose names begin like the clip's, but aren't the one that the provider looks
// for.
std::vector<std::string> OtherSound(const FrameFolder& folder, const ContentMap& entries) {
  std::vector<std::string> others;
  if (entries.empty()) return others;
  const EntryOfPath owners(entries, {".WAV"});
  const std::string clip = FoldCase(foundation::FileStem(entries.begin()->first));
  const auto listed = CardFolder::Of(folder.path);
  for (const std::string& name : listed->VisibleFiles(".WAV")) {
    const std::string title = FoldCase(foundation::FileStem(name));
    if (!foundation::StartsWithCharacters(clip, title)) continue;
    if (owners.KeyOf(listed->PathOf(name)).empty()) others.push_back(name);
  }
  return others;
}

void ReportOrphanedSound(const FrameFolder& folder, const ContentMap& entries,
                         CardDescription& card) {
  for (const std::string& name : OtherSound(folder, entries)) {
    const std::string path = JoinPath(folder.path, name);
    card.AddStructureFile(path);
    card.Report(Finding::Kind::kOrphaned, card_role::kSound, path, {}, "belongs to no entry");
  }
}

FrameFolder FolderOf(const std::string& path, std::string_view extension,
                     const ContentMap& entries) {
  FrameFolder folder{std::string(foundation::WithoutTrailingSlash(path)), extension, {}};
  if (!entries.empty()) folder.keys = {entries.begin()->first};
  return folder;
}

// Each sequence of a Canon RAW folder has sound with the name of its first frame. Sound in front of
// the first frame shows that frames are missing.
void DescribeCanonSound(const FrameFolder& folder, const Runs& runs, CardDescription& card) {
  const auto listed = CardFolder::Of(folder.path);
  for (const std::string& name : listed->VisibleFiles(".WAV")) {
    std::string frame(foundation::FileStem(name));
    frame += folder.extension;
    const auto head = SplitNumber(frame);
    if (!head) continue;
    const auto run = runs.find({head->before, FoldCase(head->after)});
    if (run == runs.end()) continue;
    ExpectSound(folder, name, card);
    const std::uint64_t first = run->second.front().number;
    if (head->number < first) {
      ReportGap(*head, head->number, first, folder.path, folder.keys,
                {card_role::kFrame, Finding::Severity::kError, "its sound exists"}, card);
    }
  }
}

// What else a clip folder contains: MOV proxies, sound, a picture (.rtn), metadata (.RDX, .RMD).
void DescribeCompanions(const CardFolder& clip, std::string_view title,
                        const std::vector<std::string>& keys, CardDescription& card) {
  const std::string start = FoldCase(title);
  for (const std::string& name : clip.VisibleFiles()) {
    if (red::IsSegmentName(name) || title.empty()) continue;
    if (!foundation::StartsWithCharacters(FoldCase(FileStem(name)), start)) continue;
    const char* role = RoleOfCompanion(name);
    card.Expect(
        {.path = clip.PathOf(name),
         .role = role,
         .entryKeys = keys,
         .content = IsMediaRole(role) ? CardPart::Content::kMedia : CardPart::Content::kOpaque,
         .mayBeEmpty = !IsMediaRole(role)});
  }
}

}  // namespace

void ProviderARRIRAW::DescribeCard(const std::string& path, const ContentMap& entries,
                                   CardDescription& card) const {
  FrameFolder folder = FolderOf(path, ".ARI", entries);
  folder.uncompressed = true;
  ExpectFrames(folder, card);
  ReportFrameGaps(folder, NumberedFiles(folder.path, folder.extension), {card_role::kFrame}, card);
  for (const std::string& name : OtherSound(folder, entries)) ExpectSound(folder, name, card);
}

void ProviderCanonRAW::DescribeCard(const std::string& path, const ContentMap& entries,
                                    CardDescription& card) const {
  FrameFolder folder = FolderOf(path, ".RMF", entries);
  folder.uncompressed = true;
  const Runs runs = NumberedFiles(folder.path, folder.extension);
  ExpectFrames(folder, card);
  ReportFrameGaps(folder, runs, {card_role::kFrame}, card);
  DescribeCanonSound(folder, runs, card);
  for (const char* name : {"CLIPINFO.XML", "HrClip.inf"}) {
    card.Expect({.path = JoinPath(folder.path, name),
                 .role = card_role::kClipRecord,
                 .entryKeys = folder.keys,
                 .required = false});
  }
}

void ProviderCinemaDNG::DescribeCard(const std::string& path, const ContentMap& entries,
                                     CardDescription& card) const {
  const FrameFolder folder = FolderOf(path, ".DNG", entries);
  ExpectFrames(folder, card);
  GapMeaning meaning{card_role::kFrame};
  const bool photographs =
      !entries.empty() && !formats::HasFrameRate(entries.begin()->first).value_or(true);
  if (photographs) {
    meaning.severity = Finding::Severity::kWarning;
    meaning.detail = "photographs may be numbered with gaps";
  }
  ReportFrameGaps(folder, NumberedFiles(folder.path, folder.extension), meaning, card);
  ReportOrphanedSound(folder, entries, card);
}

void ProviderRED::DescribeCard(const std::string& path, const ContentMap&,
                               CardDescription& card) const {
  const auto listed = CardFolder::Of(path);
  for (const std::string& name : listed->Folders()) {
    const auto clip = CardFolder::Of(listed->PathOf(name));
    const auto segment = clip->FindVisibleFile(IsClipSegment);
    const bool isClipFolder = red::IsClipFolderName(name);
    // A listing has an entry for any folder with a segment, whatever its name.
    if (isClipFolder || segment) card.AddMediaFolder(clip->Path());
    if (!isClipFolder) continue;
    if (segment) {
      const std::vector<std::string> keys{clip->PathOf(*segment)};
      DescribeSegments(clip->Path(), red::kSegmentExtension, keys, card);
      DescribeCompanions(*clip, FileStem(name), keys, card);
    } else if (clip->IsReadable()) {
      card.Report(Finding::Kind::kMissing, card_role::kSegment, clip->Path(), {},
                  "a clip folder without segments");
    }
  }
}

}  // namespace Sorvik
