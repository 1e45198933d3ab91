// SPDX-License-Identifier: MIT
// The tags of TIFF and Exif as properties, shared by TIFF files and the Exif blocks of other
// formats.
// Facts: TIFF 6.0; Exif 2.32, tables 4 to 15.
#pragma once

#include "xmp/readers/TiffWalker.h"

namespace Sorvik::xmp {

namespace tiff {
enum Tag : std::uint16_t {
  kSubfileType = 254,
  kImageWidth = 256,
  kImageLength = 257,
  kBitsPerSample = 258,
  kCompression = 259,
  kImageDescription = 270,
  kMake = 271,
  kModel = 272,
  kOrientation = 274,
  kSoftware = 305,
  kDateTime = 306,
  kArtist = 315,
  kSubIFDs = 330,
  kXMPPacket = 700,
  kCopyright = 33432,
  kIptc = 33723,
  kImageResources = 34377,
  kExifIFD = 34665,
  kGPSIFD = 34853,
};
}  // namespace tiff

// Tags of the Exif directory that readers of camera files use.
namespace exif {
enum Tag : std::uint16_t {
  kMakerNote = 37500,
  kPixelXDimension = 40962,
  kPixelYDimension = 40963,
};
}  // namespace exif

// Stores the facts of the first directory of `walker` and of its Exif and GPS directories. Returns
// true if any property was stored.
bool SetExifTags(TiffWalker& walker, const TiffDirectory& first, TXMPMeta& meta);

// Same for an Exif block that begins with a TIFF header. Some makers store the Exif and the GPS
// directory in blocks of their own, as the first directory.
enum class ExifPart { kAll, kExif, kGPS };
bool SetExifBlock(foundation::ByteReader block, TXMPMeta& meta, ExifPart part = ExifPart::kAll);

// Returns the directory of the main picture: cameras and converters that write a thumbnail to the
// first directory put the picture into a sub-directory. Empty if there is none.
TiffDirectory MainDirectory(TiffWalker& walker, const TiffDirectory& first);

// Returns the tag Orientation of an Exif block; nullopt if it is missing.
std::optional<std::uint64_t> ExifOrientation(foundation::ByteReader block);

// "18-55mm f/3.5-5.6" from the shortest and the longest focal length and the f-number at each; an
// empty string unless `tag` has these four ratios.
std::string LensText(TiffWalker& walker, const TiffDirectory& directory, std::uint16_t tag);

}  // namespace Sorvik::xmp
