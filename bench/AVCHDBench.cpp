// SPDX-License-Identifier: MIT
// Listing an AVCHD card, compared with plain reading of its files: the cost per clip must not grow
// with the number of clips or playlists. The stream files are empty, except for the benchmark of
// the default fields, where each is the beginning of a camera file.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "foundation/platform/FileSystem.h"
#include "providers/structures/ProviderAVCHD.h"
#include "support/AvchdCard.h"

namespace {

using sorvik_test::AvchdCard;
using sorvik_test::PlayItemOf;

std::string Numbered(long number) {
  char text[24];
  std::snprintf(text, sizeof text, "%05ld", number);
  return text;
}

// Shots of one clip, spread evenly over the playlists.
class Card {
 public:
  Card(long shots, long playlists, const std::string& stream) : card_(tree_) {
    std::vector<std::vector<PlayItemOf>> lists(static_cast<std::size_t>(playlists));
    for (long shot = 0; shot < shots; ++shot) {
      card_.Clips({Numbered(shot)});
      if (!stream.empty()) card_.File("STREAM/" + Numbered(shot) + ".MTS", stream);
      lists[static_cast<std::size_t>(shot * playlists / shots)].push_back({Numbered(shot)});
    }
    for (long i = 0; i < playlists; ++i) {
      card_.Playlist(Numbered(i), lists[static_cast<std::size_t>(i)]);
    }
  }
  const AvchdCard& operator*() const { return card_; }

  static const AvchdCard& Of(const benchmark::State& state, const std::string& stream = {}) {
    static std::map<std::tuple<long, long, std::string>, std::unique_ptr<Card>> made;
    auto& card = made[{state.range(0), state.range(1), stream}];
    if (!card) card = std::make_unique<Card>(state.range(0), state.range(1), stream);
    return **card;
  }

 private:
  sorvik_test::TempTree tree_;
  AvchdCard card_;
};

void List(benchmark::State& state, const Sorvik::FieldNameSet& fields,
          const std::string& stream = {}) {
  const AvchdCard& card = Card::Of(state, stream);
  const Sorvik::ProviderAVCHD provider;
  for (auto _ : state) {
    const auto content = provider.GetContent(card.Root(), fields, nullptr);
    if (content.size() != static_cast<std::size_t>(state.range(0))) state.SkipWithError("entries");
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
void ListPaths(benchmark::State& state) { List(state, {"Name", "Path"}); }
void ListExtraPaths(benchmark::State& state) { List(state, {"Name", "Path", "ExtraPath"}); }
void ListDefaultFields(benchmark::State& state) {
  const auto stream = sorvik_test::ReadSample("avchd/M2TS.mts");
  if (!stream) return state.SkipWithError("samples not found");
  const auto list = Sorvik::ProviderAVCHD().GetDefaultFieldList();
  List(state, {list.begin(), list.end()}, *stream);
}

// Lower bound: lists the card's three folders and reads each playlist once.
void PlainReads(benchmark::State& state) {
  const AvchdCard& card = Card::Of(state);
  for (auto _ : state) {
    for (const char* folder : {"STREAM", "CLIPINF"}) {
      benchmark::DoNotOptimize(Sorvik::platform::ListFolder(card.Path(folder)));
    }
    const std::string playlists = card.Path("PLAYLIST");
    const auto items = Sorvik::platform::ListFolder(playlists);
    for (const auto& item : *items) {
      benchmark::DoNotOptimize(Sorvik::platform::ReadHead(playlists + "/" + item.name, 1 << 20));
    }
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Detect(benchmark::State& state) {
  const AvchdCard& card = Card::Of(state);
  const Sorvik::ProviderAVCHD provider;
  for (auto _ : state) benchmark::DoNotOptimize(provider.CanProvideFor(card.Root()));
}

#define CARDS Args({100, 30})->Args({999, 30})->Args({999, 300})->Unit(benchmark::kMicrosecond)
BENCHMARK(PlainReads)->CARDS;
BENCHMARK(ListPaths)->CARDS->Args({9999, 10'000});
BENCHMARK(ListExtraPaths)->CARDS;
BENCHMARK(ListDefaultFields)->CARDS;
BENCHMARK(Detect)->CARDS;

}  // namespace

BENCHMARK_MAIN();
