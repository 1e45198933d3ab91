// SPDX-License-Identifier: MIT
// The record of a clip that its camera wrote next to the media, in a file of its own.
#pragma once

#include <string>

#include "xmp/Reader.h"

namespace Sorvik::xmp {

// Adds the facts of the record of the MP4 or MXF file at `path`, if it has one: C0001M01.XML of
// C0001.MP4, C0001.MXF and C0001V01.MXF (Sony), CLIP/0001AB.XML of VIDEO/0001AB.MXF and of the
// other media in CONTENTS (P2). Dates of a record, which have a time zone, take precedence over
// those of the media. At most one open. Returns whether there is a record.
bool AddClipRecord(const std::string& path, const WantedProperties& wanted, ReaderOutput& output);

}  // namespace Sorvik::xmp
