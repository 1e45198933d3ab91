// SPDX-License-Identifier: MIT
// The cards of which C++, C and Python must give the same answers.
#pragma once

#include <vector>

#include "support/AllCards.h"
#include "support/ModernCards.h"
#include "support/TempTree.h"

namespace sorvik_test {

// A card of every structure, and a plain folder.
inline std::vector<MadeCard> MakeBindingCards(const TempTree& tree) {
  std::vector<MadeCard> cards = MakeAllCards(tree);
  MakeXAVCCard(tree, "M4ROOT", XAVCLayout::kM4Root, {{.name = "C0001"}, {.name = "C0002"}});
  cards.push_back({tree.Path("M4ROOT"), "com.halvane.Merisk.ProviderSonyXAVC"});
  MakeCanonFlatCard(tree, "flat", {"A001C001_1.CRM", "A001C002_1.CRM"});
  cards.push_back({tree.Path("flat"), "com.halvane.Merisk.ProviderCanonXFAVC"});
  tree.File("folder/a.txt", "12345");
  tree.File("folder/caf\xE9.txt");  // not UTF-8
  tree.Folder("folder/b");
  cards.push_back({tree.Path("folder"), "com.halvane.Merisk.WinProviderDirectory"});
  return cards;
}

}  // namespace sorvik_test
