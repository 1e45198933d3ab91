// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <optional>

#include "SorvikProvider/cardtools/CardFinder.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "support/AllCards.h"
#include "support/AvchdCard.h"
#include "support/Cards.h"
#include "support/RealMount.h"
#include "support/TempTree.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

class CardFinder : public testing::Test {
 protected:
  void SetUp() override { ProviderHost::Initialize(); }
  void TearDown() override { ProviderHost::Shutdown(); }

  // The found roots, relative to the tree, with the class of the provider.
  std::vector<std::string> Find(const std::string& start,
                                SearchDirection direction = SearchDirection::kDeep) const {
    std::vector<std::string> found;
    for (const FoundCard& card : FindCards(tree_.Path(start), direction)) {
      EXPECT_TRUE(card.path.starts_with(tree_.Root())) << card.path;
      const std::string relative =
          card.path == tree_.Root() ? "." : card.path.substr(tree_.Root().size() + 1);
      found.push_back(relative + " " +
                      card.identification.substr(card.identification.rfind('.') + 1 + 8));
    }
    return found;
  }

  void MakeAvchd(const std::string& folder) const { AvchdCard(tree_, folder).Clips({"00000"}); }

  const TempTree tree_;
};

TEST_F(CardFinder, FindsEachStructureFromItsRootAndFromAbove) {
  std::vector<std::string> expected;
  for (const MadeCard& card : MakeAllCards(tree_)) {
    const auto cards = FindCards(card.root, SearchDirection::kNearby);
    ASSERT_EQ(cards.size(), 1u) << card.root;
    EXPECT_EQ(cards.front().path, card.root);
    EXPECT_EQ(cards.front().identification, card.providerId);
    EXPECT_GE(cards.front().score, 40);
    expected.push_back(card.root);
  }
  std::vector<std::string> found;
  for (const FoundCard& card : FindCards(tree_.Root(), SearchDirection::kDeep)) {
    found.push_back(card.path);
  }
  EXPECT_THAT(found, testing::UnorderedElementsAreArray(expected));
}

TEST_F(CardFinder, FindsCardsOfAMediumFromTheRootFromAboveAndFromInside) {
  MakeXDCAMEXCard(tree_, "sd/PRIVATE/JVC", {{"A_01"}});
  MakeAvchd("sd/private/AVCHD");
  MakeAvchd("sd/archive/2020/PRIVATE/AVCHD");
  const std::vector<std::string> nearby{"sd/PRIVATE/JVC XDCAMEX", "sd/private/AVCHD AVCHD"};
  EXPECT_EQ(Find("sd", SearchDirection::kNearby), nearby);
  EXPECT_THAT(Find("", SearchDirection::kNearby), IsEmpty()) << "one level only";
  EXPECT_THAT(Find(""), ElementsAre("sd/PRIVATE/JVC XDCAMEX", "sd/archive/2020/PRIVATE/AVCHD AVCHD",
                                    "sd/private/AVCHD AVCHD"));
  for (const char* inside : {"sd/PRIVATE/JVC/BPAV", "sd/PRIVATE/JVC/BPAV/CLPR/A_01",
                             "sd/PRIVATE/JVC/BPAV/CLPR/A_01/A_01M01.XML"}) {
    EXPECT_THAT(Find(inside), ElementsAre("sd/PRIVATE/JVC XDCAMEX")) << inside;
    EXPECT_THAT(Find(inside, SearchDirection::kNearby), ElementsAre("sd/PRIVATE/JVC XDCAMEX"));
  }
  EXPECT_THAT(Find("sd/private/AVCHD/BDMV/STREAM"), ElementsAre("sd/private/AVCHD AVCHD"));
  EXPECT_THAT(Find("sd/PRIVATE"), ElementsAre("sd/PRIVATE/JVC XDCAMEX"));
}

TEST_F(CardFinder, EntersAllFoldersExceptThoseOfAStructure) {
  MakeP2Card(tree_, "medium");
  AddP2Clip(tree_, "medium", {.id = "0001AB"});
  MakeAvchd("medium/CONTENTS/VIDEO");  // inside the P2 structure
  MakeAvchd("medium/more/AVCHD");
  tree_.File("medium/stray.dng");
  EXPECT_THAT(Find("medium"),
              ElementsAre("medium CinemaDNG", "medium P2", "medium/more/AVCHD AVCHD"));
}

TEST_F(CardFinder, SkipsEmptyStructuresButNotCardsWithoutMedia) {
  MakeAvchd("empty/PRIVATE/AVCHD");
  fs::remove_all(tree_.Path("empty/PRIVATE/AVCHD/BDMV/STREAM"));
  tree_.Folder("empty/PRIVATE/AVCHD/BDMV/STREAM");
  MakeP2Card(tree_, "empty/p2");
  EXPECT_THAT(Find("empty"), IsEmpty());
  MakeXDCAMDisc(tree_, "lost", {{"C0001"}});
  fs::remove(tree_.Path("lost/Clip/C0001.MXF"));
  fs::remove_all(tree_.Path("lost/Sub"));
  tree_.Folder("lost/Sub");
  EXPECT_THAT(Find("lost"), ElementsAre("lost XDCAM"));
}

