// SPDX-License-Identifier: MIT
// A synthetic card of every supported structure, each in its own folder.
#pragma once

#include <string>
#include <vector>

#include "support/TempTree.h"

namespace sorvik_test {

struct MadeCard {
  std::string root;        // full path
  std::string providerId;  // the structure's provider
};

// Creates all cards in `tree`. Essence files have a few bytes, clip records are valid.
std::vector<MadeCard> MakeAllCards(const TempTree& tree);

}  // namespace sorvik_test
