// SPDX-License-Identifier: MIT
// Whether something that a structure names is there: a regular file or a folder, after links. What
// is neither is never opened and never reported. Any thread.
#pragma once

#include <string_view>

#include "SorvikProvider/foundation/UTF16String.h"

namespace Sorvik::foundation {

using Hestra::UTF16String;

enum class Lookup {
  kDisk,     // for a single question: asks the disk
  kListing,  // for many about few folders: lists each folder once within a call scope
};

bool IsPresent(const UTF16String& path, Lookup lookup);

// True if `path` lies below `folder` once both are normalised. By text alone; for paths
// that a file on a card names, which must not lead off the card.
bool IsWithin(std::u16string_view path, std::u16string_view folder);

}  // namespace Sorvik::foundation
