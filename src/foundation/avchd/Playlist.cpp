// SPDX-License-Identifier: MIT
#include "foundation/avchd/Playlist.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "foundation/CallScope.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/tarnwick/Text.h"

namespace Sorvik::foundation::avchd {

namespace {

// Header: type 0, version 4, then the offsets of the blocks.
constexpr std::string_view kTypeAndVersion = "MPLS0100";
constexpr std::uint64_t kSmallestFile = 21;
constexpr std::uint64_t kPlayListStartAt = 8;
constexpr std::uint64_t kMarkStartAt = 12;
constexpr std::uint64_t kExtensionStartAt = 16;

// Play-list block: length 0, reserved 4, number of items 6, number of sub-paths 8, items.
constexpr std::uint64_t kFirstItemAt = 10;
// Play item beyond its head: IN time 14, OUT time 18.
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
  if (bytes < kSmallestFile || !file.Matches(0, kTypeAndVersion)) return items;
  const std::uint64_t start = file.U32BE(kPlayListStartAt).value_or(0);
  if (bytes < start + kFirstItemAt) return items;
  const std::uint64_t blockLength = file.U32BE(start).value_or(0);
  const std::uint16_t count = file.U16BE(start + 6).value_or(0);
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
// entries of the same index in PLEX (length 4, count 2, entries of 66 bytes) tell about it.
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

// The playlists of a folder by number; a name that isn't spelled as cameras do it isn't there.
struct PlaylistNames {
  std::map<int, std::string> byNumber;
};

void AddName(const std::string& name, std::map<int, std::string>& byNumber) {
  const bool camera = name.ends_with(".MPL");
  if (!camera && !name.ends_with(".mpls")) return;
  const std::string title = name.substr(0, name.rfind('.'));
  int number = 0;
  if (!tarnwick::utility::StringToNumber(Hestra::MakeString(title), number)) return;
  char spelled[16];
  std::snprintf(spelled, sizeof spelled, "%05d", number);
  if (title != spelled) return;
  if (camera) {
    byNumber[number] = name;
  } else {
    byNumber.try_emplace(number, name);
  }
}

PlaylistNames ListPlaylists(const std::string& folder) {
  PlaylistNames names;
  const auto items = Hestra::Directory::GetItems(folder);
  if (!items) return names;
  for (const auto& item : *items) {
    if (item.kind != platform::FileKind::kDangling) AddName(item.name, names.byNumber);
  }
  return names;
}

std::string ParentOf(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

}  // namespace

Playlist ParsePlaylist(ByteReader file) {
  Playlist playlist;
  playlist.items = WalkItems(file);
  if (!playlist.items.empty()) playlist.marks = ReadMarks(file);
  return playlist;
}

std::shared_ptr<const Playlist> LoadPlaylist(const std::string& path) {
  return CallScope::Remember<Playlist>(path, [&path] {
    const auto file = platform::RegularFile::Open(path);
    if (!file || file->Size() > kLargestPlaylist) return Playlist();
    std::vector<std::byte> bytes(static_cast<std::size_t>(file->Size()));
    bytes.resize(file->ReadAt(0, bytes));
    return ParsePlaylist(ByteReader(bytes));
  });
}

std::optional<ShotOfClip> FindShot(std::shared_ptr<const Playlist> playlist,
                                   std::string_view clip) {
  const auto& items = playlist->items;
  const auto found =
      std::ranges::find_if(items, [clip](const PlayItem& item) { return item.ClipName() == clip; });
  if (found == items.end()) return std::nullopt;
  ShotOfClip shot;
  shot.clip = static_cast<std::size_t>(found - items.begin());
  shot.first = shot.clip;
  while (shot.first > 0 && items[shot.first].ContinuesShot()) --shot.first;
  shot.end = shot.clip + 1;
  while (shot.end < items.size() && items[shot.end].ContinuesShot()) ++shot.end;
  shot.playlist = std::move(playlist);
  return shot;
}

std::optional<ShotOfClip> FindShotOfStream(const std::string& streamFile) {
  const std::string folder = ParentOf(ParentOf(streamFile)) + "/PLAYLIST";
  const auto names =
      CallScope::Remember<PlaylistNames>(folder, [&folder] { return ListPlaylists(folder); });
  const auto wideTitle = Hestra::PathUtils::GetFilePart(Hestra::MakeString(streamFile));
  const std::string title = Hestra::MakeStdString(wideTitle);
  // A title that is no number gets one look, for a name that cameras don't write.
  int number = -1;
  tarnwick::utility::StringToNumber(wideTitle, number);
  const auto& byNumber = names->byNumber;
  const int lowest = std::min(number, 0);
  for (auto at = byNumber.upper_bound(number); at != byNumber.begin();) {
    --at;
    if (at->first < lowest) break;
    if (auto shot = FindShot(LoadPlaylist(folder + "/" + at->second), title)) return shot;
  }
  return std::nullopt;
}

const ShotMark* MarkOfShot(const Playlist& playlist, std::size_t first) {
  const auto found = std::ranges::find_if(
      playlist.marks, [first](const ShotMark& mark) { return mark.item == first; });
  return found == playlist.marks.end() ? nullptr : &*found;
}

}  // namespace Sorvik::foundation::avchd
