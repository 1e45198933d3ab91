// SPDX-License-Identifier: MIT
// The search for cards below a folder, next to a plain walk over all folders.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "ArchiveOfCards.h"
#include "SorvikProvider/cardtools/CardFinder.h"
#include "SorvikProvider/frame/ProviderHost.h"

namespace {

namespace fs = std::filesystem;
using sorvik_bench::ArchiveOfCards;
using sorvik_bench::kCards;

void FindAllCards(benchmark::State& state) {
  Sorvik::ProviderHost::Initialize();
  Sorvik::ProviderHost::RegisterAdditionalProviders();
  const std::string root = ArchiveOfCards().Root();
  for (auto _ : state) {
    const auto cards = FindCards(root, Sorvik::SearchDirection::kDeep);
    if (cards.size() != static_cast<std::size_t>(kCards)) state.SkipWithError("cards are missing");
  }
  Sorvik::ProviderHost::Shutdown();
}

void WalkAllFolders(benchmark::State& state) {
  const std::string root = ArchiveOfCards().Root();
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
