// SPDX-License-Identifier: MIT
// Thumbnails of files and folders as pixel buffers. All functions may be called on any thread.
#pragma once

#include <vector>

#include "SorvikProvider/foundation/Bitplate.h"
#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/UTF16String.h"

namespace Sorvik {

// Renders the image file at `path` into a new buffer of `width` by `height` pixels, scaled to fit
// with its aspect ratio, centred horizontally and aligned to the bottom. A side of 0 means the
// image's own size. The caller owns the buffer, which is still locked, and disposes it with
// bitplateDispose. Returns null if the file can't be read as an image or the size is invalid.
SORVIK_EXPORT Bitplate** RenderThumbnail(const UTF16String& path, int width, int height);

// Always returns null: rendering images in memory is not supported.
SORVIK_EXPORT Bitplate** RenderThumbnail(const std::vector<unsigned char>& bytes, int width,
                                         int height);

// Renders the system's folder icon into a new buffer of `width` by `height` pixels. The caller owns
// the buffer. Returns null if there is no icon or the size is invalid.
SORVIK_EXPORT Bitplate** GetFolderThumbnail(int width, int height);

}  // namespace Sorvik
