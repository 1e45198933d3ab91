// SPDX-License-Identifier: MIT
// Helpers for readers of clip XML: parsing the document, and parsing the numbers and rates that
// cameras write. Number parsing doesn't depend on the locale.
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

// Clip XML of cameras stays below 1 MiB; lens records per frame are not part of it. Larger files
// than four times that are not clip XML.
inline constexpr std::size_t kMaxClipXmlBytes = std::size_t{4} << 20;

// Returns the local name of the document element, from the start of the file alone; empty if the
// file isn't XML.
std::string XmlRootName(foundation::ByteReader head);

// Parses the complete file. Returns nullopt if it isn't well-formed or too large.
std::optional<foundation::XmlDocument> ParseClipXml(const ReaderInput& input);

// Returns the first descendant of `element` with that local name, in document order; null if there
// is none.
const foundation::XmlElement* FindDescendant(const foundation::XmlElement& element,
                                             std::string_view name);
// Returns the text of that descendant; empty if there is none.
std::string_view DescendantText(const foundation::XmlElement& element, std::string_view name);

// Parses a text of up to 18 digits and nothing else.
std::optional<std::uint64_t> ParseUnsigned(std::string_view text);
// Parses "19.831" as 19831/1000. Digits with at most one decimal point and nothing else.
std::optional<Rate> ParseDecimal(std::string_view text);
// Parses the numbers before and after the first `separator`. Returns nullopt if either is 0 or
// invalid.
std::optional<std::pair<std::uint64_t, std::uint64_t>> ParseNumberPair(std::string_view text,
                                                                       char separator);

// Parses the frame rate from a text such as "25p", "50i", "59.94i", "23.98p". Interlaced rates
// count fields: 59.94i is 30000/1001 frames. Returns an unknown rate if it is neither an integer
// nor 1000/1001 of one.
Rate FrameRateOfText(std::string_view text);
// True for "...i", false for "...p", nullopt for others.
std::optional<bool> IsInterlacedText(std::string_view text);

// Frames per second of timecode at that rate: 30 for 30000/1001. 0 if unknown.
unsigned TimecodeBaseOf(Rate rate);

// Returns the pixel aspect ratio of standard-definition video of 480 or 576 lines shown as 16:9 or
// 4:3 (ISO/IEC 14496-10, table E-1); nullopt for others.
std::optional<std::pair<unsigned, unsigned>> SDPixelAspectRatio(unsigned lines,
                                                                std::string_view aspectRatio);
// Sets the pixel aspect ratio at which a picture of that size has the display aspect "16:9" or the
// like.
void SetPixelAspectRatioOf(TXMPMeta& meta, std::uint64_t width, std::uint64_t height,
                           std::string_view aspectRatio);

// Sets xmpDM:audioChannelType for channels that a camera records as separate mono channels: only
// one and two channels have a name. 0 means unknown.
void SetCameraChannels(TXMPMeta& meta, std::uint64_t channels);

// Sets exif:GPSAltitude and its reference from metres: "123.4" or "-5", stored as a fraction.
void SetGPSAltitude(TXMPMeta& meta, std::string_view metres);

}  // namespace Sorvik::xmp
