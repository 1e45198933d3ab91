// SPDX-License-Identifier: MIT
#include "formats/avchd/Playlist.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/ReadAhead.h"
#include "foundation/hestra/Directory.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/ReadReports.h"
#include "foundation/tarnwick/Text.h"

namespace Sorvik::formats::avchd {

namespace {

using foundation::ByteReader;
using foundation::CallScope;
using foundation::CardFolder;
using foundation::JoinPath;
using foundation::ParentFolder;

// Header: type 0, version 4, then the offsets of the blocks.
constexpr std::string_view kTypeAndVersion = "MPLS0100";
constexpr std::uint64_t kMinFileBytes = 21;
constexpr std::uint64_t kPlayListStartAt = 8;
constexpr std::uint64_t kMarkStartAt = 12;
constexpr std::uint64_t kExtensionStartAt = 16;

// Play-list block: length 0, reserved 4, number of items 6, number of sub-paths 8, items.
constexpr std::uint64_t kItemCountAt = 6;
constexpr std::uint64_t kFirstItemAt = 10;
// Play item after its head: IN time 14, OUT time 18.
constexpr std::uint64_t kInTimeAt = 14;
constexpr std::uint64_t kOutTimeAt = 18;

PlayItem MakeItem(ByteReader file, std::uint64_t at, std::uint64_t next) {
  PlayItem item;
  const ByteReader head = file.Clip(at, kPlayItemHead);
  std::copy(head.Bytes().begin(), head.Bytes().end(), item.head.begin());
  const ByteReader own = file.Clip(at, next - at);
  const auto in = own.U32BE(kInTimeAt);
  const auto out = own.U32BE(kOutTimeAt);
  if (in && out) {
    item.inTime = *in;
    item.outTime = *out;
  }
  return item;
}

std::vector<PlayItem> WalkItems(ByteReader file) {
  std::vector<PlayItem> items;
  const std::uint64_t bytes = file.Size();
  if (bytes < kMinFileBytes || !file.Matches(0, kTypeAndVersion)) return items;
  const std::uint64_t start = file.U32BE(kPlayListStartAt).value_or(0);
  if (bytes < start + kFirstItemAt) return items;
  const std::uint64_t blockLength = file.U32BE(start).value_or(0);
  const std::uint16_t count = file.U16BE(start + kItemCountAt).value_or(0);
  if (count == 0 || bytes < start + blockLength + 4) return items;
  std::uint64_t at = start + kFirstItemAt;
  for (std::uint16_t i = 0; i < count; ++i) {
    const auto length = file.U16BE(at);
    if (!length) break;
    const std::uint64_t next = at + 2 + *length;
    // At least two bytes must follow: the next item must begin before the file's last byte.
    if (next >= bytes - 1) break;
    items.push_back(MakeItem(file, at, next));
    at = next;
  }
  return items;
}

// The AVCHD block "PLEX" within the extension data: its length 0, start of the data 4, reserved 8,
// number of entries 11, entries of id1 2, id2 2, start 4, length 4. Offsets count from the first
// byte of the extension data.
ByteReader FindPlex(ByteReader file) {
  constexpr std::uint64_t kEntriesAt = 12;
  constexpr std::uint64_t kEntrySize = 12;
  constexpr std::uint32_t kAvchdIds = 0x10000100;
  const std::uint32_t start = file.U32BE(kExtensionStartAt).value_or(0);
  if (start == 0) return ByteReader();
  const ByteReader extension = file.Clip(start);
  const std::uint8_t count = extension.U8(11).value_or(0);
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::uint64_t entry = kEntriesAt + i * kEntrySize;
    if (extension.U32BE(entry) != kAvchdIds) continue;
    const ByteReader block = extension.Clip(extension.U32BE(entry + 4).value_or(0),
                                            extension.U32BE(entry + 8).value_or(0));
    if (block.Matches(0, "PLEX")) return block;
  }
  return ByteReader();
}

// Marks of the playlist (length 4, count 2, entries of 14 bytes) name the item of each shot; the
// entries of the same index in PLEX (length 4, count 2, entries of 66 bytes) describe it.
std::vector<ShotMark> ReadMarks(ByteReader file) {
  constexpr std::uint64_t kMarksAt = 6;
  constexpr std::uint64_t kMarkSize = 14;
  constexpr std::uint64_t kPlexMarkStartAt = 8;
  constexpr std::uint64_t kPlexMarkSize = 66;
  std::vector<ShotMark> marks;
  const ByteReader plex = FindPlex(file);
  const std::uint32_t markStart = file.U32BE(kMarkStartAt).value_or(0);
  const std::uint32_t plexStart = plex.U32BE(kPlexMarkStartAt).value_or(0);
  if (markStart == 0 || plexStart == 0) return marks;
  const ByteReader list = file.Clip(markStart);
  const ByteReader details = plex.Clip(plexStart);
  const std::uint64_t count = std::min(list.U16BE(4).value_or(0), details.U16BE(4).value_or(0));
  for (std::uint64_t i = 0; i < count; ++i) {
    const auto item = list.U16BE(kMarksAt + i * kMarkSize + 2);
    const auto detail = details.ViewAt<kPlexMarkSize>(kMarksAt + i * kPlexMarkSize);
    if (!item || !detail) break;
    ShotMark mark;
    mark.item = *item;
    mark.maker = ByteReader(*detail).U16BE(0).value_or(0);
    std::ranges::copy(detail->subspan<10, 8>(), mark.recorded.begin());
    std::ranges::copy(detail->subspan<60, 4>(), mark.startTimecode.begin());
    marks.push_back(mark);
  }
  return marks;
}

// The names of the playlists of a folder by number. Only names as cameras write them.
struct PlaylistNames {
  std::map<int, std::string> byNumber;
};

// The number of a name such as "00012.mpl" with its extension in any case; nullopt for other names.
std::optional<int> NumberOfName(std::string_view name) {
  if (!foundation::HasExtension(name, ".mpl") && !foundation::HasExtension(name, ".mpls")) {
    return std::nullopt;
  }
  const std::string_view title = foundation::FileStem(name);
  int number = 0;
  if (!tarnwick::utility::StringToNumber(Hestra::MakeString(title), number)) return std::nullopt;
  char canonical[16];
  std::snprintf(canonical, sizeof canonical, "%05d", number);
  return title == canonical ? std::optional<int>(number) : std::nullopt;
}

PlaylistNames ListPlaylists(const std::string& folder) {
  PlaylistNames list;
  const auto items = Hestra::Directory::GetItems(folder);
  if (!items) return list;
  const auto names = CardFolder::Of(folder);
  for (const auto& item : *items) {
    const auto number = NumberOfName(item.name);
    if (!number || list.byNumber.contains(*number)) continue;
    const std::string title(foundation::FileStem(item.name));
    for (const auto* extension : {".MPL", ".mpls"}) {
      if (!names->Contains(title + extension)) continue;
      list.byNumber.emplace(*number, title + extension);
      break;
    }
  }
  return list;
}

std::shared_ptr<const PlaylistNames> NamesIn(const std::string& folder) {
  return CallScope::Remember<PlaylistNames>(folder, [&folder] { return ListPlaylists(folder); });
}

// For each clip of a card the playlists that contain it, by ascending number, each with the first
// item of the clip.
struct ClipPlace {
  int number;
  std::size_t item;
  std::shared_ptr<const Playlist> playlist;
};
struct PlaylistIndex {
  std::unordered_map<std::string, std::vector<ClipPlace>> clips;
};

PlaylistIndex MakeIndex(const std::string& folder) {
  PlaylistIndex index;
  for (const auto& [number, name] : NamesIn(folder)->byNumber) {
    const auto playlist = LoadPlaylist(JoinPath(folder, name));
    for (std::size_t i = 0; i < playlist->items.size(); ++i) {
      auto& places = index.clips[std::string(playlist->items[i].ClipName())];
      if (places.empty() || places.back().number != number) places.push_back({number, i, playlist});
    }
  }
  return index;
}

ShotOfClip ShotAround(std::shared_ptr<const Playlist> playlist, std::size_t clip) {
  const auto& items = playlist->items;
  ShotOfClip shot{nullptr, clip, clip, clip + 1};
  while (shot.first > 0 && items[shot.first].ContinuesShot()) --shot.first;
  while (shot.end < items.size() && items[shot.end].ContinuesShot()) ++shot.end;
  shot.playlist = std::move(playlist);
  return shot;
}

// The shot in the playlist with the highest number from `lowest` to `highest` that contains the
// clip.
std::optional<ShotOfClip> FindInIndex(const PlaylistIndex& index, const std::string& clip,
                                      int lowest, int highest) {
  const auto found = index.clips.find(clip);
  if (found == index.clips.end()) return std::nullopt;
  const auto& places = found->second;
  auto at = std::ranges::upper_bound(places, highest, {}, &ClipPlace::number);
  if (at == places.begin() || (--at)->number < lowest) return std::nullopt;
  return ShotAround(at->playlist, at->item);
}

// Limits the items of all playlists of a card that a call keeps: a file of a few kilobytes can
// declare more items than a large card has. Calls may share it (frame/SharedReads.h).
struct ItemAllowance {
  mutable std::mutex mutex;
  mutable std::size_t left = kMaxItemsPerCall;

