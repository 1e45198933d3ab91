// SPDX-License-Identifier: MIT
// The frame size of still pictures: that of the picture as it is shown, upright.
#pragma once

#include <cstdint>
#include <optional>

#include "xmp/XMPMeta.h"

namespace Sorvik::xmp {

// Stores the size of a picture of `width` by `height` stored pixels. `orientation` is the value of
// the Exif tag Orientation (274); 5 to 8 exchange width and height, other values don't. Sizes of 0
// or of more than 32 bits are not stored.
void SetPictureSize(TXMPMeta& meta, std::uint64_t width, std::uint64_t height,
                    std::optional<std::uint64_t> orientation = std::nullopt);

}  // namespace Sorvik::xmp
