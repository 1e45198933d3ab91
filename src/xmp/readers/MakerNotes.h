// SPDX-License-Identifier: MIT
// Maker notes of cameras (the Exif tag MakerNote), for the serial number, the lens and the owner.
//
// Facts: the notes are tag directories like those of TIFF, each after the header of its maker. The
// layouts were derived from the tables that independent readers publish.
#pragma once

#include <cstdint>
#include <string>

#include "xmp/readers/TiffWalker.h"

namespace Sorvik::xmp {

// Empty texts are unknown.
struct MakerNoteFacts {
  std::string serialNumber;
  std::string lens;
  std::string lensSerialNumber;
  std::string owner;
};

// Reads the notes of Canon, Nikon, Sony, Olympus, Panasonic and Pentax cameras. `first` is the
// directory of the tag Make, `exif` that of MakerNote. Notes of other makers, and encrypted values,
// are skipped.
MakerNoteFacts ReadMakerNote(TiffWalker& walker, const TiffDirectory& first,
                             const TiffDirectory& exif);

// Returns the serial number of a Canon camera in the form that the camera shows, which depends on
// the model; empty for 0.
std::string CanonSerialNumber(std::uint64_t number, const std::string& model);

}  // namespace Sorvik::xmp
