// SPDX-License-Identifier: MIT
// Which places beside a card may be looked at.
#pragma once

#include "SorvikProvider/foundation/UTF16String.h"

namespace Sorvik {

// False for a folder beside the card at `card` that lies on a network mount other than the card's
// own: a server that is gone must not hold a listing. Both are normalised paths; goes by the mount
// table alone.
bool MayLookAt(const Hestra::UTF16String& neighbour, const Hestra::UTF16String& card);

}  // namespace Sorvik
