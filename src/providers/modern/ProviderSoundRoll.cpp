// SPDX-License-Identifier: MIT
#include "providers/modern/ProviderSoundRoll.h"

#include <algorithm>
#include <utility>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "formats/MediaNames.h"
#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/platform/FileSystem.h"
#include "providers/common/ClipReadAhead.h"
#include "providers/modern/CompanionFiles.h"
#include "providers/modern/SoundTakes.h"

namespace Sorvik {
namespace {

using formats::sound::RecorderFile;
using foundation::CardFolder;
using foundation::FileStem;
using foundation::HasExtension;
using soundroll::Take;
using soundroll::TakeFile;
using soundroll::TakePart;

constexpr std::string_view kSoundExtension = ".wav";
constexpr std::size_t kMaxRecognitionFiles = 2;
constexpr std::size_t kMinWavBytes = 44;  // the heads of RIFF, its format and its data

struct SoundList : MediaList {
  std::vector<Take> takes;  // in the order of the entries
};

// A list of the takes of a day.
bool IsReport(std::string_view name) {
  constexpr std::string_view kEnd = "_REPORT.CSV";
  return name.size() >= kEnd.size() &&
         foundation::EqualIgnoringCase(name.substr(name.size() - kEnd.size()), kEnd);
}

bool IsFrameOrClip(std::string_view name) {
  static constexpr std::string_view kExtensions[] = {".ari", ".dng", ".rmf", ".r3d"};
  return std::ranges::any_of(
      kExtensions, [name](std::string_view extension) { return HasExtension(name, extension); });
}

std::string NameOf(const Take& take) {
  const TakeFile& first = take.First();
  if (take.FileCount() == 1) return std::string(FileStem(first.name));
  if (first.facts && first.facts->ixml && !first.facts->ixml->familyName.empty()) {
    return first.facts->ixml->familyName;
  }
  bool isTrack = false;
  return std::string(soundroll::WithoutTrack(FileStem(first.name), isTrack));
}

MediaEntry MakeEntry(const CardFolder& folder, const Take& take) {
  MediaEntry entry{
      .key = take.First().name, .name = NameOf(take), .parts = {}, .partRole = card_role::kSound};
  for (const TakePart& part : take.parts) {
    entry.parts.push_back(folder.PathOf(part.files.front().name));
    for (std::size_t i = 1; i < part.files.size(); ++i) {
      entry.files.push_back({folder.PathOf(part.files[i].name), card_role::kSound});
    }
  }
  return entry;
}

// Whether one of the first files is of a recorder. Files that can't be opened, or that are too
// short to be WAV files, show nothing.
bool HasFileOfRecorder(const CardFolder& folder) {
  std::size_t examined = 0;
  for (const std::string& name : folder.VisibleFiles(kSoundExtension)) {
    const auto head = platform::ReadHead(folder.PathOf(name), RecorderFile::kHeadBytes);
    if (!head || head->size() < kMinWavBytes) continue;
    const auto file = RecorderFile::FromHead(*head);
    if (file && file->IsOfRecorder()) return true;
    if (++examined == kMaxRecognitionFiles) break;
  }
  return false;
}

SoundList BuildList(const std::string& root) {
  const auto folder = CardFolder::Of(root);
  std::vector<TakeFile> files;
  for (const std::string& name : folder->VisibleFiles(kSoundExtension)) {
    files.push_back({name, RecorderFile::Of(folder->PathOf(name))});
  }
  SoundList list;
  list.takes = soundroll::GroupTakes(std::move(files));
  CompanionFiles companions;
  for (const Take& take : list.takes) {
    for (const TakePart& part : take.parts) {
      for (const TakeFile& file : part.files) companions.AddEntry(file.name, list.entries.size());
    }
    list.entries.push_back(MakeEntry(*folder, take));
  }
  for (const std::string& name : folder->VisibleFiles()) {
    if (HasExtension(name, kSoundExtension)) continue;
    if (const auto entry = companions.Find(name); entry && !formats::HasMediaExtension(name)) {
      list.entries[*entry].files.push_back({folder->PathOf(name), card_role::kSidecar});
    } else if (IsReport(name)) {
      list.cardFiles.push_back(folder->PathOf(name));
    }
  }
  return list;
}

// "3 of 5 files of the take exist (A, B, D)".
std::string DescribeMissing(const Take& take) {
  std::string indexes;
  for (const TakePart& part : take.parts) {
    for (const TakeFile& file : part.files) {
      if (!file.facts || !file.facts->ixml || file.facts->ixml->fileSetIndex.empty()) continue;
      indexes += (indexes.empty() ? "" : ", ") + file.facts->ixml->fileSetIndex;
    }
  }
  std::string text = std::to_string(take.FileCount()) + " of " + std::to_string(take.totalFiles) +
                     " files of the take exist";
  if (!indexes.empty()) text += " (" + indexes + ")";
  return text;
}

}  // namespace

ProviderSoundRoll::ProviderSoundRoll()
    : ProviderMediaFilesBase(
          {.identification = "com.halvane.Merisk.ProviderSoundRoll",
           .uiString = "$$$/Ortlane/Libraries/Sorvik/SoundRollUIString=Sound Roll",
           .defaultFields = {kNameField, "scene", "takeNumber", "good", "CreateDate",
                             "startTimecode", "duration", "audioChannelType", "audioSampleRate",
                             "logComment"},
           .labelFields = {"Name", "Path", "CreateDate", "scene", "takeNumber", "good",
                           "logComment", "description", "startTimecode", "duration",
                           "audioChannelType", "audioSampleRate", "audioSampleType",
                           "audioCompressor", "shotLocation", "fileDataRate"},
           .layout = {.rootNames = {"*.wav"}}}) {}

void ProviderSoundRoll::ReadFiles(const std::string& root, ProviderRequest* request) const {
  const auto folder = CardFolder::Of(root);
  std::vector<std::string> files = folder->VisibleFiles(kSoundExtension);
  for (std::string& file : files) file = folder->PathOf(file);
  const std::size_t count = files.size();
  foundation::ReadAhead<std::shared_ptr<const RecorderFile>> ahead(
      count, [files = std::move(files)](std::size_t i) { return RecorderFile::Of(files[i]); },
      StopWith(request));
  for (std::size_t i = 0; i < count && !ProviderRequest::TestAborted(request); ++i) ahead.Take(i);
}

std::shared_ptr<const MediaList> ProviderSoundRoll::ListOf(const std::string& root) const {
  return foundation::CallScope::Remember<SoundList>(root, [&root] { return BuildList(root); });
}

Recognition ProviderSoundRoll::Recognize(const std::string& root) const {
  const auto folder = CardFolder::Of(root);
  if (!folder->FindVisibleFile([](const auto& name) { return HasExtension(name, ".wav"); })) {
    return Recognition::kNone;
  }
  if (folder->FindVisibleFile(IsFrameOrClip)) return Recognition::kNone;
  if (!HasFileOfRecorder(*folder)) return Recognition::kNone;
  return Recognized(!folder->FindVisibleFile([](const std::string& name) {
    return formats::HasMediaExtension(name) && !HasExtension(name, kSoundExtension);
  }));
}

std::vector<ListedPart> ProviderSoundRoll::PartsOf(const MediaList& list,
                                                   const MediaEntry& entry) const {
  const auto index = static_cast<std::size_t>(&entry - list.entries.data());
  const Take& take = static_cast<const SoundList&>(list).takes[index];
  const std::string folder(foundation::ParentFolder(entry.parts.front()));
  std::size_t tracks = 0;
  for (const TakePart& part : take.parts) tracks = std::max(tracks, part.files.size());
  std::vector<ListedPart> parts;
  for (std::size_t track = 0; track < tracks; ++track) {
    for (const TakePart& part : take.parts) {
      if (track >= part.files.size()) continue;
      parts.push_back({.path = foundation::JoinPath(folder, part.files[track].name),
                       .track = ShotTrack::kSound,
                       .channel = tracks == 1 ? 0 : static_cast<unsigned>(track + 1),
                       .isInferred = part.isInferred});
    }
  }
  return parts;
}

void ProviderSoundRoll::DescribeMore(const std::string& root, const MediaList& list,
                                     CardDescription& card) const {
  const auto& takes = static_cast<const SoundList&>(list).takes;
  for (std::size_t i = 0; i < takes.size(); ++i) {
    const std::string& key = list.entries[i].key;
    for (std::size_t part = 1; part < takes[i].parts.size(); ++part) {
      if (!takes[i].parts[part].isInferred) continue;
      card.Report({Finding::Kind::kUnlisted,
                   Finding::Severity::kNote,
                   card_role::kSpan,
                   list.entries[i].parts[part],
                   {key},
                   "inferred: starts at the sample after the part in front of it, with the same "
                   "tracks, scene and roll"});
    }
    if (takes[i].FileCount() < takes[i].totalFiles) {
      card.Report(Finding::Kind::kMissing, card_role::kSound, root, {key},
                  DescribeMissing(takes[i]));
    }
  }
}

}  // namespace Sorvik
