// SPDX-License-Identifier: MIT
// Everything that belongs to a clip of an XDCAM EX card, or to the take that it is a part of, put
// together over the cards that hold the take. May look at every folder beside the card; a list or
// playlist is read once within a call scope. Any thread.
#pragma once

#include <cstddef>
#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"
#include "providers/cards/MediaPro.h"

namespace Sorvik::xdcamex {

struct TakeFiles {
  std::vector<MediaProEntry> clips;  // in playing order
  std::vector<MediaProEntry> takes;
  std::vector<UTF16String> mediaProFiles;  // the lists of the cards
  std::vector<UTF16String> sideFiles;      // what stands beside them
};

// What the takes of one listing may name together: as much as a whole list, for each clip is in one
// take. In hostile lists all takes hold all clips, and their paths would grow with the square.
inline constexpr std::size_t kMaxTakeRecords = formats::sony::kMaxRecords;

// What the clip with the essence `mp4Path` belongs to. A part that is nowhere is left out. Lessens
// `recordsLeft` by what the take names; once that is used up, the clip stands for itself.
TakeFiles GatherTake(const UTF16String& mp4Path, std::size_t& recordsLeft);

// The components of a take in the list at `mediaPro` that neither this card nor one beside it has.
std::vector<UTF16String> MissingParts(const UTF16String& mediaPro, const MediaProEntry& take);

// The paths of all that is there, without `own`, in the order in which an entry reports them.
std::vector<UTF16String> PathsOf(const TakeFiles& files, const UTF16String& own);

}  // namespace Sorvik::xdcamex