  bool IsUsedUp() const {
    const std::lock_guard lock(mutex);
    return left == 0;
  }
  bool Take(std::size_t count) const {
    const std::lock_guard lock(mutex);
    const bool granted = count <= left;
    left = granted ? left - count : 0;
    return granted;
  }
};

// What is wrong with a playlist of which `items` were read; empty if nothing is.
std::string_view FaultOf(ByteReader file, const std::vector<PlayItem>& items) {
  if (!file.Matches(0, kTypeAndVersion)) return "not a playlist";
  const std::uint64_t start = file.U32BE(kPlayListStartAt).value_or(0);
  const auto count = file.U16BE(start + kItemCountAt);
  return !count || items.size() < *count ? "truncated playlist" : std::string_view();
}

}  // namespace

Playlist ParsePlaylist(ByteReader file) {
  Playlist playlist;
  playlist.items = WalkItems(file);
  if (!playlist.items.empty()) playlist.marks = ReadMarks(file);
  return playlist;
}

namespace {

using Bytes = std::vector<std::byte>;

// Keeps a file that was not read out of the call scope, which may outlive the stopped call.
struct Stopped {};

// Returns nullopt if the file can't be opened or is too large.
std::optional<Bytes> ReadPlaylistFile(const std::string& path) {
  const auto file = foundation::OpenOnCard(path);
  if (!file || file->Size() > kMaxPlaylistBytes) return std::nullopt;
  return file->ReadHead(kMaxPlaylistBytes);
}

// Keeps the playlist in the call scope. Calls `read` for the file unless that isn't needed.
template <class Read>
std::shared_ptr<const Playlist> LoadPlaylist(const std::string& path, Read read) {
  return CallScope::Remember<Playlist>(path, [&path, &read] {
    const auto allowance = CallScope::Share<ItemAllowance>(
        std::string(ParentFolder(path)), [] { return std::make_shared<const ItemAllowance>(); });
    if (allowance->IsUsedUp()) return Playlist();
    const std::optional<Bytes> bytes = read(path);
    if (!bytes) return Playlist();
    Playlist playlist = ParsePlaylist(ByteReader(*bytes));
    if (const auto fault = FaultOf(ByteReader(*bytes), playlist.items); !fault.empty()) {
      platform::ReportReadFailure(path, fault);
    }
    return allowance->Take(playlist.items.size() + playlist.marks.size()) ? std::move(playlist)
                                                                          : Playlist();
  });
}

}  // namespace

