// SPDX-License-Identifier: MIT
// One probe for each container; MediaProbe.h describes the result. Each reads at most some hundred
// kilobytes and makes a limited number of reads, whatever the file contains.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/MediaProbe.h"
#include "foundation/ByteReader.h"
#include "foundation/platform/FileSystem.h"

namespace Sorvik::formats::probe {

using platform::RegularFile;

MediaProbe ProbeMxf(const RegularFile& file);
MediaProbe ProbeIsoMedia(const RegularFile& file);
MediaProbe ProbeRiff(const RegularFile& file);
MediaProbe ProbeTransportStream(const RegularFile& file);
MediaProbe ProbeDV(const RegularFile& file);
MediaProbe ProbeAri(const RegularFile& file);
MediaProbe ProbeRmf(const RegularFile& file);
MediaProbe ProbeDng(const RegularFile& file);
MediaProbe ProbeR3d(const RegularFile& file);
MediaProbe ProbeBmp(const RegularFile& file);
MediaProbe ProbeJpeg(const RegularFile& file);
MediaProbe ProbeAvchdIndex(const RegularFile& file);

inline MediaProbe Passed() { return {MediaProbe::Result::kPassed, {}}; }
inline MediaProbe Truncated(std::string detail) {
  return {MediaProbe::Result::kTruncated, std::move(detail)};
}
inline MediaProbe NotA(const char* container) {
  return {MediaProbe::Result::kUnreadable, std::string("not ") + container};
}
// `expected` bytes or more are needed.
inline MediaProbe TooShort(const RegularFile& file, std::uint64_t expected, const char* source) {
  return Truncated(std::to_string(file.Size()) + " bytes, expected at least " +
                   std::to_string(expected) + " by " + source);
}

// At most `count` bytes from `offset`.
inline std::vector<std::byte> ReadPart(const RegularFile& file, std::uint64_t offset,
                                       std::size_t count) {
  return file.ReadPart(offset, count);
}

}  // namespace Sorvik::formats::probe
