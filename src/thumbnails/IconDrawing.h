// SPDX-License-Identifier: MIT
// Icons as pixel buffers, whatever source they come from. Any thread.
#pragma once

#include "SorvikProvider/foundation/Bitplate.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "foundation/imaging/IconSource.h"

namespace Sorvik {

// The side of the icon for a cell: 16 for the small one, if that is strictly nearer to the cell
// than 32 in the sum of both sides, and otherwise the shell's size. That is 32, and more for cells
// in which such an icon would be blown up.
int IconSideFor(int width, int height);

// The icon over the whole of a new buffer, rows top-down; null for a side that a buffer can't have,
// or for an icon without alpha whose mask is missing or too low.
Bitplate** DrawIcon(const imaging::Icon& icon, int width, int height);

Bitplate** DrawFolderIcon(const imaging::IconSource& source, int width, int height);
// The icon of the file or folder at `path`; of what isn't there, the icon that its name tells.
Bitplate** DrawIconOfPath(const imaging::IconSource& source, const Hestra::UTF16String& path,
                          int width, int height);

}  // namespace Sorvik
