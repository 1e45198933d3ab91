// SPDX-License-Identifier: MIT
// Pictures for providers: image files, icons of files and folders, named icons and the static
// pictures of the camera structures. Failures return null or false. The caller owns new buffers.
// Stateless; may be called on any thread.
#pragma once

#include <string>
#include <string_view>

#include "SorvikProvider/foundation/Bitplate.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "SorvikProvider/thumbnails/Thumbnails.h"

namespace Sorvik {

// Draws the image file at `path` into the caller's buffer of `width` by `height` pixels, scaled to
// fit with its aspect ratio, centred horizontally and aligned to the bottom. Rows are top-down,
// `rowBytes` apart. Returns false if the file can't be read as an image, or if an image with
// transparency is scaled to a size of 0.
bool RenderThumbnail(const UTF16String& path, int width, int height, int rowBytes,
                     unsigned char* pixels);

// Same, into a new, unlocked buffer of `width` by `height` pixels with top-down rows. Returns null
// if it can't be created or drawn.
Bitplate** RenderThumbnailIntoNew(const UTF16String& path, int width, int height);

// Returns the system's icon of `file` in `directory`, scaled to a new buffer with top-down rows. A
// `directory` that isn't a long-form folder path is treated as an empty path. The icon of a missing
// file depends on its name.
Bitplate** GetFolderThumbnail(const std::string& directory, const std::string& file, int width,
                              int height);

// Returns the icon of the file or folder at `path` as a square of `side` pixels.
Bitplate** GetIconThumbnail(const UTF16String& path, int side);

// Returns the icon `name` of the application's resources in the size for `height`, rendered by the
// exported RenderThumbnail (so the buffer is still locked). Returns null if there is no such icon.
Bitplate** RenderNamedIcon(const UTF16String& name, int width, int height);

// Renders the picture `fileName` of the folder registered as "document.templates" with
// RenderThumbnailIntoNew. Returns null if it is missing.
Bitplate** RenderTemplatePicture(std::string_view fileName, int width, int height);

// Returns the built-in picture `number` in a new buffer of `width` by `height`, with the row order
// bottom-up. Returns null if there is no such picture.
Bitplate** RenderBuiltInPicture(int number, int width, int height);

// The number of the built-in picture of an AVCHD clip.
inline constexpr int kAVCHDPictureNumber = 10000;

}  // namespace Sorvik
