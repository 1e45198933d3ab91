// SPDX-License-Identifier: MIT
// The sidecar of a Blackmagic RAW recording on its own.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kBrawSidecarReader;

}  // namespace Sorvik::xmp
