// SPDX-License-Identifier: MIT
// PDF files: the metadata stream of the document catalog. Those of pictures and pages in the
// document are not its own.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kPdfReader;

}  // namespace Sorvik::xmp