TEST_F(CardFinder, FollowsNoLinksAndAcceptsUnusualNames) {
  MakeAvchd("real/AVCHD");
  tree_.Folder("start/.hidden");
  fs::create_directory_symlink(tree_.Path("real"), tree_.Path("start/link"));
  fs::create_directory_symlink("..", tree_.Path("start/loop"));
  fs::create_symlink("nowhere", tree_.Path("start/BPAV"));
  tree_.File("start/CONTENTS");
  MakeAvchd("start/.hidden/AVCHD");
  EXPECT_THAT(Find("start"), IsEmpty());
  EXPECT_THAT(Find("start/link"), ElementsAre("start/link/AVCHD AVCHD")) << "asked for";
  EXPECT_THAT(FindCards("volumes:", SearchDirection::kDeep), IsEmpty());
  EXPECT_THAT(FindCards(tree_.Path("missing"), SearchDirection::kDeep), IsEmpty());
  // Deeper than the limit: ends, and reports what is above it.
  std::string deep = "start";
  for (int i = 0; i < 80; ++i) deep += "/d";
  MakeAvchd(deep + "/AVCHD");
  MakeAvchd("start/d/d/AVCHD");
  EXPECT_THAT(Find("start"), ElementsAre("start/d/d/AVCHD AVCHD"));
}

TEST_F(CardFinder, NeverTouchesAnotherShare) {
  MakeAvchd("medium/AVCHD");
  tree_.File("medium/AVCHD/BDMV/STREAM/00000.MTS");
  RealMount share = RealMount::DeadShare(tree_.Folder("medium/share"));
  if (!share) GTEST_SKIP() << "this machine allows no mounts";
  fs::create_symlink(tree_.Path("medium/share"), tree_.Path("medium/link"));
  fs::create_symlink(tree_.Path("medium/share"), tree_.Path("medium/CONTENTS.lnk"));
  std::vector<FoundCard> cards;
  ASSERT_TRUE(
      share.DoesNotBlock([&] { cards = FindCards(tree_.Path("medium"), SearchDirection::kDeep); }));
  ASSERT_EQ(cards.size(), 1u);
  EXPECT_EQ(cards.front().path, tree_.Path("medium/AVCHD"));
}

// The messages of one request.
struct Answers {
  std::vector<std::string> cards;
  std::optional<ContentResultCode> result;
};

Answers Request(const std::string& path, bool abort) {
  using Hestra::StationUtils::RegisterStation;
  Answers answers;
  RegisterStation("cards", [&](const Hestra::Message& message) {
    const auto& typed = dynamic_cast<const FindCardsMessage&>(message);
    EXPECT_EQ(typed.path, path);
    EXPECT_FALSE(answers.result) << "after the last message";
    if (typed.isLast)
      answers.result = typed.result;
    else
      answers.cards.push_back(typed.card.path);
  });
  if (abort) {
    FindCardsRequest request("cards", path, SearchDirection::kDeep);
    request.AddRef();
    request.Abort();
    request.Run();
  } else {
    ProviderHost::RequestCards(path, SearchDirection::kDeep, "cards");
  }
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!answers.result && std::chrono::steady_clock::now() < end) {
    Hestra::StationUtils::WaitAndDispatch(50);
  }
  Hestra::StationUtils::UnregisterStation("cards");
  return answers;
}

TEST_F(CardFinder, PostsOneMessagePerCardAndALastOne) {
  MakeAvchd("a/AVCHD");
  MakeAvchd("b/AVCHD");
  Answers answers = Request(tree_.Root(), false);
  EXPECT_THAT(answers.cards, ElementsAre(tree_.Path("a/AVCHD"), tree_.Path("b/AVCHD")));
  EXPECT_EQ(answers.result, kResultDone);
  answers = Request(tree_.Path("a/AVCHD/BDMV/none"), false);
  EXPECT_THAT(answers.cards, IsEmpty());
  EXPECT_EQ(answers.result, kResultNoContent);
  answers = Request(tree_.Root(), true);
  EXPECT_THAT(answers.cards, IsEmpty());
  EXPECT_EQ(answers.result, kResultAborted);
}

TEST_F(CardFinder, StopsIfTheReceiverReturnsFalseOrAtAnAbort) {
  MakeAvchd("a/AVCHD");
  MakeAvchd("b/AVCHD");
  int received = 0;
  ForEachCard(tree_.Root(), SearchDirection::kDeep, [&](const FoundCard&) {
    ++received;
    return false;
  });
  EXPECT_EQ(received, 1);
}

}  // namespace
