// SPDX-License-Identifier: MIT
// Converts text of native metadata to the form in which readers store it.
#pragma once

#include <string>
#include <string_view>

#include "xmp/NativeValues.h"
#include "xmp/XMPMeta.h"

namespace Sorvik::xmp {

// Converts a fixed-length or NUL-terminated field to UTF-8: up to the first NUL, without leading
// and trailing whitespace. Text that isn't valid UTF-8 is read as Latin-1.
std::string NativeText(std::string_view bytes);
// Converts Latin-1 text, for formats that require it.
std::string Latin1Text(std::string_view bytes);
// Same for big- or little-endian UTF-16, with or without a byte order mark.
std::string UTF16Text(std::string_view bytes, bool bigEndian);

// Converts "YYYY:MM:DD HH:MM:SS" of Exif, with any separators, to an XMP date. Text after the
// seconds is dropped. Empty if invalid.
std::string ExifDate(std::string_view text);

// Parses a decimal number as a fraction of integers: "35.50" is 3550/100. Unknown if it isn't a
// number.
Rate DecimalFraction(std::string_view text);

// dc:creator from a semicolon-separated list of names.
void SetCreators(TXMPMeta& meta, std::string_view names);
// dc:rights in the default language, and xmpDM:copyright, which is the property of media files.
void SetCopyright(TXMPMeta& meta, const std::string& text);
// xmp:CreatorTool and tiff:software.
void SetSoftware(TXMPMeta& meta, const std::string& text);
// xmpDM:fileDataRate in megabytes per second, from the file size and a duration in units of
// 1/`perSecond` second.
void SetFileDataRate(TXMPMeta& meta, std::uint64_t bytes, std::uint64_t duration,
                     std::uint64_t perSecond);
// GPS properties from ISO 6709 text: "+48.2082+016.3738+180/".
void SetISO6709(TXMPMeta& meta, std::string_view text);

}  // namespace Sorvik::xmp
