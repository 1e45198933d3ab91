// SPDX-License-Identifier: MIT
// The playlist of an AVCHD card (.MPL, .mpls): its play items, and what cameras write about each
// shot in the "PLEX" extension block. Used for the structure and for the metadata of a card.
//
// Bounds. A file of up to kMaxPlaylistBytes is parsed as one view; offsets and lengths are checked
// in 64 bits. Items are read until one of these rules fails; those before it are kept:
//  - the file has at least 21 bytes and begins with "MPLS0100";
//  - the first 10 bytes of the play-list block and its declared length are inside the file;
//  - the next item begins at item + 2 + the declared length of the item, and at least two bytes of
//    the file follow the item. A file truncated after its last item thus loses that item.
// An item may be shorter than the fields read from it. They are then read from the bytes after it,
// and as zero past the end of the file.
//
// All numbers in the file are big-endian. Source of the layout: public readers of this format,
// checked against camera files. Any thread; never throws for bad data.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/ByteReader.h"

namespace Sorvik::formats::avchd {

// A playlist of 2,000 items with a mark each is smaller than 400 kB. Larger files than this aren't
// read.
inline constexpr std::size_t kMaxPlaylistBytes = 4 * 1024 * 1024;

// The maximum number of items and marks that one call reads; 1,000 playlists of 1,000 each are more
// than any card has. The playlist that exceeds it and all later ones count as unreadable.
inline constexpr std::size_t kMaxItemsPerCall = 2'000'000;

// The first bytes of a play item: length (2), clip name (5), codec (4), flags (2).
inline constexpr std::size_t kPlayItemHead = 13;

struct PlayItem {
  // As in the file, from the item's first byte; zero past the end of the file.
  std::array<std::byte, kPlayItemHead> head{};
  // Ticks of 1/45000 s; both 0 if the item is too short to hold them.
  std::uint32_t inTime = 0;
  std::uint32_t outTime = 0;

  // Five bytes, digits if the playlist is valid. Valid as long as the item.
  std::string_view ClipName() const noexcept {
    return {reinterpret_cast<const char*>(head.data()) + 2, 5};
  }
  std::uint8_t ConnectionCondition() const noexcept {
    return std::to_integer<std::uint8_t>(head[12]) & 0x0F;
  }
  // Seamless connection: the recording of the previous item continues in another file.
  bool ContinuesShot() const noexcept { return ConnectionCondition() == 6; }
};

// What a camera writes about a shot. One for each shot, not for each clip.
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

// Parses a playlist in memory. Returns no items for an invalid one.
Playlist ParsePlaylist(foundation::ByteReader file);

// The playlist at `path` (UTF-8), shared with the call scope. Never null; has no items if it can't
// be read. Opens regular files only.
std::shared_ptr<const Playlist> LoadPlaylist(const std::string& path);

// Leaves these playlists in the call scope. Their files are read ahead on slow storage. Stops when
// `stop` returns true.
void LoadPlaylists(const std::vector<std::string>& paths, const std::function<bool()>& stop);

// The items [first, end) of a playlist that are one shot; `clip` is the index of the item that was
// searched for.
struct ShotOfClip {
  std::shared_ptr<const Playlist> playlist;
  std::size_t first = 0;
  std::size_t clip = 0;
  std::size_t end = 0;
};

// The shot of the first item whose clip name is `clip`; nullopt if the playlist doesn't contain it.
std::optional<ShotOfClip> FindShot(std::shared_ptr<const Playlist> playlist, std::string_view clip);

// The shot of a stream file such as /card/BDMV/STREAM/00012.MTS. Searches the playlists in the
// PLAYLIST folder next to STREAM from the number of the clip downward to 0 and returns the shot in
// the first one that contains the clip; nullopt if none does. For each number "NNNNN.MPL" takes
// precedence over "NNNNN.mpls"; both are case-sensitive. Lists the PLAYLIST folder once within a
// call scope.
std::optional<ShotOfClip> FindShotOfStream(const std::string& streamFile);

// For callers of FindShotOfStream for many clips of one card: reads all playlists of the PLAYLIST
// folder and indexes their clips in the call scope. FindShotOfStream then returns the same shots by
// one look-up each. Has no effect without a call scope.
void IndexPlaylists(const std::string& folder);

// The mark of the shot that begins at item `first`; nullptr if there is none.
const ShotMark* MarkOfShot(const Playlist& playlist, std::size_t first);

}  // namespace Sorvik::formats::avchd
