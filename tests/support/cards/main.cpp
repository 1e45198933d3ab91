// SPDX-License-Identifier: MIT
// Makes cards for tests in other languages. Prints a line "PROVIDER PATH" for each and an empty
// line, waits for the end of its input, and removes them.
#include <iostream>

#include "support/BindingCards.h"

int main() {
  const sorvik_test::TempTree tree;
  for (const auto& card : sorvik_test::MakeBindingCards(tree)) {
    std::cout << card.providerId << ' ' << card.root << '\n';
  }
  std::cout << std::endl;
  std::cin.ignore();
}
