// SPDX-License-Identifier: MIT
// The clip information file (.CPI, .clpi) that stands beside each stream of an AVCHD or Blu-ray
// card. Facts: layout as public readers of Blu-ray's clip information agree on it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "foundation/ByteReader.h"

namespace Sorvik::xmp {

// The length of the clip in ticks of 1/45000 s, the sum over its sequences; nothing if the bytes
// are no clip information or tell no length.
std::optional<std::uint64_t> ReadClipLength(foundation::ByteReader file);

// The same for a stream such as /card/BDMV/STREAM/00001.MTS, from the file in CLIPINF beside
// STREAM. Costs one open and one read at most, and nothing for a stream in another folder.
std::optional<std::uint64_t> ClipLengthOfStream(const std::string& streamFile);

// True for a path in a folder STREAM, where playlists and clip information may stand beside it.
bool IsCardStream(const std::string& path);

}  // namespace Sorvik::xmp
