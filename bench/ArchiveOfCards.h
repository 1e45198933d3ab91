// SPDX-License-Identifier: MIT
// 10,000 cards of three kinds, as on an archive.
#pragma once

#include <benchmark/benchmark.h>

#include <string>

#include "support/LargeCards.h"
#include "support/ModernCards.h"
#include "support/TempTree.h"

namespace sorvik_bench {

using namespace sorvik_test;

inline constexpr long kCards = 10'000;
inline constexpr long kCardsPerFolder = 100;

// Cards of three kinds as on an archive: a hundred to a folder, each copied with its PRIVATE.
inline const TempTree& ArchiveOfCards() {
  static const TempTree tree;
  static const bool made = [] {
    for (long i = 0; i < kCards; ++i) {
      const std::string card = Number("day%03ld/", i / kCardsPerFolder) + Number("card%05ld", i);
      if (i % 3 == 0) {
        MakeP2(tree, card, 1);
      } else if (i % 3 == 1) {
        MakeAVCHD(tree, card + "/PRIVATE/AVCHD", 1);
      } else {
        MakeXAVCCard(tree, card + "/PRIVATE/M4ROOT", XAVCLayout::kM4Root, {{.name = "C0001"}});
      }
    }
    return true;
  }();
  benchmark::DoNotOptimize(made);
  return tree;
}

}  // namespace sorvik_bench
