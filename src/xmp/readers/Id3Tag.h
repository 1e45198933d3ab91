// SPDX-License-Identifier: MIT
// ID3v2 tags, at the beginning of MP3 files and in WAV files.
// Facts: ID3v2.3 and ID3v2.4, sections 3 and 4.
#pragma once

#include <cstdint>
#include <string>

#include "xmp/readers/FileWindow.h"

namespace Sorvik::xmp {

// True if a tag of version 2.2 to 2.4 begins there.
bool IsId3Tag(foundation::ByteReader bytes);

// The number of bytes of the tag at the start of `bytes`, its padding included; 0 without a tag.
std::uint64_t EndOfId3Tag(foundation::ByteReader bytes);

// Stores the texts of the tag at offset `at`: title, artist, album, and so on. `packet` receives
// the XMP of its first PRIV frame of XMP if it is empty. Returns true if there were texts. Tags of
// version 2.2, which have other frames, are ignored.
bool SetId3Tag(FileWindow& file, std::uint64_t at, TXMPMeta& meta, std::string& packet);

}  // namespace Sorvik::xmp
