// SPDX-License-Identifier: MIT
// Metadata that cameras store in boxes of their own: make, model, serial number, dates, location.
// Facts: public descriptions of these boxes and files of the cameras.
#pragma once

#include "xmp/readers/IsoBoxes.h"

namespace Sorvik::xmp {

// A box in the user data or a 'uuid' box of the movie. Other boxes are ignored. What the camera
// contains about the recording takes precedence over the movie header.
void SetMakerBox(FileWindow& file, const IsoBox& box, TXMPMeta& meta);

// Whether the 'uuid' box of a movie marks it as a still photograph (CR3), whose tracks are the
// pictures of different sizes. Movies with raw video (CRM) have the same structure.
bool IsCanonStill(FileWindow& file, const IsoBox& uuid);
// Stores the size of such a photograph, of which `width` and `height` are the stored pixels.
void SetCanonStillSize(FileWindow& file, const IsoBox& uuid, std::uint32_t width,
                       std::uint32_t height, TXMPMeta& meta);

// A 'meta' box that contains a NonRealTimeMeta document. Returns false for all others. The facts of
// the tracks take precedence, but not the dates.
bool SetNonRealTimeBox(FileWindow& file, const IsoBox& metaBox, TXMPMeta& meta);

}  // namespace Sorvik::xmp
