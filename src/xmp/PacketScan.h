// SPDX-License-Identifier: MIT
// Finds XMP packets in files of unknown structure by the packet wrapper (ISO 16684-1, 7.3.2).
#pragma once

#include <string>
#include <string_view>

#include "xmp/Reader.h"

namespace Sorvik::xmp {

// Returns the last complete packet in `bytes`, in UTF-8, UTF-16 or UTF-32, as a view into `bytes`;
// empty if there is none. A packet with a missing or truncated trailer counts if its root element
// is complete; it ends after that.
std::string_view FindPacket(std::string_view bytes);

// Same for a file. Small files are scanned completely, larger ones only at the head and the tail.
std::string ScanForPacket(const FileBytes& file);

}  // namespace Sorvik::xmp
