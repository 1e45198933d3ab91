// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/cardtools/CardFinder.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "providers/modern/PanaGroupCard.h"
#include "providers/modern/ProviderPanaGroup.h"
#include "support/MadeMedia.h"
#include "support/TempTree.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using panagroup::ParseFolderName;
using testing::ElementsAre;
using testing::IsEmpty;

const ProviderPanaGroup kProvider;
constexpr char kRoot[] = "card/PRIVATE/PANA_GRP";

void MakeCard(const TempTree& tree, const std::string& root) {
  for (const char* file : {"001RAQAM/A001C001_250101AB.MOV", "002YBJAT/A001C001_250101AB.MOV",
                           "003XXXAM/CLIP0001.MP4", "001RAQAM/A001C001_250101AB.JPG"}) {
    tree.File(root + "/" + file, MadeMedia(file));
  }
  for (const char* file : {"001RAQAM/INDEX.DAT", "BACKUP.TMP"}) {
    tree.File(root + "/" + file, "x");
  }
}

TEST(PanaGroupFolders, SayTheFormat) {
  const auto main = ParseFolderName("001RAQAM");
  ASSERT_TRUE(main.has_value());
  EXPECT_EQ(main->width, 3840u);
  EXPECT_EQ(main->frameRate, "59.94");
  EXPECT_TRUE(main->isProgressive && main->isComplete && !main->isSimultaneous);
  const auto second = ParseFolderName("999ybjat");
  ASSERT_TRUE(second.has_value());
  EXPECT_EQ(second->height, 1080u);
  EXPECT_TRUE(second->isSimultaneous && second->isComplete && !second->isProgressive);
  EXPECT_FALSE(ParseFolderName("001XAQAM")->isComplete) << "a letter without published meaning";
  for (const char* name : {"01RAQAM", "001RAQAMX", "100_PANA", "STREAM", "001RAQBM", ""}) {
    EXPECT_FALSE(ParseFolderName(name).has_value()) << name;
  }
}

TEST(ProviderPanaGroup, ListsMainAndSimultaneousRecordings) {
  const TempTree tree;
  MakeCard(tree, kRoot);
  const std::string root = tree.Path(kRoot);
  const FieldNameSet fields{kNameField, kPathField, kExtraPathField, "videoFrameRate"};
  const ContentMap content = kProvider.GetContent(root, fields, nullptr);
  const std::string key = "001RAQAM/A001C001_250101AB.MOV";
  EXPECT_THAT(KeysOf(content),
              ElementsAre(key, "002YBJAT/A001C001_250101AB.MOV", "003XXXAM/CLIP0001.MP4"));
  EXPECT_THAT(ExtraPathsOf(content.at(key), root),
              ElementsAre("001RAQAM/A001C001_250101AB.JPG", "001RAQAM/INDEX.DAT", "BACKUP.TMP"));
  EXPECT_EQ(TextOf(content.at(key), kNameField), "A001C001_250101AB");
  EXPECT_EQ(TextOf(content.at(key), "videoFrameRate"), "59.94") << "of the folder's name";
  EXPECT_EQ(kProvider.GetContent(root, key, fields).at(key), content.at(key));
  for (const char* other : {"", "001RAQAM", "../PANA_GRP", "001RAQAM/INDEX.DAT"}) {
    EXPECT_THAT(kProvider.GetContent(root, other, fields), IsEmpty()) << other;
  }
}

TEST(ProviderPanaGroup, ClaimsItsRootByNameOrContent) {
  const TempTree tree;
  MakeCard(tree, "PANA_GRP");
  MakeCard(tree, "copy");
  tree.File("stray/PANA_GRP/001RAQAM/A.MOV", "x");
  tree.File("stray/PANA_GRP/notes.txt", "x");
  tree.File("odd/003XXXAM/A.MOV", "x");
  tree.Folder("empty/PANA_GRP/001RAQAM");
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("PANA_GRP")), 100);
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("copy")), 100);
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("stray/PANA_GRP")), 40);
  for (const char* other : {"odd", "empty/PANA_GRP", "PANA_GRP/001RAQAM", "missing"}) {
    EXPECT_EQ(kProvider.CanProvideFor(tree.Path(other)), 0) << other;
  }
}

TEST(ProviderPanaGroup, IsFoundAndCheckedFromTheRootOfTheMedium) {
  const TempTree tree;
  MakeCard(tree, kRoot);
  tree.File(std::string(kRoot) + "/001RAQAM/A001C002_250101AB.MOV");
  ProviderHost::Initialize();
  ProviderHost::RegisterAdditionalProviders();
  const auto found = FindCards(tree.Path("card"), SearchDirection::kNearby);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found.front().path, tree.Path(kRoot));
  const CardFindings result = CheckCard(found.front().path, found.front().identification);
  ProviderHost::Shutdown();
  ASSERT_EQ(result.findings.size(), 1u);
  EXPECT_EQ(result.findings.front().kind, Finding::Kind::kEmpty);
  for (const CardFile& file : result.files) {
    EXPECT_NE(file.role, CardFileRole::kForeign) << file.path;
  }
}

}  // namespace
