// SPDX-License-Identifier: MIT
// Whether a stream of an AVCHD card lasts as long as a playlist says. Reads the head and the tail.
// Any thread.
#pragma once

#include <string>

#include "formats/avchd/Playlist.h"

namespace Sorvik::formats::avchd {

// How many seconds of the play item are missing at the end of the stream at `path`; 0 if none are,
// or if the times of the two can't be compared.
unsigned MissingSeconds(const std::string& path, const PlayItem& item);

}  // namespace Sorvik::formats::avchd
