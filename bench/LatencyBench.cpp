// SPDX-License-Identifier: MIT
// Listing each structure where every access takes longer, with and without reading ahead.
//   LatencyBench [CLIPS [MILLISECONDS]]
// Prints milliseconds per clip.
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "SorvikProvider/frame/ProviderHost.h"
#include "foundation/ReadAhead.h"
#include "foundation/platform/AccessTimes.h"
#include "support/LargeCards.h"

namespace {

using namespace sorvik_test;
using Sorvik::foundation::ReadAheadThreads;
using Sorvik::platform::SetAccessDelay;

// Returns milliseconds.
double List(const std::string& card, std::chrono::microseconds delay, bool readAhead) {
  ReadAheadThreads::SetEnabled(readAhead);
  const auto* provider = Sorvik::ProviderHost::GetProviderList(card).front();
  const auto fields = provider->GetDefaultFieldList();
  SetAccessDelay(delay);
  const auto start = std::chrono::steady_clock::now();
  provider->GetContent(card, {fields.begin(), fields.end()}, nullptr);
  const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
  SetAccessDelay(std::chrono::microseconds(0));
  return time.count();
}

}  // namespace

int main(int argc, char** argv) {
  const long clips = argc > 1 ? std::atol(argv[1]) : 100;
  const std::chrono::microseconds delay(argc > 2 ? std::atol(argv[2]) * 1000 : 5000);
  Sorvik::ProviderHost::Initialize();
  Sorvik::ProviderHost::RegisterAdditionalProviders();
  const TempTree tree;
  std::printf("%-14s %10s %10s %8s\n", "structure", "single", "ahead", "ratio");
  for (const CardMaker& maker : kCardMakers) {
    const std::string card = std::string(maker.name) + "/card";
    maker.make(tree, card, clips);
    const double single = List(tree.Path(card), delay, false);
    const double ahead = List(tree.Path(card), delay, true);
    const auto count = static_cast<double>(clips);
    std::printf("%-14s %10.2f %10.2f %8.3f\n", maker.name, single / count, ahead / count,
                ahead / single);
    std::fflush(stdout);
  }
  Sorvik::ProviderHost::Shutdown();
}
