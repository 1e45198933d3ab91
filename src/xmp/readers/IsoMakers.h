// SPDX-License-Identifier: MIT
// Metadata that cameras store in boxes of their own: make, model, serial number, dates, location.
// Facts: public descriptions of these boxes and files of the cameras.
#pragma once

#include "xmp/readers/IsoBoxes.h"

namespace Sorvik::xmp {

// A box in the user data or a 'uuid' box of the movie. Other boxes are ignored. What the camera
// says about the recording takes precedence over the movie header.
void SetMakerBox(FileWindow& file, const IsoBox& box, TXMPMeta& meta);

// A 'meta' box that contains a NonRealTimeMeta document. Returns false for all others. The facts of
// the tracks take precedence, but not the dates.
bool SetNonRealTimeBox(FileWindow& file, const IsoBox& metaBox, TXMPMeta& meta);
// Adds the facts of such a document.
void AddNonRealTimeFacts(TXMPMeta&& document, TXMPMeta& meta);

}  // namespace Sorvik::xmp
