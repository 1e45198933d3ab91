// SPDX-License-Identifier: MIT
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "providers/common/CardParts.h"
#include "providers/structures/CanonXFNames.h"
#include "providers/structures/ProviderCanonXF.h"
#include "providers/structures/ProviderSonyHDV.h"
#include "providers/structures/SonyHDVNames.h"

namespace Sorvik {
namespace {

using foundation::CardFolder;
using foundation::FileStem;
using foundation::JoinPath;

using canonxf::kSpanInfoExtension;
using canonxf::NumberedFiles;
using canonxf::SpanName;

// A file that exists under its number, or the path where it should be.
std::string PathOfSpan(const CardFolder& clip, std::string_view id,
                       const std::map<int, std::string>& files, int number,
                       std::string_view extension) {
  const auto found = files.find(number);
  return clip.PathOf(found == files.end() ? SpanName(id, number, extension) : found->second);
}

void ExpectSpans(const CardFolder& clip, std::string_view id, const std::vector<std::string>& keys,
                 CardDescription& card) {
  const auto spans = NumberedFiles(clip, canonxf::kSpanExtension);
  const auto infos = NumberedFiles(clip, kSpanInfoExtension);
  int last = spans.empty() ? 1 : spans.rbegin()->first;
  if (!infos.empty()) last = std::max(last, infos.rbegin()->first);
  for (int number = 1; number <= last; ++number) {
    card.Expect({.path = PathOfSpan(clip, id, spans, number, canonxf::kSpanExtension),
                 .role = card_role::kSpan,
                 .entryKeys = keys,
                 .content = CardPart::Content::kMedia});
    // Some cameras write no span information at all.
    if (infos.empty()) continue;
    card.Expect({.path = PathOfSpan(clip, id, infos, number, kSpanInfoExtension),
                 .role = card_role::kSidecar,
                 .entryKeys = keys});
  }
}

void DescribeClip(const CardFolder& clip, std::string_view id, const EntryOfPath& owners,
                  CardDescription& card) {
  std::string key;
  for (const std::string& name : clip.VisibleFiles(canonxf::kSpanExtension)) {
    key = owners.KeyOf(clip.PathOf(name));
    if (!key.empty()) break;
  }
  const std::vector<std::string> keys = KeyList(key);
  ExpectSpans(clip, id, keys, card);
  const auto sidecar = [&](std::string_view extension) {
    const std::string path = clip.PathOf(std::string(id).append(extension));
    return foundation::FindOnCard(path).value_or(path);
  };
  card.Expect({.path = sidecar(canonxf::kClipInfoExtension),
               .role = card_role::kClipRecord,
               .entryKeys = keys});
  card.Expect({.path = sidecar(".XML"),
               .role = card_role::kSidecar,
               .entryKeys = keys,
               .content = CardPart::Content::kXml,
               .required = false});
}

// The media and index files of one recording, which have the same number. `first` is the earliest
// media file.
struct Recording {
  std::string first;
  std::set<std::string> titles;
  std::vector<std::string> indexes;
};

std::map<std::string, Recording> RecordingsOf(const CardFolder& folder, const ContentMap& entries) {
  std::map<std::string, Recording> recordings;
  for (const auto& [key, fields] : entries) {
    Recording& recording = recordings[sonyhdv::ClipNumberOf(key)];
    if (recording.first.empty()) recording.first = key;
    recording.titles.insert(foundation::FoldCase(FileStem(key)));
  }
  for (const std::string& name : folder.VisibleFiles(sonyhdv::kIndexExtension)) {
    recordings[sonyhdv::ClipNumberOf(name)].indexes.push_back(name);
  }
  return recordings;
}

// Reports the media of an index file that has none. The index belongs to the first file of a
// recording.
void DescribeRecording(const CardFolder& folder, const Recording& recording,
                       CardDescription& card) {
  const std::vector<std::string> keys = KeyList(recording.first);
  std::string_view extension = foundation::FileExtension(recording.first);
  if (extension.empty()) extension = ".M2T";
  for (const std::string& index : recording.indexes) {
    card.Expect({.path = folder.PathOf(index), .role = card_role::kIndex, .entryKeys = keys});
    if (recording.titles.contains(foundation::FoldCase(FileStem(index)))) continue;
    card.Report(Finding::Kind::kMissing, card_role::kEssence,
                folder.PathOf(std::string(FileStem(index)).append(extension)), keys,
                "the first file of its recording; " + index + " exists");
  }
  if (!recording.indexes.empty()) return;
  std::string index(FileStem(recording.first));
  card.Expect({.path = folder.PathOf(index.append(sonyhdv::kIndexExtension)),
               .role = card_role::kIndex,
               .entryKeys = keys});
}

}  // namespace

void ProviderCanonXF::DescribeCard(const std::string& path, const ContentMap& entries,
                                   CardDescription& card) const {
  const auto clipRoot = CardFolder::Of(canonxf::ClipRootOf(path));
  const EntryOfPath owners(entries, {canonxf::kSpanExtension});
  for (const std::string& name : clipRoot->Folders()) {
    if (!canonxf::IsClipFolderName(name)) continue;
    DescribeClip(*CardFolder::Of(clipRoot->PathOf(name)), name, owners, card);
  }
  AddIndexFiles(clipRoot->Path(), {canonxf::kIndexFile}, card);
  AddStructureFilesBelow(clipRoot->PathOf(canonxf::kJournal), card);
  card.AddMediaFolder(clipRoot->Path());
  card.AddFolder(clipRoot->PathOf(canonxf::kJournal));
}

void ProviderSonyHDV::DescribeCard(const std::string& path, const ContentMap& entries,
                                   CardDescription& card) const {
  const auto folder = CardFolder::Of(sonyhdv::ClipFolderOf(path));
  for (const auto& [key, fields] : entries) {
    card.Expect({.path = folder->PathOf(key),
                 .role = card_role::kEssence,
                 .entryKeys = {key},
                 .content = CardPart::Content::kMedia});
  }
  for (const auto& [number, recording] : RecordingsOf(*folder, entries)) {
    DescribeRecording(*folder, recording, card);
  }
  // An extra path of all clips, but not required.
  card.AddStructureFile(folder->PathOf(sonyhdv::kTracksFile));
  AddIndexFiles(folder->Path(), {sonyhdv::kTracksFile}, card);
  card.AddMediaFolder(folder->Path());
}

}  // namespace Sorvik
