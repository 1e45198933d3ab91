// SPDX-License-Identifier: MIT
// Smooth scaling of pictures.
#pragma once

#include "Picture.h"

namespace host {

// Scales to `width` by `height` with a triangle filter (bilinear), as wide as two pixels of the
// source when enlarging and of the target when reducing.
Picture Scaled(const Picture& picture, int width, int height);

// Scales with the aspect ratio kept, so that the picture fits `width` by `height`; a side of 0
// isn't limited. Pictures are only enlarged or only reduced. Returns other pictures unchanged.
Picture EnlargedTo(Picture picture, int width, int height);
Picture ReducedTo(Picture picture, int width, int height);

// Removes the transparent rows and columns that the library leaves between the pixels of an opaque
// picture when it is drawn larger than it is, and around it. Returns other pictures unchanged.
Picture WithoutGaps(Picture picture);

}  // namespace host
