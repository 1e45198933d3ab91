// SPDX-License-Identifier: MIT
// Pictures in buffers of their own size, without a border. Rows are top-down. Any thread.
#pragma once

#include "foundation/imaging/ImageSource.h"
#include "thumbnails/FrameHelper.h"
#include "thumbnails/OwnedBitplate.h"

namespace Sorvik {

// Draws an image, turned upright by its orientation as in Exif (1 to 8), and reduced with its
// aspect ratio to fit `maxWidth` by `maxHeight` (0: no limit other than frames::kMaxSide). It is
// never enlarged. Returns nullptr if it can't be read.
OwnedBitplate DrawPlainPicture(const imaging::ImageSource& source, int maxWidth, int maxHeight,
                               int orientation = 1);

// Copies a decoded frame. Returns nullptr if memory is exhausted.
OwnedBitplate DrawFramePicture(const FramePicture& picture);

}  // namespace Sorvik
