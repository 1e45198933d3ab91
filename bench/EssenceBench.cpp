// SPDX-License-Identifier: MIT
// Reading the fields of camera files, per file: MXF and AVCHD streams.
//
//   cmake --preset release -DSORVIK_BUILD_BENCH=ON && ninja -C build/release EssenceBench
//   bench/EssenceCompare.sh build/release/EssenceBench
//
// The script creates the clips with ffmpeg and compares this program with other readers. When run
// directly, this program reads the clips of the folder SORVIK_BENCH_CLIPS.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/metadata/XMPSupport.h"

namespace {

namespace fs = std::filesystem;
using Sorvik::XMPSupport::MakeValue;
using Sorvik::XMPSupport::XMPFieldBits;

std::vector<std::string> Clips(std::string_view extension) {
  std::vector<std::string> clips;
  const char* folder = std::getenv("SORVIK_BENCH_CLIPS");
  if (folder == nullptr) return clips;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.path().extension() == extension) clips.push_back(entry.path().string());
  }
  std::sort(clips.begin(), clips.end());
  return clips;
}

void ReadAll(benchmark::State& state, std::string_view extension, const XMPFieldBits& fields) {
  const auto clips = Clips(extension);
  if (clips.empty()) {
    state.SkipWithError("no clips in SORVIK_BENCH_CLIPS");
    return;
  }
  if (MakeValue(clips.front(), fields).empty()) {
    state.SkipWithError("a clip has no fields");
    return;
  }
  for (auto _ : state) {
    for (const auto& clip : clips) benchmark::DoNotOptimize(MakeValue(clip, fields));
  }
  const auto count = state.iterations() * static_cast<std::int64_t>(clips.size());
  state.SetItemsProcessed(count);
  state.counters["per_file"] = benchmark::Counter(
      static_cast<double>(count), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

XMPFieldBits AllFields() { return XMPFieldBits().set(); }
XMPFieldBits NoDuration() { return AllFields().reset(32).reset(33).reset(65); }

void MXF(benchmark::State& state) { ReadAll(state, ".mxf", AllFields()); }
void Streams(benchmark::State& state) { ReadAll(state, ".MTS", AllFields()); }
// Without the duration, the end of a stream isn't searched for time stamps.
void StreamsWithoutDuration(benchmark::State& state) { ReadAll(state, ".MTS", NoDuration()); }
BENCHMARK(MXF)->Unit(benchmark::kMillisecond);
BENCHMARK(Streams)->Unit(benchmark::kMillisecond);
BENCHMARK(StreamsWithoutDuration)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
