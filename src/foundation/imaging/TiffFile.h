// SPDX-License-Identifier: MIT
// Decodes the first picture of a TIFF file with libtiff. gdk-pixbuf doesn't let it map the file,
// and then some versions reject uncompressed tiles of a size that isn't a multiple of 1,024 bytes,
// such as 16 by 16 pixels. Any thread.
#pragma once

#include "foundation/imaging/ImageDecoder.h"

namespace Sorvik::imaging {

// Returns a picture with four channels and premultiplied colours; nullptr if the file is damaged,
// or if the picture is larger than kMaxPixels.
Image::Pixbuf DecodeTiff(const ImageSource& source);

}  // namespace Sorvik::imaging
