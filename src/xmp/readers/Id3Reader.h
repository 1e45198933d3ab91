// SPDX-License-Identifier: MIT
// MP3 files: the texts of an ID3v2 tag, the XMP of its PRIV frame, and the facts of the audio.
// Packets in attached pictures (APIC) and other frames are not those of the file.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kId3Reader;

}  // namespace Sorvik::xmp
