// SPDX-License-Identifier: MIT
// XMP packets in files whose structure nobody here knows, by the wrapper around them (ISO 16684-1,
// 7.3.2).
#pragma once

#include <string>
#include <string_view>

#include "xmp/Reader.h"

namespace Sorvik::xmp {

// The last complete packet in `bytes`, in UTF-8, UTF-16 or UTF-32; empty if there is none. Borrowed
// from `bytes`.
std::string_view FindPacket(std::string_view bytes);

// The same in a file. Small files are searched whole, of others only the head and the tail.
std::string ScanForPacket(const FileBytes& file);

}  // namespace Sorvik::xmp
