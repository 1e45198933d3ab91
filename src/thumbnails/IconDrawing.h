// SPDX-License-Identifier: MIT
// Draws icons of any source into pixel buffers. May be called on any thread.
#pragma once

#include "SorvikProvider/foundation/Bitplate.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "foundation/imaging/IconSource.h"

namespace Sorvik {

// Returns the icon size for a cell: 16 if that is strictly nearer to the cell than 32 in the sum of
// both sides, otherwise the shell's size. That is 32, or more for cells in which such an icon would
// be enlarged.
int IconSideFor(int width, int height);

// Scales the icon to a new buffer with top-down rows. Returns null if the size is invalid, or if
// the icon has no alpha and its mask is missing or has too few rows.
Bitplate** DrawIcon(const imaging::Icon& icon, int width, int height);

Bitplate** DrawFolderIcon(const imaging::IconSource& source, int width, int height);
// Returns the icon of the file or folder at `path`. The icon of a missing file depends on its name.
Bitplate** DrawIconOfPath(const imaging::IconSource& source, const Hestra::UTF16String& path,
                          int width, int height);

}  // namespace Sorvik
