// SPDX-License-Identifier: MIT
// Listing cards whose clips are described by XML: the cost per clip must not grow with the number
// of clips. Essence files have a few bytes, so that only structure and XML are measured.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "foundation/platform/FileSystem.h"
#include "providers/cards/ProviderP2.h"
#include "providers/cards/ProviderXDCAM.h"
#include "providers/cards/ProviderXDCAMEX.h"
#include "providers/modern/ProviderDCIM.h"
#include "providers/modern/ProviderSonyXAVC.h"
#include "support/Cards.h"
#include "support/ModernCards.h"

namespace {

using namespace sorvik_test;
using Sorvik::FieldNameSet;

const FieldNameSet kExtra{"Name", "Path", "ExtraPath"};

std::string Numbered(const char* format, long number) {
  char text[32];
  std::snprintf(text, sizeof text, format, number);
  return text;
}

// Three of five clips belong to shots of three clips each.
void MakeP2(const TempTree& tree, long count) {
  MakeP2Card(tree, "card");
  long clip = 0;
  for (; clip + 2 < count * 3 / 5; clip += 3) {
    std::vector<std::string> ids;
    for (long i = 0; i < 3; ++i) ids.push_back(Numbered("%04ldAA", clip + i));
    for (const P2Clip& part : P2Shot(ids, Numbered("SHOT%04ld", clip))) {
      AddP2Clip(tree, "card", part);
    }
  }
  for (; clip < count; ++clip) AddP2Clip(tree, "card", {.id = Numbered("%04ldAA", clip)});
}

std::vector<SonyClip> SonyClips(long count) {
  std::vector<SonyClip> clips;
  for (long i = 0; i < count; ++i) clips.push_back({.name = Numbered("C%04ld", i)});
  return clips;
}
void MakeDisc(const TempTree& tree, long count) { MakeXDCAMDisc(tree, "card", SonyClips(count)); }
void MakeProav(const TempTree& tree, long count) { MakeXDCAMProav(tree, "card", SonyClips(count)); }

// Half of the clips are first parts of takes that continue on a missing card; there are five
// sibling cards.
void MakeEX(const TempTree& tree, long count) {
  std::vector<EXTake> takes;
  for (long i = 0; i < count; i += 2) {
    takes.push_back({.name = Numbered("T%04ld", i),
                     .clips = {Numbered("C%04ld", i), Numbered("MISSING%04ld", i)}});
  }
  MakeXDCAMEXCard(tree, "card", SonyClips(count), takes);
  for (const char* sibling : {"a", "b", "c", "d", "e"}) {
    MakeXDCAMEXCard(tree, sibling, {{.name = std::string("N") + sibling}});
  }
}

using Maker = void (*)(const TempTree&, long);

const TempTree& CardOf(Maker make, long count) {
  static std::map<std::pair<Maker, long>, std::unique_ptr<TempTree>> made;
  auto& tree = made[{make, count}];
  if (!tree) {
    tree = std::make_unique<TempTree>();
    make(*tree, count);
  }
  return *tree;
}

void List(benchmark::State& state, const Sorvik::Provider& provider, Maker make,
          const FieldNameSet& fields) {
  const std::string card = CardOf(make, state.range(0)).Path("card");
  for (auto _ : state) {
    const auto content = provider.GetContent(card, fields, nullptr);
    if (content.empty()) state.SkipWithError("no entries");
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

FieldNameSet DefaultsOf(const Sorvik::Provider& provider) {
  const auto list = provider.GetDefaultFieldList();
  return {list.begin(), list.end()};
}

void P2DefaultFields(benchmark::State& state) {
  const Sorvik::ProviderP2 provider;
  List(state, provider, MakeP2, DefaultsOf(provider));
}
void P2ExtraPaths(benchmark::State& state) { List(state, Sorvik::ProviderP2(), MakeP2, kExtra); }
void DiscDefaultFields(benchmark::State& state) {
  List(state, Sorvik::ProviderXDCAM(), MakeDisc, {"Name", "Path"});
}
void DiscExtraPaths(benchmark::State& state) {
  List(state, Sorvik::ProviderXDCAM(), MakeDisc, {"Name", "Path", "ExtraPath", "ProxyPath"});
}
void ProavExtraPaths(benchmark::State& state) {
  List(state, Sorvik::ProviderXDCAM(), MakeProav, kExtra);
}
void EXDefaultFields(benchmark::State& state) {
  List(state, Sorvik::ProviderXDCAMEX(), MakeEX, {"Name", "Path"});
}
void EXExtraPaths(benchmark::State& state) {
  List(state, Sorvik::ProviderXDCAMEX(), MakeEX, kExtra);
}
void MakeXAVC(const TempTree& tree, long count) {
  std::vector<sorvik_test::XAVCClip> clips;
  for (const auto& clip : SonyClips(count)) clips.push_back({.name = clip.name});
  MakeXAVCCard(tree, "card", sorvik_test::XAVCLayout::kM4Root, clips);
}
void XAVCNamesAndPaths(benchmark::State& state) {
  List(state, Sorvik::ProviderSonyXAVC(), MakeXAVC, {"Name", "Path"});
}
void XAVCExtraPaths(benchmark::State& state) {
  List(state, Sorvik::ProviderSonyXAVC(), MakeXAVC, {"Name", "Path", "ExtraPath", "ProxyPath"});
}

void MakeDCIM(const TempTree& tree, long count) {
  constexpr long kPerFolder = 900;
  for (long i = 0; i < count; ++i) {
    const std::string stem = "card/DCIM/" + Numbered("%03ldCANON", 100 + i / kPerFolder) +
                             Numbered("/IMG_%04ld", i % kPerFolder);
    tree.File(stem + ".CR3", "raw");
    tree.File(stem + ".JPG", "picture");
  }
}
void DCIMNamesAndPaths(benchmark::State& state) {
  List(state, Sorvik::ProviderDCIM(), MakeDCIM, {"Name", "Path"});
}
void DCIMExtraPaths(benchmark::State& state) {
  List(state, Sorvik::ProviderDCIM(), MakeDCIM, {"Name", "Path", "ExtraPath", "ProxyPath"});
}

// Lower bound of the P2 listings: lists the clip folder and reads each clip XML.
void PlainReads(benchmark::State& state) {
  const std::string clips = CardOf(MakeP2, state.range(0)).Path("card/CONTENTS/CLIP");
  for (auto _ : state) {
    const auto items = Sorvik::platform::ListFolder(clips);
    if (!items) return state.SkipWithError("no clips");
    for (const auto& item : *items) {
      benchmark::DoNotOptimize(Sorvik::platform::ReadHead(clips + "/" + item.name, 65536));
    }
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Sizes(benchmark::internal::Benchmark* bench) {
  bench->Arg(100)->Arg(1'000)->Unit(benchmark::kMillisecond);
}
BENCHMARK(PlainReads)->Apply(Sizes);
BENCHMARK(P2DefaultFields)->Apply(Sizes)->Arg(5'000);
BENCHMARK(P2ExtraPaths)->Apply(Sizes)->Arg(5'000);
BENCHMARK(DiscDefaultFields)->Apply(Sizes);
BENCHMARK(DiscExtraPaths)->Apply(Sizes);
BENCHMARK(ProavExtraPaths)->Apply(Sizes);
BENCHMARK(EXDefaultFields)->Apply(Sizes);
BENCHMARK(EXExtraPaths)->Apply(Sizes);
BENCHMARK(XAVCNamesAndPaths)->Apply(Sizes);
BENCHMARK(XAVCExtraPaths)->Apply(Sizes);
BENCHMARK(DCIMNamesAndPaths)->Apply(Sizes)->Arg(10'000);
BENCHMARK(DCIMExtraPaths)->Apply(Sizes)->Arg(10'000);

}  // namespace

BENCHMARK_MAIN();
