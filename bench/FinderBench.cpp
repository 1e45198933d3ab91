// SPDX-License-Identifier: MIT
// The search for cards below a folder, next to a plain walk over all folders.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "LargeCards.h"
#include "SorvikProvider/cardtools/CardFinder.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "support/ModernCards.h"
#include "support/TempTree.h"

namespace {

namespace fs = std::filesystem;
using sorvik_bench::Number;
using sorvik_test::TempTree;

constexpr long kCards = 10'000;
constexpr long kCardsPerFolder = 100;

// Cards of three kinds as on an archive: a hundred to a folder, each copied with its PRIVATE.
const TempTree& Archive() {
  static const TempTree tree;
  static const bool made = [] {
    for (long i = 0; i < kCards; ++i) {
      const std::string card = Number("day%03ld/", i / kCardsPerFolder) + Number("card%05ld", i);
      if (i % 3 == 0) {
        sorvik_bench::MakeP2(tree, card, 1);
      } else if (i % 3 == 1) {
        sorvik_bench::MakeAVCHD(tree, card + "/PRIVATE/AVCHD", 1);
      } else {
        sorvik_test::MakeXAVCCard(tree, card + "/PRIVATE/M4ROOT", sorvik_test::XAVCLayout::kM4Root,
                                  {{.name = "C0001"}});
      }
    }
    return true;
  }();
  benchmark::DoNotOptimize(made);
  return tree;
}

void FindAllCards(benchmark::State& state) {
  Sorvik::ProviderHost::Initialize();
  Sorvik::ProviderHost::RegisterAdditionalProviders();
  const std::string root = Archive().Root();
  for (auto _ : state) {
    const auto cards = FindCards(root, Sorvik::SearchDirection::kDeep);
    if (cards.size() != static_cast<std::size_t>(kCards)) state.SkipWithError("cards are missing");
  }
  Sorvik::ProviderHost::Shutdown();
}

void WalkAllFolders(benchmark::State& state) {
  const std::string root = Archive().Root();
  for (auto _ : state) {
    std::size_t folders = 0;
    for (const auto& entry : fs::recursive_directory_iterator(root))
      folders += entry.is_directory();
    benchmark::DoNotOptimize(folders);
  }
}

BENCHMARK(WalkAllFolders)->Unit(benchmark::kMillisecond);
BENCHMARK(FindAllCards)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
