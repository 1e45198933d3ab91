// SPDX-License-Identifier: MIT
// The clip information file (.CPI, .clpi) of a stream on an AVCHD or Blu-ray card. Facts: the
// layout on which public readers of Blu-ray clip information agree.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "foundation/ByteReader.h"

namespace Sorvik::xmp {

// Returns the length of the clip in ticks of 1/45000 s, summed over its sequences. Returns nullopt
// if the bytes aren't clip information or contain no length.
std::optional<std::uint64_t> ReadClipLength(foundation::ByteReader file);

// Same for a stream such as /card/BDMV/STREAM/00001.MTS, from the file in CLIPINF next to STREAM.
// Costs at most one open and one read, and no I/O for a stream in another folder.
std::optional<std::uint64_t> ClipLengthOfStream(const std::string& streamFile);

// True for a path in a folder STREAM, which may have playlists and clip information next to it.
bool IsCardStream(const std::string& path);

}  // namespace Sorvik::xmp
