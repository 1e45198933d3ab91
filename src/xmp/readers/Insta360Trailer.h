// SPDX-License-Identifier: MIT
// The records that Insta360 cameras append to their files: serial number, model and firmware.
// Facts: public descriptions of the trailer.
#pragma once

#include <string_view>

#include "xmp/Reader.h"
#include "xmp/readers/FileWindow.h"

namespace Sorvik::xmp {

// True for names of files that have such a trailer.
bool MayHaveInsta360Trailer(std::string_view path);

// Reads the end of the file and, at most, as many records as files have. Returns without a read if
// no property is wanted that the trailer can have.
void SetInsta360Trailer(FileWindow& file, const WantedProperties& wanted, TXMPMeta& meta);

}  // namespace Sorvik::xmp
