// SPDX-License-Identifier: MIT
// FLAC files (RFC 9639): the facts of their first block.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kFlacReader;

}  // namespace Sorvik::xmp
