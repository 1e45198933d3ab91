// SPDX-License-Identifier: MIT
// Files of MPEG audio frames (MP3). Facts: ISO/IEC 11172-3 and 13818-3; the header that encoders
// write into the first frame of a file ("Xing", "Info").
#pragma once

#include <cstdint>

#include "foundation/ByteReader.h"
#include "xmp/XMPMeta.h"
#include "xmp/readers/FileWindow.h"

namespace Sorvik::xmp {

// True if a frame begins there.
bool IsMpegAudioFrame(foundation::ByteReader bytes);

// Stores rate, channels, duration and data rate of the frames from offset `at` on. Without a header
// of the encoder, all frames count as equally long. Returns false if no frame begins there.
bool SetMpegAudio(FileWindow& file, std::uint64_t at, TXMPMeta& meta);

}  // namespace Sorvik::xmp
