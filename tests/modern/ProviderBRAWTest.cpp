// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "providers/modern/ProviderBRAW.h"
#include "support/BrawFile.h"
#include "support/CheckText.h"
#include "support/MadeMedia.h"
#include "support/TempTree.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const ProviderBRAW kProvider;
const FieldNameSet kPaths{kNameField, kPathField, kExtraPathField, kProxyPathField};
const std::string kClip = "A001_08151512_C001";

std::string OnCards(unsigned number, unsigned count) {
  return MadeBraw(
      {NumberKey("multicard_volume_number", number), NumberKey("multicard_volume_count", count)});
}

TEST(ProviderBRAW, ListsRecordingsWithTheirFiles) {
  const TempTree tree;
  for (const char* name : {".braw", ".BRAW2", ".sidecar", ".braw.xmp"}) {
    tree.File("card/" + kClip + name, "x");
  }
  tree.File("card/PROXY/" + kClip + ".mp4");
  tree.File("card/PROXY/unrelated.mp4");
  tree.File("card/A001_08151512_S001.braw");
  tree.File("card/A001_08151512_C002.braw2", "on a card of its own");
  tree.File("card/._" + kClip + ".braw");
  tree.File("card/photo.jpg");
  const std::string root = tree.Path("card");
  EXPECT_EQ(kProvider.CanProvideFor(root), 100);
  const ContentMap content = kProvider.GetContent(root, kPaths, nullptr);
  EXPECT_THAT(KeysOf(content),
              ElementsAre(kClip + ".braw", "A001_08151512_C002.braw2", "A001_08151512_S001.braw"));
  const FieldValueMap& clip = content.at(kClip + ".braw");
  EXPECT_EQ(TextOf(clip, kNameField), kClip);
  EXPECT_EQ(TextOf(clip, kPathField), root + "/" + kClip + ".braw");
  EXPECT_EQ(TextOf(clip, kProxyPathField), root + "/PROXY/" + kClip + ".mp4");
  EXPECT_THAT(ExtraPathsOf(clip, root), ElementsAre(kClip + ".BRAW2", kClip + ".braw.xmp",
                                                    kClip + ".sidecar", "PROXY/" + kClip + ".mp4"));
  EXPECT_EQ(kProvider.GetContent(root + "/", kClip + ".braw", kPaths).begin()->second, clip);
  for (const char* key : {"", "..", "../card", "photo.jpg"}) {
    EXPECT_THAT(kProvider.GetContent(root, key, kPaths), IsEmpty()) << key;
  }
}

TEST(ProviderBRAW, ScoresByForeignMedia) {
  const TempTree tree;
  tree.File("half/A.braw2");
  tree.File("mixed/A.braw");
  tree.File("mixed/B.mov");
  tree.File("other/A.mov");
  tree.Folder("folder/A.braw");
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("half")), 100);
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("mixed/")), 40);
  for (const char* other : {"other", "folder", "missing", "mixed/A.braw"}) {
    EXPECT_EQ(kProvider.CanProvideFor(tree.Path(other)), 0) << other;
  }
}

TEST(ProviderBRAW, TakesTheCameraFromTheNameIfTheFileHasNone) {
  const TempTree tree;
  tree.File("card/" + kClip + ".braw", MadeBraw({}));
  tree.File("card/B001_08151512_C001.braw", MadeBraw({TextKey("camera_number", "C")}));
  tree.File("card/renamed.braw", MadeBraw({}));
  const ContentMap content =
      kProvider.GetContent(tree.Path("card"), {"camera", "videoCompressor"}, nullptr);
  EXPECT_EQ(TextOf(content.at(kClip + ".braw"), "camera"), "A");
  EXPECT_EQ(TextOf(content.at("B001_08151512_C001.braw"), "camera"), "C");
  EXPECT_EQ(TextOf(content.at("renamed.braw"), "camera"), "");
  EXPECT_EQ(TextOf(content.at("renamed.braw"), "videoCompressor"), "Blackmagic RAW");
}

TEST(ProviderBRAW, ChecksBothPartsOfRecordingsOnTwoCards) {
  const TempTree tree;
  tree.File("card/both.braw", OnCards(1, 2));
  tree.File("card/both.braw2", OnCards(2, 2));
  tree.File("card/first.braw", OnCards(1, 2));
  tree.File("card/second.braw2", OnCards(2, 2));
  tree.File("card/single.braw", OnCards(1, 1));
  tree.File("card/unknown.braw", MadeBraw({}));
  tree.File("card/truncated.braw", MadeBraw({}).substr(0, 60));
  tree.File("card/single.sidecar", "{}");
  tree.File("card/both.sidecar", "\xEF\xBB\xBF{\"iso\":\"400\"}\n");
  tree.File("card/first.sidecar", "");
  tree.File("card/second.sidecar", "{\"iso\":\"4");
  tree.File("card/unknown.sidecar", std::string(16, '\0'));
  tree.File("card/Proxy/gone.mp4", MadeMedia("gone.mp4"));
  const Checked checked("com.halvane.Merisk.ProviderBRAW", tree.Path("card"));
  EXPECT_THAT(checked.findings, UnorderedElementsAre("missing error span first.braw2",
                                                     "missing error essence second.braw",
                                                     "truncated error essence truncated.braw",
                                                     "empty error sidecar first.sidecar",
                                                     "unreadable error sidecar second.sidecar",
                                                     "unreadable error sidecar unknown.sidecar",
                                                     "orphaned error essence Proxy/gone.mp4"));
  EXPECT_THAT(checked.foreign, IsEmpty());
  const Checked quick("com.halvane.Merisk.ProviderBRAW", tree.Path("card"), CheckDepth::kNames);
  EXPECT_THAT(quick.findings, UnorderedElementsAre("orphaned error essence Proxy/gone.mp4",
                                                   "empty error sidecar first.sidecar",
                                                   "unreadable error sidecar second.sidecar",
                                                   "unreadable error sidecar unknown.sidecar"))
      << "no media is read";
}

}  // namespace
