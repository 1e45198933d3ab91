// SPDX-License-Identifier: MIT
// The catalogue of 10,000 cards: all of them, and again with nothing changed. "memory" is the
// growth of the process in MB.
#include <benchmark/benchmark.h>

#include <fstream>
#include <memory>
#include <string>

#include "ArchiveOfCards.h"
#include "SorvikProvider/cardtools/Catalogue.h"
#include "SorvikProvider/frame/ProviderHost.h"

namespace {

using Sorvik::CatalogueOptions;
using Sorvik::CatalogueResult;

double MegabytesInUse() {
  std::ifstream status("/proc/self/statm");
  double total = 0;
  double resident = 0;
  status >> total >> resident;
  constexpr double kPagesPerMegabyte = 256;
  return resident / kPagesPerMegabyte;
}

CatalogueResult Write(const CatalogueOptions& options, std::ostream& out) {
  return Sorvik::WriteCatalogue({sorvik_bench::ArchiveOfCards().Root()}, options,
                                [&out](std::string_view line) {
                                  out << line;
                                  return true;
                                });
}

// range(0): the number of jobs; range(1): whether an earlier catalogue is used.
void CatalogueAllCards(benchmark::State& state) {
  Sorvik::ProviderHost::Initialize();
  Sorvik::ProviderHost::RegisterAdditionalProviders();
  const sorvik_test::TempTree tree;
  const std::string old = tree.Path("old.ndjson");
  CatalogueOptions options;
  options.jobs = static_cast<std::size_t>(state.range(0));
  if (state.range(1) != 0) {
    std::ofstream file(old);
    Write(options, file);
    file.close();
    options.since = Sorvik::CatalogueIndex::Open(old);
  }
  const double before = MegabytesInUse();
  CatalogueResult result;
  for (auto _ : state) {
    std::ofstream out("/dev/null");
    result = Write(options, out);
  }
  state.counters["memory"] = MegabytesInUse() - before;
  state.counters["cards"] = static_cast<double>(result.cards);
  state.counters["copied"] = static_cast<double>(result.copiedCards);
  Sorvik::ProviderHost::Shutdown();
}

BENCHMARK(CatalogueAllCards)
    ->ArgNames({"jobs", "since"})
    ->Args({1, 0})
    ->Args({4, 0})
    ->Args({1, 1})
    ->Args({4, 1})
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
