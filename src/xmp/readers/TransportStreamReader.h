// SPDX-License-Identifier: MIT
// MPEG-2 transport streams of cameras: AVCHD (.MTS, .m2ts) and HDV (.M2T).
//
// Beyond the head of the file at most two further parts are read, each bounded and only for
// properties that are wanted: more of the head, where the recording block or the audio lies behind
// a large first picture, and the tail for the last time stamp. On a card, the length comes from the
// clip information, and what the stream lacks from the playlist that holds the clip.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kTransportStreamReader;

}  // namespace Sorvik::xmp
