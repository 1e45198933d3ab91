// SPDX-License-Identifier: MIT
// The playlist of an AVCHD card (.MPL, .mpls): its play items, and what cameras write about each
// shot in the "PLEX" extension block. Both the structure and the metadata of a card come from here.
//
// How bounds work. All of the file up to kMaxPlaylistBytes bytes is parsed as one view, every
// number of it checked against the bytes that are there, in 64 bits. The walk over the items goes
// as far as these rules allow, and keeps what it has when one of them fails:
//  - the file holds 21 bytes or more and begins with "MPLS0100";
//  - the first 10 bytes of the play-list block and its declared length lie within the file;
//  - the next item begins at item + 2 + the item's declared length; the item counts only if at
//    least two bytes of the file follow it. A file cut right behind its last item loses that item.
// An item may declare less than the fields read from it. It counts all the same; its fields then
// reach into what follows, and past the end of the file they read as zero. No read leaves the view.
//
// All numbers in the file are big-endian. Facts: layout as public readers of this format agree on
// it, checked on camera files. Any thread; nothing here raises for bad data.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/ByteReader.h"

namespace Sorvik::formats::avchd {

// A playlist of 2,000 items with a mark each is under 400 kB; anything above this is no playlist
// and counts as unreadable, so that a sparse file of any size costs nothing.
inline constexpr std::size_t kMaxPlaylistBytes = 4 * 1024 * 1024;

// Items and marks: 1,000 playlists of 1,000 each are more than any card holds. The playlist that
// takes a call beyond this and all read after it count as unreadable.
inline constexpr std::size_t kMaxItemsPerCall = 2'000'000;

// The first bytes of a play item: length (2), clip name (5), codec (4), flags (2).
inline constexpr std::size_t kPlayItemHead = 13;

struct PlayItem {
  // As in the file, from the item's first byte; zero past the end of the file.
  std::array<std::byte, kPlayItemHead> head{};
  // Ticks of 1/45000 s; both 0 if the item is too short to hold them.
  std::uint32_t inTime = 0;
  std::uint32_t outTime = 0;

  // Always the five bytes of the clip's number, whatever they are. Borrowed from the item.
  std::string_view ClipName() const noexcept {
    return {reinterpret_cast<const char*>(head.data()) + 2, 5};
  }
  std::uint8_t ConnectionCondition() const noexcept {
    return std::to_integer<std::uint8_t>(head[12]) & 0x0F;
  }
  // Joined without a seam to the item before it: the same recording in one more file.
  bool ContinuesShot() const noexcept { return ConnectionCondition() == 6; }
};

// What a camera notes about a shot. There is one for each shot, not for each clip.
struct ShotMark {
  std::uint16_t item = 0;                    // index of the shot's first play item
  std::uint16_t maker = 0;                   // 0103 Panasonic, 0108 Sony, 1011 Canon, 1104 JVC
  std::array<std::byte, 8> recorded{};       // zone byte, then BCD YY YY MM DD hh mm ss
  std::array<std::byte, 4> startTimecode{};  // BCD frames, seconds, minutes, hours
};

struct Playlist {
  std::vector<PlayItem> items;
  std::vector<ShotMark> marks;
};

// Parses a playlist in memory. What doesn't hold gives no items.
Playlist ParsePlaylist(foundation::ByteReader file);

// The playlist at `path` (UTF-8), shared with the call scope; never null, without items if it can't
// be read. Opens regular files only.
std::shared_ptr<const Playlist> LoadPlaylist(const std::string& path);

// A run of items that is one shot, within its playlist: [first, end), with the clip at `clip`.
struct ShotOfClip {
  std::shared_ptr<const Playlist> playlist;
  std::size_t first = 0;
  std::size_t clip = 0;
  std::size_t end = 0;
};

// The shot of the first item whose clip name is `clip`; nothing if the playlist doesn't hold it.
std::optional<ShotOfClip> FindShot(std::shared_ptr<const Playlist> playlist, std::string_view clip);

// The shot of a stream file such as /card/BDMV/STREAM/00012.MTS, from the first playlist that holds
// the clip, looked for from the clip's own number downward to 0 in the PLAYLIST folder beside
// STREAM. At each number "NNNNN.MPL" goes before "NNNNN.mpls", spelled exactly so. Lists the
// PLAYLIST folder once within a call scope.
std::optional<ShotOfClip> FindShotOfStream(const std::string& streamFile);

// For a caller about to ask for the shots of many clips of one card: reads all playlists of the
// PLAYLIST folder and notes in the call scope which clips they hold. FindShotOfStream then gives
// the same answers by one look-up each. Does nothing without a call scope.
void IndexPlaylists(const std::string& folder);

// The mark of the shot that begins at item `first`; null if the playlist has none for it.
const ShotMark* MarkOfShot(const Playlist& playlist, std::size_t first);

}  // namespace Sorvik::formats::avchd
