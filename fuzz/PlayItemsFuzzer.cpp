// SPDX-License-Identifier: MIT
// Playlists of AVCHD cards: play items, their grouping into shots, and marks.
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>

#include "formats/avchd/Playlist.h"

namespace {

using namespace Sorvik::foundation;
using namespace Sorvik::formats;

void Check(bool holds) {
  if (!holds) std::abort();
}

// A shot is a maximal run of items that contains the clip.
void CheckShot(const avchd::ShotOfClip& shot, std::string_view clip) {
  const auto& items = shot.playlist->items;
  Check(shot.first <= shot.clip && shot.clip < shot.end && shot.end <= items.size());
  Check(items[shot.clip].ClipName() == clip);
  Check(shot.first == 0 || !items[shot.first].ContinuesShot());
  Check(shot.end == items.size() || !items[shot.end].ContinuesShot());
  for (auto i = shot.first + 1; i < shot.end; ++i) Check(items[i].ContinuesShot());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ByteReader file(std::as_bytes(std::span(data, size)));
  const auto playlist = std::make_shared<const avchd::Playlist>(avchd::ParsePlaylist(file));
  // Items take at least two bytes each, and two bytes follow the last one.
  Check(playlist->items.empty() || (playlist->items.size() + 1) * 2 <= size);
  const std::size_t tried = playlist->items.size() < 64 ? playlist->items.size() : 64;
  for (std::size_t i = 0; i < tried; ++i) {
    const auto clip = playlist->items[i].ClipName();
    const auto shot = avchd::FindShot(playlist, clip);
    Check(shot.has_value());
    CheckShot(*shot, clip);
    avchd::MarkOfShot(*playlist, shot->first);
  }
  return 0;
}
