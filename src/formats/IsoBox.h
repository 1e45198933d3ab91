// SPDX-License-Identifier: MIT
// The head of a box of an ISO base media file (QuickTime: atom). Facts: ISO/IEC 14496-12, 4.2.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "foundation/ByteReader.h"

namespace Sorvik::formats {

struct IsoBox {
  std::string_view type;  // points into the bytes that were parsed
  std::uint64_t bodyAt;
  std::uint64_t end;  // may be past the end of what contains the box
};

// The box at `at`, of which `head` is the first bytes. `limit` is the end of what contains it,
// which a size of 0 means. Returns nullopt for an invalid size.
std::optional<IsoBox> IsoBoxAt(foundation::ByteReader head, std::uint64_t at, std::uint64_t limit);

}  // namespace Sorvik::formats
