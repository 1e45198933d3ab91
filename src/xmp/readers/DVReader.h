// SPDX-License-Identifier: MIT
// Raw DV files (.DV): consecutive frames of one size.
#pragma once

#include <optional>
#include <string_view>

#include "xmp/NativeValues.h"
#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kDVReader;

// Parses the start of recording from the file names of HDV and DV recording units, such as
// "00_0001_2009-03-14_101530.M2T": camera, clip, date, time. Returns nullopt if the clock wasn't
// set.
std::optional<DateTime> DateFromRecorderName(std::string_view path);

}  // namespace Sorvik::xmp
