// SPDX-License-Identifier: MIT
// Cards next to a share whose server is unreachable: the search for their missing parts skips it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "providers/cards/Neighbours.h"
#include "providers/cards/ProviderP2.h"
#include "providers/cards/ProviderXDCAMEX.h"
#include "support/Cards.h"
#include "support/DeadShareTest.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;

class CardsNextToADeadShare : public DeadShareTest {};

TEST_F(CardsNextToADeadShare, MayBeAccessedUnlessOnAnotherShare) {
  if (!mount_) GTEST_SKIP() << "no mount of a share can be made here";
  const std::string share = tree_.Path("folder/nas");
  const std::string card = tree_.Path("folder/card");
  EXPECT_TRUE(CanAccessWithoutBlocking(tree_.Path("folder/other"), card));
  EXPECT_FALSE(CanAccessWithoutBlocking(share, card)) << "the share itself";
  std::filesystem::create_directory_symlink(share, tree_.Path("folder/link"));
  std::filesystem::create_directory_symlink("link/a", tree_.Path("folder/second"));
  EXPECT_FALSE(CanAccessWithoutBlocking(tree_.Path("folder/second"), card)) << "a link to a link";
}

TEST_F(CardsNextToADeadShare, FindTheOtherPartsOfP2Shots) {
  if (!mount_) GTEST_SKIP() << "no mount of a share can be made here";
  const auto shot = P2Shot({"0001AA", "0002BB"}, "SHOT");
  for (const char* card : {"folder/card", "folder/z"}) MakeP2Card(tree_, card);
  AddP2Clip(tree_, "folder/card", shot[0]);
  AddP2Clip(tree_, "folder/z", shot[1]);
  const ProviderP2 provider;
  Ask("the listing", [&] {
    const auto content = provider.GetContent(tree_.Path("folder/card"), {"duration"}, nullptr);
    EXPECT_EQ(TextOf(content.at("0001AA"), "duration"), "00:00:08:00");
  });
  const RealMount volume = RealMount::Memory(tree_.Folder("volume"));
  if (!volume) return;
  MakeP2Card(tree_, "volume");
  AddP2Clip(tree_, "volume", shot[0]);
  Ask("the search of other volumes", [&] {
    EXPECT_EQ(provider.GetContent(tree_.Path("volume"), {"duration"}, nullptr).size(), 1u);
  });
}

TEST_F(CardsNextToADeadShare, FindTheOtherPartsOfTakes) {
  if (!mount_) GTEST_SKIP() << "no mount of a share can be made here";
  MakeXDCAMEXCard(tree_, "folder/card", {{.name = "T_01"}},
                  {{.name = "T", .clips = {"T_01", "T_02"}}});
  MakeXDCAMEXCard(tree_, "folder/z", {{.name = "T_02"}});
  Ask("the listing", [&] {
    const auto content = ProviderXDCAMEX().GetContent(tree_.Path("folder/card"),
                                                      FieldNameSet{kExtraPathField}, nullptr);
    ASSERT_EQ(content.size(), 1u);
    EXPECT_THAT(ExtraPathsOf(content.begin()->second, tree_.Root()),
                testing::Contains("folder/z/BPAV/CLPR/T_02/T_02.MP4"));
  });
}

}  // namespace
