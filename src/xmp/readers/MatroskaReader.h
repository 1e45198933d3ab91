// SPDX-License-Identifier: MIT
// Reads Matroska and WebM files.
// Facts: RFC 9559 (Matroska), its codec mappings and its table of tags.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kMatroskaReader;

}  // namespace Sorvik::xmp
