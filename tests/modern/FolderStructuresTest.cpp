// SPDX-License-Identifier: MIT
// Structures that are connected by names only, on one medium.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "SorvikProvider/cardtools/CardFinder.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/metadata/RelatedFiles.h"
#include "support/MadeMedia.h"
#include "support/SoundFile.h"
#include "support/TempTree.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using testing::ElementsAre;
using testing::IsEmpty;

class FolderStructures : public testing::Test {
 protected:
  FolderStructures() {
    tree_.File("m/braw/A001_08151512_C001.braw");
    tree_.File("m/braw/Proxy/A001_08151512_C001.mov");
    tree_.File("m/A001R1JL/A001C010_100610_R1JL.mov");
    tree_.File("m/X.RDM/A001_C001_0925AB.RDC/A001_C001_0925AB_001.mov");
    tree_.File("m/deep/a/20260920/T01.WAV", MadeRecording({}));
    tree_.File("m/music/a.wav", MadeMedia("a.wav"));
    tree_.File("m/edit/final.mov");
    ProviderHost::Initialize();
    ProviderHost::RegisterAdditionalProviders();
  }
  ~FolderStructures() override { ProviderHost::Shutdown(); }

  std::vector<std::string> Find(const std::string& path, SearchDirection direction) {
    std::vector<std::string> found;
    for (const FoundCard& card : FindCards(tree_.Path(path), direction)) {
      found.push_back(card.path.substr(tree_.Root().size() + 1) + " " +
                      card.identification.substr(card.identification.rfind('.') + 1) + " " +
                      std::to_string(card.score));
    }
    return found;
  }

  const TempTree tree_;
};

TEST_F(FolderStructures, AreFound) {
  const std::string reel = "m/A001R1JL ProviderARRIReel 100";
  const std::string red = "m/X.RDM ProviderREDMOV 100";
  const std::string braw = "m/braw ProviderBRAW 100";
  EXPECT_THAT(Find("m", SearchDirection::kNearby), ElementsAre(reel, red, braw));
  EXPECT_THAT(Find("m", SearchDirection::kDeep),
              ElementsAre(reel, red, braw, "m/deep/a/20260920 ProviderSoundRoll 100"));
  EXPECT_THAT(Find("m/braw/A001_08151512_C001.braw", SearchDirection::kNearby), ElementsAre(braw));
  EXPECT_THAT(Find("m/X.RDM/A001_C001_0925AB.RDC", SearchDirection::kNearby), ElementsAre(red));
  EXPECT_THAT(Find("m/music", SearchDirection::kDeep), IsEmpty());
}

TEST_F(FolderStructures, OwnTheirFiles) {
  const auto ownerOf = [this](const std::string& path) {
    UTF16String key;
    UTF16String folder;
    UTF16String provider;
    GetRelatedFiles(Hestra::MakeString(tree_.Path(path)), key, folder, provider);
    return Hestra::MakeStdString(key);
  };
  EXPECT_EQ(ownerOf("m/braw/Proxy/A001_08151512_C001.mov"), "A001_08151512_C001.braw");
  const std::string segment = "m/X.RDM/A001_C001_0925AB.RDC/A001_C001_0925AB_001.mov";
  EXPECT_EQ(ownerOf(segment), tree_.Path(segment));
  EXPECT_EQ(ownerOf("m/A001R1JL/A001C010_100610_R1JL.mov"), "A001C010_100610_R1JL.mov");
}

TEST_F(FolderStructures, SurviveSpecialFilesAndLinks) {
  namespace fs = std::filesystem;
  for (const char* name : {"p.braw", "p.sidecar", "A001C011_100610_R1JL.mov", "p.wav"}) {
    tree_.Folder("odd");
    ASSERT_EQ(mkfifo(tree_.Path(std::string("odd/") + name).c_str(), 0600), 0);
  }
  tree_.File("odd/q.braw", MadeMedia("q.mov"));
  fs::create_symlink("missing", tree_.Path("odd/q.sidecar"));
  fs::create_symlink(".", tree_.Path("odd/Proxy"));
  fs::create_symlink(".", tree_.Path("odd/loop.RDC"));
  EXPECT_THAT(Find("odd", SearchDirection::kDeep), ElementsAre("odd ProviderBRAW 100"));
  const auto providers = ProviderHost::GetProviderList(tree_.Path("odd"));
  ASSERT_FALSE(providers.empty());
  const ContentMap content = providers.front()->GetContent(
      tree_.Path("odd"), {kPathField, kExtraPathField, "scene", "duration"}, nullptr);
  ASSERT_EQ(content.size(), 1u);
  EXPECT_EQ(content.begin()->first, "q.braw");
}

}  // namespace
