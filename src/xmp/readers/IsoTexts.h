// SPDX-License-Identifier: MIT
// Text metadata of ISO base media files: QuickTime and 3GPP user data, item lists, and items with
// keys.
// Facts: QuickTime File Format, "User Data Atoms" and "Metadata"; 3GPP TS 26.244, clause 8.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "xmp/readers/IsoBoxes.h"

namespace Sorvik::xmp {

// Stores the facts of a 'udta' box, including its item lists. `packet` receives its XMP if it is
// empty.
void SetUserData(FileWindow& file, const IsoBox& udta, TXMPMeta& meta, std::string& packet);

// The items of a 'meta' box. The type of an item with a key is the index of its key, from 1.
struct MetaItems {
  std::vector<std::string> keys;
  std::optional<IsoBox> list;
};
MetaItems FindMetaItems(FileWindow& file, const IsoBox& metaBox);

// Stores the facts of the item list of a 'meta' box.
void SetMetaItems(FileWindow& file, const IsoBox& metaBox, TXMPMeta& meta);

}  // namespace Sorvik::xmp
