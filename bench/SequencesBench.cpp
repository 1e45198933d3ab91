// SPDX-License-Identifier: MIT
// A folder of 100,000 frames: detection, listing, and the list of all frames compared with a plain
// readdir loop that builds the same list.
#include <benchmark/benchmark.h>
#include <dirent.h>

#include <cstdio>
#include <string>
#include <vector>

#include "SorvikProvider/frame/ProviderHost.h"
#include "foundation/CallScope.h"
#include "providers/sequences/ProviderARRIRAW.h"
#include "providers/sequences/ProviderCanonRAW.h"
#include "providers/sequences/ProviderCinemaDNG.h"
#include "support/TempTree.h"

namespace {

using namespace Sorvik;

constexpr long kFrames = 100'000;

const std::string& Frames() {
  static const sorvik_test::TempTree tree;
  static const bool made = [] {
    for (long i = 0; i < kFrames; ++i) {
      char name[64];
      // In unsorted order, as in a real file system.
      std::snprintf(name, sizeof(name), "A001C001_150824_R1AB.%07ld.ari", i * 7919 % kFrames);
      tree.File(name);
    }
    return true;
  }();
  static_cast<void>(made);
  return tree.Root();
}

void PlainWalkAndList(benchmark::State& state) {
  const std::string& root = Frames();
  for (auto _ : state) {
    std::vector<any_regular_t> list;
    DIR* folder = opendir(root.c_str());
    while (const dirent* entry = readdir(folder)) list.emplace_back(root + "/" + entry->d_name);
    closedir(folder);
    benchmark::DoNotOptimize(list);
  }
}
BENCHMARK(PlainWalkAndList)->Unit(benchmark::kMillisecond);

void Detection(benchmark::State& state) {
  const std::string& root = Frames();
  const ProviderARRIRAW arri;
  const ProviderCinemaDNG dng;
  const ProviderCanonRAW canon;
  for (auto _ : state) {
    const foundation::CallScope scope;  // as in GetProviderList
    benchmark::DoNotOptimize(arri.CanProvideFor(root) + dng.CanProvideFor(root) +
                             canon.CanProvideFor(root));
  }
}
BENCHMARK(Detection)->Unit(benchmark::kMillisecond);

void Listing(benchmark::State& state, const FieldNameSet& fields) {
  const std::string& root = Frames();
  const ProviderARRIRAW arri;
  for (auto _ : state) benchmark::DoNotOptimize(arri.GetContent(root, fields, nullptr));
}
BENCHMARK_CAPTURE(Listing, Names, FieldNameSet{"Name", "Path"})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Listing, ExtraPath, FieldNameSet{"Name", "Path", "ExtraPath"})
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
