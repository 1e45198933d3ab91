// SPDX-License-Identifier: MIT
// The folder listing of foundation, compared with a plain readdir loop.
#include <benchmark/benchmark.h>
#include <dirent.h>

#include <cstdio>
#include <string>
#include <vector>

#include "foundation/platform/FileSystem.h"
#include "foundation/tarnwick/Text.h"
#include "support/TempTree.h"

namespace {

const sorvik_test::TempTree& Frames(long count) {
  static const sorvik_test::TempTree tree;
  static long made = 0;
  for (; made < count; ++made) {
    char name[64];
    // In unsorted order, as in a real file system.
    std::snprintf(name, sizeof(name), "A001C001_150824_R1AB.%07ld.ari", made * 7919 % count);
    tree.File(name);
  }
  return tree;
}

void PlainWalk(benchmark::State& state) {
  const std::string& root = Frames(state.range(0)).Root();
  for (auto _ : state) {
    DIR* folder = opendir(root.c_str());
    long items = 0;
    while (readdir(folder) != nullptr) ++items;
    closedir(folder);
    benchmark::DoNotOptimize(items);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(PlainWalk)->Arg(100'000)->Unit(benchmark::kMillisecond);

void ListFolder(benchmark::State& state) {
  const std::string& root = Frames(state.range(0)).Root();
  for (auto _ : state) benchmark::DoNotOptimize(Sorvik::platform::ListFolder(root));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(ListFolder)->Arg(100'000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
