// SPDX-License-Identifier: MIT
// Raw DV files (.DV): frames of one size, one behind the other.
#pragma once

#include <optional>
#include <string_view>

#include "xmp/NativeValues.h"
#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kDVReader;

// The start of recording that an HDV or DV recording unit writes into a file's name, such as
// "00_0001_2009-03-14_101530.M2T": camera, clip, date, time. Nothing where the clock wasn't set.
std::optional<DateTime> DateFromRecorderName(std::string_view path);

}  // namespace Sorvik::xmp
