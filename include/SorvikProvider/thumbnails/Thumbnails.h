// SPDX-License-Identifier: MIT
// Pictures of files as pixel buffers.
#pragma once

#include <vector>

#include "SorvikProvider/foundation/Bitplate.h"
#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/UTF16String.h"

namespace Sorvik {

// The image file at `path`, fitted into a cell of `width` by `height` pixels with its aspect kept,
// centred across and at the bottom of the cell. A side of 0 stands for the image's own. Owned by
// the caller and still locked; null if the file is no image that can be read. Any thread.
SORVIK_EXPORT Bitplate** RenderThumbnail(const UTF16String& path, int width, int height);

// Always null: images in memory are not rendered.
SORVIK_EXPORT Bitplate** RenderThumbnail(const std::vector<unsigned char>& bytes, int width,
                                         int height);

// The system's icon of a folder at `width` by `height`, owned by the caller, or null.
SORVIK_EXPORT Bitplate** GetFolderThumbnail(int width, int height);

}  // namespace Sorvik
