// SPDX-License-Identifier: MIT
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/metadata/XMPSupport.h"
#include "formats/MediaNames.h"
#include "foundation/DateTime.h"
#include "foundation/Paths.h"
#include "foundation/platform/FileStatus.h"
#include "frame/CardChecker.h"
#include "frame/FieldValues.h"
#include "providers/common/CardParts.h"
#include "providers/modern/DCIMCard.h"
#include "providers/modern/PartDurations.h"
#include "providers/modern/ProviderDCIM.h"

namespace Sorvik {
namespace {

using dcim::Card;
using dcim::Numbering;
using dcim::Object;
using dcim::ObjectFolder;
using dcim::Part;
using dcim::Role;
using foundation::FileName;
using foundation::FileStem;
using foundation::JoinPath;

// Folders of the medium that cameras write next to DCIM, below its root.
constexpr std::string_view kStructureFolders[] = {
    "MISC", "NIKON", "CANONMSC", "AVF_INFO", "PRIVATE/DATABASE", "PRIVATE/SONY"};

void Expect(const std::string& path, std::string_view role, const Object& object,
            CardDescription& card) {
  const bool isMedia = role != card_role::kSidecar;
  card.Expect({.path = path,
               .role = std::string(role),
               .entryKeys = {object.key},
               .content = isMedia ? CardPart::Content::kMedia : CardPart::Content::kOpaque});
}

const char* RoleOf(const std::string& path) {
  switch (dcim::Identify(nullptr, FileName(path)).role) {
    case Role::kOriginal:
      return card_role::kEssence;
    case Role::kSound:
      return card_role::kSound;
    default:
      return card_role::kSidecar;
  }
}

void ReportMissingChapters(const Object& object, CardDescription& card) {
  std::string after;  // the chapter that implies those before it
  const std::vector<dcim::Chapter> chapters = dcim::ChaptersOf(object);
  for (auto chapter = chapters.rbegin(); chapter != chapters.rend(); ++chapter) {
    if (chapter->exists) {
      after = FileName(chapter->path);
    } else {
      card.Report(Finding::Kind::kMissing, card_role::kSegment, chapter->path, {object.key},
                  "chapter " + after + " exists");
    }
  }
}

// Photographs of a series that were deleted leave gaps, too.
void ReportMissingFrames(const Object& object, CardDescription& card) {
  for (std::size_t i = 1; i < object.parts.size(); ++i) {
    const Part& before = object.parts[i - 1];
    const Part& part = object.parts[i];
    if (part.number - before.number <= 1) continue;
    const std::string name = dcim::StemOfChapter(*object.maker, *object.pattern,
                                                 FileStem(part.path), before.number + 1) +
                             std::string(foundation::FileExtension(part.path));
    card.Report({Finding::Kind::kMissing,
                 Finding::Severity::kWarning,
                 card_role::kFrame,
                 JoinPath(foundation::ParentFolder(part.path), name),
                 {object.key},
                 std::to_string(part.number - before.number - 1) + " between " +
                     std::string(FileName(before.path)) + " and " +
                     std::string(FileName(part.path))});
  }
}

void ReportMissingOriginal(const Object& object, const std::string& folder, CardDescription& card) {
  const std::string& other =
      object.proxies.empty() ? object.thumbnails.front() : object.proxies.front();
  card.Report(Finding::Kind::kMissing, card_role::kEssence, JoinPath(folder, FileName(object.key)),
              {object.key},
              std::string(object.proxies.empty() ? "its thumbnail " : "its proxy ") +
                  std::string(FileName(other)) + " exists");
}

void DescribeObject(const Object& object, const std::string& folder, CardDescription& card) {
  const Numbering numbering = object.PartNumbering();
  for (const Part& part : object.parts) {
    Expect(part.path, numbering == Numbering::kFrames ? card_role::kFrame : card_role::kEssence,
           object, card);
  }
  for (const std::string& path : object.proxies) Expect(path, card_role::kProxy, object, card);
  for (const std::string& path : object.thumbnails) {
    Expect(path, card_role::kThumbnail, object, card);
  }
  for (const std::string& path : object.files) Expect(path, RoleOf(path), object, card);
  if (object.parts.empty()) {
    ReportMissingOriginal(object, folder, card);
  } else if (numbering == Numbering::kChapters) {
    ReportMissingChapters(object, card);
  } else if (numbering == Numbering::kFrames) {
    ReportMissingFrames(object, card);
  }
}

std::optional<unsigned> ParseNumber(std::string_view text) {
  unsigned number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// The time of one clip, from its metadata.
struct ClipTimes {
  std::int64_t begin = 0;  // seconds
  double seconds = 0;
  std::string format;  // frame size, frame rate and codec
};

std::optional<ClipTimes> TimesOf(const std::string& path) {
  const FieldValueMap fields = XMPSupport::MakeValue(
      path, XMPSupport::ParseFields({"CreateDate", kFrameCountField, "videoFrameSize",
                                     "videoFrameRate", "videoCompressor"}));
  const auto begin = foundation::SecondsSince1970(TextOf(fields, "CreateDate"));
  std::int64_t frames = 0;
  std::string frameDuration;
  if (!begin ||
      !XMPSupport::ParseFrameCount(TextOf(fields, kFrameCountField), frames, frameDuration)) {
    return std::nullopt;
  }
  const std::size_t slash = frameDuration.find('/');
  if (slash == frameDuration.npos) return std::nullopt;
  const unsigned units = ParseNumber(frameDuration.substr(0, slash)).value_or(0);
  const unsigned perSecond = ParseNumber(frameDuration.substr(slash + 1)).value_or(0);
  if (perSecond == 0) return std::nullopt;
  return ClipTimes{*begin, static_cast<double>(frames) * units / perSecond,
                   TextOf(fields, "videoFrameSize") + TextOf(fields, "videoFrameRate") +
                       TextOf(fields, "videoCompressor")};
}

// The number that the camera counts on from clip to clip: the last four digits of the stem.
std::optional<unsigned> ClipNumber(const Object& object) {
  constexpr std::size_t kDigits = 4;
  const std::string_view stem = FileStem(object.parts.front().path);
  const std::size_t end = stem.find_last_of("0123456789");
  if (end == stem.npos || end + 1 < kDigits) return std::nullopt;
  return ParseNumber(stem.substr(end + 1 - kDigits, kDigits));
}

// True if the size of the file is within 10 % of a size at which the camera starts a new file.
bool HasReachedLimit(const Object& object) {
  const auto status = platform::StatusOf(object.parts.front().path);
  return status && std::ranges::any_of(object.maker->fileLimits, [&](std::uint64_t limit) {
           const std::uint64_t tolerance = limit / 10;
           return status->bytes > limit - tolerance && status->bytes < limit + tolerance;
         });
}

bool Continues(const ClipTimes& first, const ClipTimes& next) {
  // Times of creation are integer seconds, and opening a file takes up to a second.
  constexpr double kMinGap = -1;
  constexpr double kMaxGap = 2;
  const double gap = static_cast<double>(next.begin - first.begin) - first.seconds;
  return first.format == next.format && gap > kMinGap && gap < kMaxGap;
}

// Notes takes that the camera has probably cut. They stay separate entries, because their
// names don't show that they belong together.
void ReportProbableJoins(const ObjectFolder& folder, CardDescription& card) {
  std::map<unsigned, const Object*> byNumber;
  for (const Object& object : folder.Objects()) {
    if (object.maker->fileLimits.empty() || object.parts.size() != 1) continue;
    if (!formats::HasMediaExtension(object.parts.front().path)) continue;
    if (const auto number = ClipNumber(object)) byNumber.emplace(*number, &object);
  }
  for (auto first = byNumber.begin(); first != byNumber.end(); ++first) {
    const auto next = std::next(first);
    if (next == byNumber.end() || next->first != first->first + 1) continue;
    if (!HasReachedLimit(*first->second)) continue;
    const std::string& path = next->second->parts.front().path;
    const auto times = TimesOf(first->second->parts.front().path);
    const auto nextTimes = TimesOf(path);
    if (!times || !nextTimes || !Continues(*times, *nextTimes)) continue;
    card.Report({Finding::Kind::kUnlisted,
                 Finding::Severity::kNote,
                 card_role::kSpan,
                 path,
                 {next->second->key},
                 "inferred: probably continues " +
                     std::string(FileName(first->second->parts.front().path)) +
                     ", by number, time, format and size"});
  }
}

void AddFilesOfMedium(const std::string& root, CardDescription& card) {
  AddStructureFiles(root, {"NIKON001.DSC"}, card);
  for (const std::string_view relative : kStructureFolders) {
    std::string folder = root;
    for (std::string_view rest = relative; !rest.empty();) {
      const std::string_view name = rest.substr(0, rest.find('/'));
      rest.remove_prefix(std::min(name.size() + 1, rest.size()));
      folder = FindFolder(folder, name);
    }
    if (!folder.empty()) AddStructureFilesBelow(folder, card);
  }
}

}  // namespace

void ProviderDCIM::DescribeCard(const std::string& path, const ContentMap&,
                                CardDescription& description) const {
  const std::string root(foundation::WithoutTrailingSlash(path));
  const auto card = Card::Of(root);
  for (const auto& folder : card->Folders()) {
    for (const Object& object : folder->Objects()) {
      DescribeObject(object, folder->Path(), description);
    }
    if (description.Depth() != CheckDepth::kNames) ReportProbableJoins(*folder, description);
    for (const std::string& file : folder->FolderFiles()) description.AddStructureFile(file);
  }
  AddFilesOfMedium(root, description);
  description.AddMediaFolder(Card::FolderOf(root));
}

}  // namespace Sorvik
