// SPDX-License-Identifier: MIT
// One made card of every structure that the library knows, each below a folder of its own.
#pragma once

#include <string>
#include <vector>

#include "support/TempTree.h"

namespace sorvik_test {

struct MadeCard {
  std::string root;        // full path
  std::string providerId;  // the structure's provider
};

// Makes them all below `tree`. Essence files hold a few bytes, clip records are real.
std::vector<MadeCard> MakeAllCards(const TempTree& tree);

}  // namespace sorvik_test
