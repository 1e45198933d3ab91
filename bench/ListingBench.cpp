// SPDX-License-Identifier: MIT
// Listing each structure with 10, 100 and 1,000 clips, with the default fields and with all files
// of each clip. `ListingBench make FOLDER CLIPS` only creates the cards, for counting system calls
// (bench/systemcalls.sh).
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>

#include "SorvikProvider/frame/ProviderHost.h"
#include "support/LargeCards.h"

namespace {

using namespace Sorvik;
using sorvik_test::CardMaker;

const std::string& CardOf(const CardMaker& maker, long clips) {
  static const sorvik_test::TempTree tree;
  static std::map<std::pair<std::string, long>, std::string> made;
  std::string& path = made[{maker.name, clips}];
  if (path.empty()) {
    // Each in a separate folder, because some providers search sibling folders.
    const std::string card = std::string(maker.name) + std::to_string(clips) + "/card";
    maker.make(tree, card, clips);
    path = tree.Path(card);
  }
  return path;
}

void List(benchmark::State& state, const CardMaker& maker, bool extraPaths) {
  const std::string& card = CardOf(maker, state.range(0));
  const ProviderWrapper* provider = ProviderHost::GetProviderList(card).front();
  const FieldNameList defaults = provider->GetDefaultFieldList();
  FieldNameSet fields(defaults.begin(), defaults.end());
  if (extraPaths) fields.insert(kExtraPathField);
  for (auto _ : state) {
    const ContentMap content = provider->GetContent(card, fields, nullptr);
    if (content.size() != static_cast<std::size_t>(state.range(0))) {
      state.SkipWithError("the listing is incomplete");
    }
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

int MakeCards(const std::string& folder, long clips) {
  const sorvik_test::TempTree tree;
  for (const CardMaker& maker : sorvik_test::kCardMakers) {
    maker.make(tree, std::string(maker.name) + "/card", clips);
  }
  std::filesystem::create_directories(folder);
  std::filesystem::copy(tree.Root(), folder, std::filesystem::copy_options::recursive);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && std::strcmp(argv[1], "make") == 0) {
    return MakeCards(argv[2], std::atol(argv[3]));
  }
  ProviderHost::Initialize();
  ProviderHost::RegisterAdditionalProviders();
  for (const CardMaker& maker : sorvik_test::kCardMakers) {
    for (const bool extraPaths : {false, true}) {
      const std::string name = std::string(maker.name) + (extraPaths ? "/ExtraPath" : "/defaults");
      benchmark::RegisterBenchmark(
          name.c_str(),
          [&maker, extraPaths](benchmark::State& state) { List(state, maker, extraPaths); })
          ->Arg(10)
          ->Arg(100)
          ->Arg(1000)
          ->Unit(benchmark::kMicrosecond);
    }
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  ProviderHost::Shutdown();
}
