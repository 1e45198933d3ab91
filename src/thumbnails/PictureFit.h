// SPDX-License-Identifier: MIT
// Where a picture goes in a cell.
#pragma once

#include "foundation/imaging/Canvas.h"

namespace Sorvik {

// The largest size of the picture's aspect in a cell of `cellWidth` by `cellHeight`, centred across
// and, on purpose, at the bottom. A side below 1 anywhere makes the picture fill the cell.
imaging::Placement FitPicture(int pictureWidth, int pictureHeight, int cellWidth, int cellHeight);

}  // namespace Sorvik
