// SPDX-License-Identifier: MIT
// Files for libraries that need all bytes in memory.
#pragma once

#include <vector>

namespace frame {

// Returns all bytes of the open file; none if it has more than 256 MiB.
std::vector<char> ReadContents(int descriptor);

}  // namespace frame