std::shared_ptr<const Playlist> LoadPlaylist(const std::string& path) {
  return LoadPlaylist(path, ReadPlaylistFile);
}

void LoadPlaylists(const std::vector<std::string>& paths, const std::function<bool()>& stop) {
  const auto shared = std::make_shared<const std::vector<std::string>>(paths);
  // Only the bytes are read ahead: which playlists exceed the limit of a call depends on the order.
  foundation::ReadAhead<std::optional<Bytes>> files(
      shared->size(), [shared](std::size_t i) { return ReadPlaylistFile((*shared)[i]); }, stop);
  for (std::size_t i = 0; i < paths.size() && !(stop && stop()); ++i) {
    try {
      LoadPlaylist(paths[i], [&files, &stop, i](const std::string&) {
        std::optional<Bytes> bytes = files.Take(i);
        if (!bytes && stop && stop()) throw Stopped();
        return bytes;
      });
    } catch (const Stopped&) {
      return;
    }
  }
}

std::optional<ShotOfClip> FindShot(std::shared_ptr<const Playlist> playlist,
                                   std::string_view clip) {
  const auto& items = playlist->items;
  const auto found =
      std::ranges::find_if(items, [clip](const PlayItem& item) { return item.ClipName() == clip; });
  if (found == items.end()) return std::nullopt;
  const auto clipAt = static_cast<std::size_t>(found - items.begin());
  return ShotAround(std::move(playlist), clipAt);
}

std::optional<ShotOfClip> FindShotOfStream(const std::string& streamFile) {
  const std::string folder = JoinPath(ParentFolder(ParentFolder(streamFile)), "PLAYLIST");
  const std::string title(foundation::FileStem(streamFile));
  // Without a number only the playlist -1 is tried, whose name cameras don't write.
  int number = -1;
  tarnwick::utility::StringToNumber(Hestra::MakeString(title), number);
  const int lowest = std::min(number, 0);
  if (const auto index = CallScope::Kept<PlaylistIndex>(folder)) {
    return FindInIndex(*index, title, lowest, number);
  }
  const auto names = NamesIn(folder);
  const auto& byNumber = names->byNumber;
  for (auto at = byNumber.upper_bound(number); at != byNumber.begin();) {
    --at;
    if (at->first < lowest) break;
    if (auto shot = FindShot(LoadPlaylist(JoinPath(folder, at->second)), title)) return shot;
  }
  return std::nullopt;
}

void IndexPlaylists(const std::string& folder) {
  CallScope::Remember<PlaylistIndex>(folder, [&folder] { return MakeIndex(folder); });
}

const ShotMark* MarkOfShot(const Playlist& playlist, std::size_t first) {
  const auto found = std::ranges::find_if(
      playlist.marks, [first](const ShotMark& mark) { return mark.item == first; });
  return found == playlist.marks.end() ? nullptr : &*found;
}

}  // namespace Sorvik::formats::avchd
