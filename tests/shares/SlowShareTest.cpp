// SPDX-License-Identifier: MIT
// Listings of cards where every access takes some milliseconds: the same entries, while other
// threads make most of the accesses.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <limits>

#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/frame/ProviderWrapper.h"
#include "foundation/ReadAhead.h"
#include "foundation/platform/AccessTimes.h"
#include "providers/cards/ProviderP2.h"
#include "support/LargeCards.h"
#include "support/TestShare.h"

namespace {

using namespace sorvik_test;
using namespace std::chrono_literals;
using Sorvik::ContentMap;
using Sorvik::foundation::ReadAheadThreads;
using Sorvik::platform::CountAccesses;
using Sorvik::platform::SetAccessDelay;

constexpr long kClips = 100;

class SlowCard : public testing::TestWithParam<CardMaker> {
 protected:
  static void SetUpTestSuite() {
    Sorvik::ProviderHost::Initialize();
    Sorvik::ProviderHost::RegisterAdditionalProviders();
  }
  static void TearDownTestSuite() { Sorvik::ProviderHost::Shutdown(); }
  void SetUp() override { GetParam().make(tree_, "card", kClips); }
  void TearDown() override { ReadAheadThreads::SetEnabled(true); }

  struct Listing {
    ContentMap content;
    std::size_t accesses = 0;  // of the calling thread
  };

  Listing List(bool readAhead) {
    ReadAheadThreads::SetEnabled(readAhead);
    const std::string card = tree_.Path("card");
    const auto* provider = Sorvik::ProviderHost::GetProviderList(card).front();
    const auto defaults = provider->GetDefaultFieldList();
    Sorvik::FieldNameSet fields(defaults.begin(), defaults.end());
    fields.insert(Sorvik::kExtraPathField);
    SetAccessDelay(2ms);
    Listing listing;
    Sorvik::platform::ResetAccessTimes();
    listing.content = provider->GetContent(card, fields, nullptr);
    listing.accesses = CountAccesses();
    SetAccessDelay(0ms);
    ReadAheadThreads::WaitForAll();
    return listing;
  }

  TempTree tree_;
};

TEST_P(SlowCard, IsReadByOtherThreadsWithTheSameEntries) {
  const Listing single = List(false);
  const Listing overlapped = List(true);
  EXPECT_EQ(single.content.size(), static_cast<std::size_t>(kClips));
  EXPECT_TRUE(overlapped.content == single.content);
  EXPECT_LT(overlapped.accesses, single.accesses / 2);
}

std::string NameOf(const testing::TestParamInfo<CardMaker>& info) {
  std::string name = info.param.name;
  std::erase_if(name, [](char c) { return c == '-' || c == '_'; });
  return name;
}

// The first one is a plain folder, which has no files to read.
INSTANTIATE_TEST_SUITE_P(Cards, SlowCard,
                         testing::ValuesIn(std::begin(kCardMakers) + 1, std::end(kCardMakers)),
                         NameOf);

class LinksToSlowShare : public ShareTest {
 protected:
  struct Listing {
    ContentMap content;
    long calls = 0;
  };

  Listing List(bool readAhead) {
    ReadAheadThreads::SetEnabled(readAhead);
    share_.BlockAt(std::numeric_limits<long>::max());  // counts from here
    Listing listing;
    listing.content = Sorvik::AsyncProviderWrapper(new Sorvik::ProviderP2)
                          .GetContent(tree_.Path("card"), {"Name", "startTimecode"}, nullptr);
    listing.calls = share_.Calls();
    ReadAheadThreads::WaitForAll();
    ReadAheadThreads::SetEnabled(true);
    return listing;
  }
};

// Reading ahead accesses no other share than that of the listed path.
TEST_F(LinksToSlowShare, AreLeftToTheCaller) {
  constexpr std::size_t kCount = 12;
  MakeP2(tree_, "card", kCount);
  const std::string clips = tree_.Path("card/CONTENTS/CLIP");
  std::filesystem::rename(clips, tree_.Path("server/CLIP"));
  std::filesystem::create_directory(clips);
  for (const auto& file : std::filesystem::directory_iterator(tree_.Path("server/CLIP"))) {
    const std::string name = file.path().filename();
    std::filesystem::create_symlink(tree_.Path("share/CLIP/" + name), clips + "/" + name);
  }
  share_.SetDelay(1ms);
  Listing single;
  Listing overlapped;
  // On a busy machine the share may exceed the time that it has to answer.
  const auto isComplete = [&] {
    return single.content.size() == kCount && overlapped.content.size() == kCount &&
           single.calls == overlapped.calls;
  };
  for (int run = 0; run < 10 && !isComplete(); ++run) {
    single = List(false);
    overlapped = List(true);
  }
  EXPECT_EQ(single.content.size(), kCount);
  EXPECT_TRUE(overlapped.content == single.content);
  EXPECT_EQ(overlapped.calls, single.calls);
}

}  // namespace
