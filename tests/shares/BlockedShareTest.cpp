// SPDX-License-Identifier: MIT
// Listings of a share whose server stops answering in the middle: each is aborted in time, other
// requests are answered, and nothing is left once the server answers again.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "SorvikProvider/cardtools/CardFinder.h"
#include "filesystem/WinProviderVolume.h"
#include "foundation/ReadAhead.h"
#include "support/BlockedListing.h"
#include "support/LargeCards.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using namespace std::chrono_literals;

// A message is due 100 ms after the abort. The test allows for a busy machine; BlockedShareBench
// measures every call of the listings.
constexpr double kMaxMilliseconds = 1000;

bool Eventually(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + 10s;
  while (!condition() && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(5ms);
  return condition();
}

class BlockedShare : public ShareTest {
 protected:
  void SetUp() override {
    if (!share_) GTEST_SKIP() << share_.Reason();
    ProviderHost::Initialize();
    isInitialized_ = true;
    tree_.File("folder/local.mov");
  }
  void TearDown() override {
    if (!isInitialized_) return;
    share_.Lift();
    ProviderHost::Shutdown();
    while (Hestra::StationUtils::Dispatch() > 0) {
    }
  }

  // Aborts listings of "card" at some of their calls.
  void AbortAtSomeCalls(const std::string& identification) {
    const ProviderWrapper& provider = ProviderNamed(identification);
    const std::string card = tree_.Path("share/card");
    const std::string folder = tree_.Path("folder");
    // What the process opens once.
    AbortBlockedListing(share_, provider, card, 1, folder);
    EXPECT_TRUE(Eventually([] { return ProviderHost::GetStalledWorkerCount() == 0; }));
    const ProcessUse before = ProcessUse::Now();
    for (const long call : {1, 2, 3, 5, 8, 13, 21, 34, 55, 89}) {
      const AbortTimes times = AbortBlockedListing(share_, provider, card, call, folder);
      EXPECT_TRUE(times.blocked) << "call " << call;
      EXPECT_TRUE(times.isAborted) << "call " << call;
      EXPECT_LT(times.message, kMaxMilliseconds) << "call " << call;
      EXPECT_GE(times.other, 0) << "call " << call;
    }
    EXPECT_TRUE(Eventually([] { return ProviderHost::GetStalledWorkerCount() == 0; }));
    ProcessUse after = before;
    EXPECT_TRUE(Eventually([&] {
      after = ProcessUse::Now();
      return after.threads <= before.threads && after.files <= before.files;
    })) << after.threads - before.threads
        << " threads, " << after.files - before.files << " files";
  }

  bool isInitialized_ = false;
};

TEST_F(BlockedShare, AbortsListingsOfP2) {
  MakeP2(tree_, "server/card", 20);
  AbortAtSomeCalls("com.halvane.Merisk.ProviderP2");
}

TEST_F(BlockedShare, AbortsListingsOfAVCHD) {
  MakeAVCHD(tree_, "server/card", 20);
  AbortAtSomeCalls("com.halvane.Merisk.ProviderAVCHD");
}

// Overlapped reads: the threads are stuck, too.
TEST_F(BlockedShare, AbortsSlowListings) {
  MakeP2(tree_, "server/card", 100);
  share_.SetDelay(2ms);
  AbortAtSomeCalls("com.halvane.Merisk.ProviderP2");
}

// More requests than the executor has workers at the beginning.
TEST_F(BlockedShare, AbortedListingsLeaveWorkersForOthers) {
  MakeP2(tree_, "server/card", 2);
  share_.BlockAt(1);
  const ProviderWrapper& provider = ProviderNamed("com.halvane.Merisk.ProviderP2");
  Inbox<GetContentMessage> inbox("dead");
  std::vector<Hestra::InterfaceRef<ProviderContentRequest, Hestra::IThreadedQueueRequest>> sent;
  for (int i = 0; i < 8; ++i) {
    sent.push_back(provider.RequestContent(tree_.Path("share/card"), {"Name"}, "dead"));
  }
  ASSERT_TRUE(Eventually([&] { return share_.Calls() > 0; }));
  for (const auto& request : sent) request->Abort();
  EXPECT_TRUE(inbox.WaitFor(8));
  Inbox<GetProviderListMessage> healthy("healthy");
  for (int i = 0; i < 8; ++i) {
    ProviderHost::RequestProviderList(tree_.Path("folder"), "healthy");
  }
  ASSERT_TRUE(healthy.WaitFor(8));
  for (const auto& message : healthy.messages) EXPECT_EQ(message.result, kResultDone);
}

TEST_F(BlockedShare, AbortsASearchForCards) {
  MakeP2(tree_, "server/a/card", 1);
  share_.BlockAt(4);
  Inbox<FindCardsMessage> inbox("search");
  const auto request =
      ProviderHost::RequestCards(tree_.Path("share"), SearchDirection::kDeep, "search");
  ASSERT_TRUE(Eventually([&] { return share_.Calls() >= 4; }));
  const auto start = std::chrono::steady_clock::now();
  request->Abort();
  ASSERT_TRUE(inbox.WaitFor(1));
  const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
  EXPECT_LT(time.count(), kMaxMilliseconds);
  EXPECT_TRUE(inbox.messages.back().isLast);
  EXPECT_EQ(inbox.messages.back().result, kResultAborted);
}

// The program that shows a desktop session's shares may hang.
TEST(DesktopShares, AreListedAsVolumesUnlessTheirMountHangs) {
  TempTree tree;
  tree.Folder("server/smb-share:server=nas,share=cards");
  TestShare session(tree.Path("server"), tree.Folder("gvfs"), "gvfsd-fuse");
  if (!session) GTEST_SKIP() << session.Reason();
  const std::string share = tree.Path("gvfs/smb-share:server=nas,share=cards");
  const WinProviderVolume volumes;
  ContentMap content;
  const auto list = [&] { content = volumes.GetContent("volumes:", {"Name"}, nullptr); };
  ASSERT_TRUE(Eventually([&] {
    list();
    return content.contains(share);
  }));
  EXPECT_EQ(content.at(share).at("Name").cast<std::string>(), "smb://nas/cards");
  session.Stop();
  const auto time = session.Milliseconds(list);
  EXPECT_GE(time, 0) << "waits for the mount";
  EXPECT_LT(time, 3000);
  EXPECT_FALSE(content.contains(share));
  EXPECT_TRUE(content.contains("/"));
}

}  // namespace
