// SPDX-License-Identifier: MIT
// All files of a clip of an XDCAM EX card, or of the take that contains it, collected over the
// cards of the take. May read the lists in all folders next to the card; a list or playlist is read
// once within a call scope. Paths are UTF-8. Any thread.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "providers/cards/MediaPro.h"

namespace Sorvik::xdcamex {

struct TakeFiles {
  std::vector<MediaProEntry> clips;  // in playing order
  std::vector<MediaProEntry> takes;
  std::vector<std::string> mediaProFiles;  // the lists of the cards
  std::vector<std::string> sideFiles;      // the other files next to the lists
};

// The limit of the records in all takes of one listing: the size of a list, because on a real card
// each clip is in one take. If in an invalid list all takes contain all clips, the number of paths
// would be quadratic.
inline constexpr std::size_t kMaxTakeRecords = formats::sony::kMaxRecords;

// The files of the clip with the essence `mp4Path`, or of its take. Missing parts are left out.
// Reduces `recordsLeft` by the number of records in the take; at 0, the clip is returned alone.
TakeFiles GatherTake(const std::string& mp4Path, std::size_t& recordsLeft);

// A part of a take that is neither on this card nor on one next to it.
struct MissingPart {
  std::string umid;
  std::string path;  // of its essence, if the list of another card contains the part; else empty
};

// The missing components of a take in the list at `mediaPro`. A part on another card counts only if
// its essence exists. If the take's playlist doesn't end on this card, its last source must be on
// another card.
std::vector<MissingPart> MissingParts(const std::string& mediaPro, const MediaProEntry& take);

// The existing paths, without `own`, in the order in which an entry reports them.
std::vector<std::string> PathsOf(const TakeFiles& files, const std::string& own);

}  // namespace Sorvik::xdcamex
