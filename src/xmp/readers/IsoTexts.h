// SPDX-License-Identifier: MIT
// The texts that ISO base media files hold about themselves: user data of QuickTime and 3GPP, item
// lists, and items with keys. Facts: QuickTime File Format, "User Data Atoms" and "Metadata";
// 3GPP TS 26.244, clause 8.
#pragma once

#include "xmp/readers/IsoBoxes.h"

namespace Sorvik::xmp {

// Stores what a 'udta' box tells, its item lists included. `packet` takes the XMP in it, unless it
// holds some already.
void SetUserData(FileWindow& file, const IsoBox& udta, TXMPMeta& meta, std::string& packet);

// Stores what the item list of a 'meta' box tells.
void SetMetaItems(FileWindow& file, const IsoBox& metaBox, TXMPMeta& meta);

}  // namespace Sorvik::xmp
