// SPDX-License-Identifier: MIT
// Raw files of Fujifilm (RAF): the size of the picture, and the metadata of the JPEG preview.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kRafReader;

}  // namespace Sorvik::xmp
