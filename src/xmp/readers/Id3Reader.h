// SPDX-License-Identifier: MIT
// MP3 files with an ID3v2 tag: its texts, and the XMP of its PRIV frame. Packets in attached
// pictures (APIC) and other frames are not those of the file.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kId3Reader;

}  // namespace Sorvik::xmp
