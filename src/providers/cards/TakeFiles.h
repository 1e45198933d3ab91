// SPDX-License-Identifier: MIT
// Everything that belongs to a clip of an XDCAM EX card, or to the take that it is a part of, put
// together over the cards that hold the take. May look at every folder beside the card; a list or
// playlist is read once within a call scope. Any thread.
#pragma once

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

// What the clip with the essence `mp4Path` belongs to. A part that is nowhere is left out.
TakeFiles GatherTake(const UTF16String& mp4Path);

// The paths of all that is there, without `own`, in the order in which an entry reports them.
std::vector<UTF16String> PathsOf(const TakeFiles& files, const UTF16String& own);

}  // namespace Sorvik::xdcamex
