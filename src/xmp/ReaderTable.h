// SPDX-License-Identifier: MIT
// The readers of all kinds of file, in the order in which they are asked.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

// The reader for a file; there always is one.
const Reader& ReaderFor(const ReaderInput& input);

}  // namespace Sorvik::xmp
