// SPDX-License-Identifier: MIT
// The time from an abort to the message for every call at which the server of a share can stop
// answering during a listing. Needs FUSE.
//   BlockedShareBench [CLIPS]
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "support/BlockedListing.h"
#include "support/LargeCards.h"

namespace {

using namespace sorvik_test;

struct Listed {
  const char* name;
  const char* identification;
  void (*make)(const TempTree& tree, const std::string& card, long clips);
};

constexpr Listed kListings[] = {
    {"P2", "com.halvane.Merisk.ProviderP2", MakeP2},
    {"AVCHD", "com.halvane.Merisk.ProviderAVCHD", MakeAVCHD},
    {"directory", "com.halvane.Merisk.WinProviderDirectory", MakeFolder},
};

double Percentile(std::vector<double> times, double part) {
  std::ranges::sort(times);
  const auto index = static_cast<std::size_t>(part * static_cast<double>(times.size() - 1));
  return times.empty() ? 0 : times[index];
}

bool Measure(const Listed& listed, long clips) {
  const TempTree tree;
  listed.make(tree, "server/card", clips);
  tree.File("folder/local.mov");
  TestShare share(tree.Path("server"), tree.Folder("share"));
  if (!share) return false;
  const auto& provider = ProviderNamed(listed.identification);
  std::vector<double> messages;
  std::vector<double> others;
  long unanswered = 0;
  const ProcessUse before = ProcessUse::Now();
  for (long call = 1;; ++call) {
    const AbortTimes times =
        AbortBlockedListing(share, provider, tree.Path("share/card"), call, tree.Path("folder"));
    if (!times.blocked) break;
    if (!times.isAborted || times.other < 0) ++unanswered;
    messages.push_back(times.message);
    others.push_back(times.other);
  }
  std::this_thread::sleep_for(std::chrono::seconds(1));
  const ProcessUse after = ProcessUse::Now();
  std::printf(
      "%-10s %6zu calls  message p50 %6.1f p99 %6.1f max %6.1f ms  other p99 %6.1f ms"
      "  unanswered %ld  threads %+ld files %+ld\n",
      listed.name, messages.size(), Percentile(messages, 0.5), Percentile(messages, 0.99),
      Percentile(messages, 1), Percentile(others, 0.99), unanswered, after.threads - before.threads,
      after.files - before.files);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const long clips = argc > 1 ? std::atol(argv[1]) : 20;
  Sorvik::ProviderHost::Initialize();
  for (const Listed& listed : kListings) {
    if (Measure(listed, clips)) continue;
    std::fprintf(stderr, "this machine doesn't allow a FUSE mount\n");
    return 1;
  }
  Sorvik::ProviderHost::Shutdown();
}
