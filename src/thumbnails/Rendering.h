// SPDX-License-Identifier: MIT
// Pictures for providers: image files, icons of files and folders, named icons and the fixed
// pictures of the camera structures. Every failure is a null result or false, without a message.
// New buffers belong to the caller. Any thread; nothing is kept between calls.
#pragma once

#include <string>
#include <string_view>

#include "SorvikProvider/foundation/Bitplate.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "SorvikProvider/thumbnails/Thumbnails.h"

namespace Sorvik {

// Draws the image file at `path`, fitted with its aspect kept, centred across and at the bottom,
// into a cell of `width` by `height` pixels of a buffer that the caller made, locked and cleared.
// Rows go top-down, `rowBytes` apart. False if the file can't be read as an image, or if nothing of
// an image with transparency could be drawn.
bool RenderThumbnail(const UTF16String& path, int width, int height, int rowBytes,
                     unsigned char* pixels);

// The two steps of a caller that has no buffer yet: a new one of `width` by `height`, cleared,
// drawn by the form above with rows top-down, and unlocked. Null if it can't be made or drawn.
Bitplate** RenderThumbnailIntoNew(const UTF16String& path, int width, int height);

// The system's icon of `file` in `directory`, drawn over the whole of a new buffer, rows top-down.
// A `directory` that is no long-form folder path counts as the empty path. The file needn't exist:
// the icon then goes by its name.
Bitplate** GetFolderThumbnail(const std::string& directory, const std::string& file, int width,
                              int height);

// The icon of the file or folder at `path` as a square of `side` pixels.
Bitplate** GetIconThumbnail(const UTF16String& path, int side);

// The icon `name` of the application's resources in the size that goes with `height`, rendered by
// the exported RenderThumbnail (so the buffer is still locked). Null if there is no such icon.
Bitplate** RenderNamedIcon(const UTF16String& name, int width, int height);

// The picture `fileName` in the folder registered as "document.templates", as
// RenderThumbnailIntoNew gives it. Null if it isn't there.
Bitplate** RenderTemplatePicture(std::string_view fileName, int width, int height);

// The built-in picture `number` in a new buffer of `width` by `height`. Its rows stand bottom-up,
// and the buffer's order of rows says so. Null if there is no such picture.
Bitplate** RenderBuiltInPicture(int number, int width, int height);

// The number of the built-in picture of an AVCHD clip.
inline constexpr int kAVCHDPictureNumber = 10000;

}  // namespace Sorvik
