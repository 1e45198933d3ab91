// SPDX-License-Identifier: MIT
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "formats/avchd/ClipInformation.h"
#include "formats/avchd/Playlist.h"
#include "formats/avchd/StreamTimes.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "providers/common/CardParts.h"
#include "providers/structures/AVCHDNames.h"
#include "providers/structures/AVCHDUtils.h"
#include "providers/structures/ProviderAVCHD.h"

namespace Sorvik {
namespace {

using namespace avchd;  // NOLINT(google-build-using-namespace): this file is about these names
using foundation::CardFolder;
using foundation::JoinPath;

constexpr std::string_view kIndexExtensions[] = {".bdmv", ".BDMV", ".bdm", ".BDM"};

// The names that this card uses, with those of cameras for what it has no file of.
struct Naming {
  std::string_view stream = ".MTS";
  std::string_view clipInfo = ".CPI";
};

struct Card {
  std::string bdmv;
  EntryOfPath owners;
  CardDescription& description;
  Naming naming;
  std::set<std::string> checkedClips;
};

std::string_view FirstExtension(const std::string& folder, Extensions extensions) {
  for (const std::string& name : CardFolder::Of(folder)->VisibleFiles()) {
    for (const std::string_view extension : extensions) {
      if (foundation::FileExtension(name) == extension) return extension;
    }
  }
  return {};
}

Naming NamingOf(const std::string& bdmv) {
  const std::string_view stream = FirstExtension(JoinPath(bdmv, kStream), kStreamExtensions);
  const std::string_view clipInfo = FirstExtension(JoinPath(bdmv, kClipInfo), kClipInfoExtensions);
  Naming naming;
  if (!stream.empty()) naming.stream = stream;
  if (!clipInfo.empty()) naming.clipInfo = clipInfo;
  if (stream.empty() && clipInfo == ".clpi") naming.stream = ".m2ts";
  if (clipInfo.empty() && stream == ".m2ts") naming.clipInfo = ".clpi";
  return naming;
}

std::string PathOf(const Card& card, std::string_view subfolder, const std::string& clip,
                   Extensions extensions, std::string_view usual) {
  return FindPartFile(card.bdmv, subfolder, clip, extensions)
      .value_or(JoinPath(JoinPath(card.bdmv, subfolder), clip + std::string(usual)));
}

// Without clip information, the times of the playlist show whether a stream is complete.
void CheckTimes(const formats::avchd::PlayItem& item, const std::string& stream,
                const std::string& key, CardDescription& card) {
  const unsigned missing = formats::avchd::MissingSeconds(stream, item);
  if (missing == 0) return;
  card.Report(Finding::Kind::kTruncated, card_role::kEssence, stream, KeyList(key),
              "ends " + std::to_string(missing) + " s before the time in the playlist");
}

// The stream and clip information of a play item. A stream that no entry contains is left to the
// search for orphaned media: a clip's shot is searched in the playlists up to its number only.
void ExpectClip(const formats::avchd::PlayItem& item, const std::string& shotKey, Card& card) {
  const std::string clip(item.ClipName());
  if (!card.checkedClips.insert(clip).second) return;
  const std::string info = PathOf(card, kClipInfo, clip, kClipInfoExtensions, card.naming.clipInfo);
  const std::string stream = PathOf(card, kStream, clip, kStreamExtensions, card.naming.stream);
  std::string key = card.owners.KeyOf(stream);
  const bool orphaned =
      key.empty() && foundation::ExistsOnCard(stream, foundation::Lookup::kListing);
  if (key.empty()) key = shotKey;
  card.description.Expect({.path = info,
                           .role = card_role::kClipRecord,
                           .entryKeys = KeyList(key),
                           .content = CardPart::Content::kIndex});
  if (orphaned) return;
  const std::uint64_t minBytes = formats::avchd::StreamBytesOf(info);
  if (minBytes == 0 && card.description.Depth() != CheckDepth::kNames) {
    CheckTimes(item, stream, key, card.description);
  }
  card.description.Expect({.path = stream,
                           .role = card_role::kEssence,
                           .entryKeys = KeyList(key),
                           .content = CardPart::Content::kMedia,
                           .minBytes = minBytes,
                           .minBytesSource = std::string(foundation::FileName(info))});
}

void AddPlaylist(const std::string& path, Card& card) {
  card.description.Expect(
      {.path = path, .role = card_role::kPlaylist, .content = CardPart::Content::kIndex});
  std::string shotKey;
  for (const auto& item : formats::avchd::LoadPlaylist(path)->items) {
    const std::string clip(item.ClipName());
    if (clip.find_first_not_of("0123456789") != clip.npos) continue;
    if (!item.ContinuesShot()) {
      shotKey =
          card.owners.KeyOf(PathOf(card, kStream, clip, kStreamExtensions, card.naming.stream));
    }
    ExpectClip(item, shotKey, card);
  }
}

void AddFilesOf(const std::string& folder, Extensions extensions, Card& card) {
  const auto listed = CardFolder::Of(folder);
  for (const std::string_view extension : extensions) {
    for (const std::string& name : listed->Files(extension)) {
      card.description.AddStructureFile(listed->PathOf(name));
    }
  }
}

// The index files and the camera's copies of them. Most are extra paths of the clips, too.
void AddIndexes(Card& card) {
  const auto bdmv = CardFolder::Of(card.bdmv);
  for (const std::string_view extension : kIndexExtensions) {
    for (const std::string& name : bdmv->VisibleFiles()) {
      if (foundation::FileExtension(name) != extension) continue;
      card.description.Expect({.path = bdmv->PathOf(name),
                               .role = card_role::kIndex,
                               .content = CardPart::Content::kIndex});
    }
  }
  AddFilesOf(card.bdmv, kIndexExtensions, card);
  AddFilesOf(JoinPath(card.bdmv, kPlaylist), kPlaylistExtensions, card);
  AddFilesOf(JoinPath(card.bdmv, kClipInfo), kClipInfoExtensions, card);
  for (std::string& file : foundation::ListFilesBelow(JoinPath(card.bdmv, kBackup))) {
    if (foundation::IsHidden(file)) continue;
    card.description.AddStructureFile(file);
    card.description.Expect({.path = std::move(file), .role = card_role::kJournal});
  }
}

}  // namespace

void ProviderAVCHD::DescribeCard(const std::string& path, const ContentMap& entries,
                                 CardDescription& description) const {
  const std::string bdmv = FindBDMVFolder(path);
  Card card{bdmv, EntryOfPath(entries, {".MTS", ".m2ts"}), description, NamingOf(bdmv), {}};
  for (const std::string& playlist : AVCHDUtils::ListPlaylists(bdmv)) AddPlaylist(playlist, card);
  description.AddMediaFolder(JoinPath(bdmv, kStream));
  AddIndexes(card);
  for (const std::string_view folder : {kStream, kClipInfo, kPlaylist, kBackup}) {
    description.AddFolder(JoinPath(bdmv, folder));
  }
}

}  // namespace Sorvik
