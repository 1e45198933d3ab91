// SPDX-License-Identifier: MIT
// Placement of a picture in a cell.
#pragma once

#include "foundation/imaging/Canvas.h"

namespace Sorvik {

// Returns the largest placement with the picture's aspect ratio in a cell of `cellWidth` by
// `cellHeight`, centred horizontally and aligned to the bottom. If any side is below 1, the picture
// fills the cell.
imaging::Placement FitPicture(int pictureWidth, int pictureHeight, int cellWidth, int cellHeight);

}  // namespace Sorvik
