// SPDX-License-Identifier: MIT
// Text of native metadata as readers store it.
#pragma once

#include <string>
#include <string_view>

#include "xmp/NativeValues.h"
#include "xmp/XMPMeta.h"

namespace Sorvik::xmp {

// The text of a fixed or NUL-ended field in UTF-8: up to the first NUL, without blanks at its ends.
// What isn't UTF-8 counts as Latin-1.
std::string NativeText(std::string_view bytes);
// Text in Latin-1, as some formats demand it.
std::string Latin1Text(std::string_view bytes);
// The same of big- or little-endian UTF-16, with or without a byte order mark.
std::string UTF16Text(std::string_view bytes, bool bigEndian);

// "YYYY:MM:DD HH:MM:SS" of Exif, or with other separators, as XMP date text with what stands behind
// it left out; empty if it's none.
std::string ExifDate(std::string_view text);

// "xx.yyy" digits as a fraction of whole numbers: "35.50" is 3550/100. Unknown if it's no number.
Rate DecimalFraction(std::string_view text);

// dc:creator from a text in which semicolons separate names.
void SetCreators(TXMPMeta& meta, std::string_view names);
// dc:rights in the default language, and xmpDM:copyright, the form in which media files have it.
void SetCopyright(TXMPMeta& meta, const std::string& text);
// xmp:CreatorTool and tiff:software.
void SetSoftware(TXMPMeta& meta, const std::string& text);
// xmpDM:fileDataRate in megabytes a second, from the file's size and a duration in units of
// 1/`perSecond` second.
void SetFileDataRate(TXMPMeta& meta, std::uint64_t bytes, std::uint64_t duration,
                     std::uint64_t perSecond);
// GPS facts of a text as ISO 6709 has them: "+48.2082+016.3738+180/".
void SetISO6709(TXMPMeta& meta, std::string_view text);

}  // namespace Sorvik::xmp
