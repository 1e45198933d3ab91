// SPDX-License-Identifier: MIT
// Sample descriptions of video tracks of ISO base media files, with the configuration of the codec.
// Facts: ISO/IEC 14496-12, 12.1, and 14496-15 (AVC, HEVC, VVC); the codec bindings of AV1 and VP9;
// QuickTime File Format, "Video Sample Description".
#pragma once

#include <cstdint>
#include <utility>

#include "foundation/ByteReader.h"
#include "xmp/XMPMeta.h"

namespace Sorvik::xmp {

// Size in pixels, codec, bit depth, pixel aspect ratio, field order and colour space. The track is
// displayed at `displayWidth` by `displayHeight`; 0 means unknown.
void SetVideoEntry(foundation::ByteReader entry, std::uint32_t displayWidth,
                   std::uint32_t displayHeight, TXMPMeta& meta);

// Width and height in pixels; 0 unknown.
std::pair<std::uint32_t, std::uint32_t> VideoEntrySize(foundation::ByteReader entry);

// Bit depth, field order, colour space and pixel aspect ratio from the configuration of a codec:
// the body of a box of that type, such as 'avcC'.
void SetCodecConfiguration(std::uint32_t type, foundation::ByteReader body, TXMPMeta& meta);

// Bit depth from the header of a VC-3 frame.
void SetVC3Frame(foundation::ByteReader frame, TXMPMeta& meta);

// Whether the video is AVC whose parameter sets allow fields, and no box declares the order.
bool HasUnknownFieldOrder(foundation::ByteReader entry);
// The body of its box 'avcC'; empty if there is none.
foundation::ByteReader AVCConfiguration(foundation::ByteReader entry);
// Field order from the first frame of AVC with that configuration, unless it is known.
void SetAVCFrame(foundation::ByteReader avcC, foundation::ByteReader frame, TXMPMeta& meta);

// Field order, colour space and pixel aspect ratio from the header of a ProRes frame, where the
// description lacks them.
void SetProResFrame(foundation::ByteReader frame, TXMPMeta& meta);

}  // namespace Sorvik::xmp
