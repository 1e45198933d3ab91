// SPDX-License-Identifier: MIT
// Which folders next to a card may be accessed.
#pragma once

#include <string>

namespace Sorvik {

// Returns false for a folder next to the card at `card` that is, or is a symbolic link to, a folder
// on a share other than the card's own: an unreachable server must not block a listing. Both paths
// are normalized. Any thread.
bool CanAccessWithoutBlocking(const std::string& neighbour, const std::string& card);

}  // namespace Sorvik
