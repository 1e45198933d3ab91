// SPDX-License-Identifier: MIT
// MPEG-2 transport streams of cameras: AVCHD (.MTS, .m2ts) and HDV (.M2T).
//
// Outside the head of the file, at most two further bounded reads, each only for wanted properties:
// a longer head, if the recording block or the audio follows a large first picture, and the tail
// for the last time stamp. On a card, the length comes from the clip information, and facts missing
// from the stream from the playlist that contains the clip.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kTransportStreamReader;

}  // namespace Sorvik::xmp
