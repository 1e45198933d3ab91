// SPDX-License-Identifier: MIT
// The table of all readers, in the order in which they are tried.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

// Returns the reader for a file. The last row of the table accepts every file.
const Reader& ReaderFor(const ReaderInput& input);

}  // namespace Sorvik::xmp
