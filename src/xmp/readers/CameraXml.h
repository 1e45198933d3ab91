// SPDX-License-Identifier: MIT
// What the readers of clip XML share: getting at the document, and the texts in which cameras write
// numbers and rates. Numbers are read the same in every locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/XmlTree.h"
#include "xmp/NativeValues.h"
#include "xmp/Reader.h"

namespace Sorvik::xmp {

// Clip XML of cameras stays below 1 MiB, even with a lens record for each frame of a long clip
// left out of it as they do; four times that is no clip XML any more.
inline constexpr std::size_t kMaxClipXmlBytes = std::size_t{4} << 20;

// The local name of the document element, told from the start of the file alone; empty if the file
// doesn't begin as XML does.
std::string XmlRootName(foundation::ByteReader head);

// The whole file as a tree; nothing if it isn't well-formed or too large.
std::optional<foundation::XmlDocument> ParseClipXml(const ReaderInput& input);

// The first element of that local name at any depth below `element`, in document order; null if
// there is none.
const foundation::XmlElement* FindBelow(const foundation::XmlElement& element,
                                        std::string_view name);
// Its text; empty if there is none.
std::string_view TextBelow(const foundation::XmlElement& element, std::string_view name);

// Digits and nothing else, up to 18 of them.
std::optional<std::uint64_t> WholeNumber(std::string_view text);
// "19.831" as 19831/1000. Digits with at most one point and nothing else.
std::optional<Rate> DecimalNumber(std::string_view text);
// The numbers on both sides of the first `separator`; nothing if either is 0 or none.
std::optional<std::pair<std::uint64_t, std::uint64_t>> NumberPair(std::string_view text,
                                                                  char separator);

// The frame rate that a text such as "25p", "50i", "59.94i", "23.98p" means, fields counted in
// pairs: 59.94i has 30000/1001 frames. Unknown if it is neither a whole number nor 1000/1001 of
// one.
Rate FrameRateOfText(std::string_view text);
// True for "...i", false for "...p", nothing for others.
std::optional<bool> IsInterlacedText(std::string_view text);

// Whole frames in a second of timecode at that rate: 30 for 30000/1001. 0 if unknown.
unsigned TimecodeBaseOf(Rate rate);

// The shape of a pixel of standard-definition video of 480 or 576 lines shown 16:9 or 4:3 (ISO/IEC
// 14496-10, table E-1); nothing for others.
std::optional<std::pair<unsigned, unsigned>> PixelShapeOfStandardDefinition(
    unsigned lines, std::string_view aspectRatio);
// Sets the pixel aspect ratio that makes a picture of that size fill "16:9" or the like.
void SetPixelAspectRatioOf(TXMPMeta& meta, std::uint64_t width, std::uint64_t height,
                           std::string_view aspectRatio);

// xmpDM:audioChannelType of channels that a camera records each for itself: only one and two of
// them have a name. 0 is unknown.
void SetCameraChannels(TXMPMeta& meta, std::uint64_t channels);

// exif:GPSAltitude and its reference from metres, "123.4", "-5" or a fraction as it stands.
void SetGPSAltitude(TXMPMeta& meta, std::string_view metres);

}  // namespace Sorvik::xmp
