// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "SorvikProvider/cardtools/CardFinder.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/metadata/RelatedFiles.h"
#include "providers/modern/ProviderSonyXAVC.h"
#include "support/Cards.h"
#include "support/ModernCards.h"
#include "support/TempTree.h"
#include "support/Values.h"
#include "thumbnails/OwnedBitplate.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

const ProviderSonyXAVC kProvider;
const FieldNameSet kPaths{kNameField, kPathField, kExtraPathField, kProxyPathField};
constexpr char kSecondDevice[] = "A0CDF3FFFE79BDEE";

ContentMap List(const TempTree& tree, const std::string& root,
                const FieldNameSet& fields = kPaths) {
  return kProvider.GetContent(tree.Path(root), fields, nullptr);
}

TEST(ProviderSonyXAVC, ListsClipsWithAllTheirFilesInBothLayouts) {
  const TempTree tree;
  MakeXAVCCard(tree, "PRIVATE/M4ROOT", XAVCLayout::kM4Root, {{.name = "C0073"}, {.name = "C0001"}});
  MakeXAVCCard(tree, "XDROOT", XAVCLayout::kXDRoot, {{.name = "A001C001_250925AB"}});
  tree.File("XDROOT/Clip/A001C001_250925ABR01.BIM");
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("PRIVATE/M4ROOT")), 100);
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("XDROOT")), 100);

  const std::string root = tree.Path("PRIVATE/M4ROOT");
  ContentMap content = List(tree, "PRIVATE/M4ROOT");
  EXPECT_THAT(KeysOf(content), ElementsAre("C0001.MP4", "C0073.MP4"));
  const FieldValueMap& clip = content.at("C0073.MP4");
  EXPECT_EQ(TextOf(clip, kNameField), "C0073");
  EXPECT_EQ(TextOf(clip, kPathField), root + "/CLIP/C0073.MP4");
  EXPECT_EQ(TextOf(clip, kProxyPathField), root + "/SUB/C0073S03.MP4");
  EXPECT_THAT(ExtraPathsOf(clip, root),
              ElementsAre("CLIP/C0073M01.XML", "SUB/C0073S03.MP4", "THMBNL/C0073T01.JPG",
                          "MEDIAPRO.XML", "STATUS.BIN", "GENERAL", "TAKE"));
  content = List(tree, "XDROOT");
  ASSERT_THAT(KeysOf(content), ElementsAre("A001C001_250925AB.MXF"));
  EXPECT_THAT(ExtraPathsOf(content.begin()->second, tree.Path("XDROOT")),
              Contains("Clip/A001C001_250925ABR01.BIM"));
}

TEST(ProviderSonyXAVC, ReadsTheRecordOfEachClip) {
  const TempTree tree;
  MakeXAVCCard(tree, "M4ROOT", XAVCLayout::kM4Root, {{.name = "C0001", .title = "Harbour"}});
  const FieldNameSet fields{"duration", "startTimecode", "Model", "identifier", "videoFrameSize"};
  const FieldValueMap clip = List(tree, "M4ROOT", fields).at("C0001.MP4");
  EXPECT_EQ(TextOf(clip, "duration"), "00:00:04:00");
  EXPECT_EQ(TextOf(clip, "startTimecode"), "10:00:00:00");
  EXPECT_EQ(TextOf(clip, "Model"), "ILME-FX3");
  EXPECT_EQ(TextOf(clip, "identifier"), UmidOf(XAVCClip{.name = "C0001"}));
  EXPECT_EQ(TextOf(clip, kNameField), "Harbour") << "the title in the list";
  EXPECT_EQ(clip.count("frameCount"), 0u) << "wasn't requested";
  EXPECT_EQ(kProvider.GetContent(tree.Path("M4ROOT"), "C0001.MP4", fields).at("C0001.MP4"), clip);
}

TEST(ProviderSonyXAVC, RecognizesByContent) {
  const TempTree tree;
  const XAVCClip clip{.name = "C0001"};
  MakeXAVCCard(tree, "copy", XAVCLayout::kM4Root, {clip});
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("copy")), 100) << "without PRIVATE/M4ROOT";
  fs::remove_all(tree.Path("copy/THMBNL"));
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("copy")), 100) << "by the version in the list";
  tree.File("copy/notes.txt");
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("copy")), 40);
  fs::remove(tree.Path("copy/MEDIAPRO.XML"));
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("copy")), 40) << "by clips with records";
  EXPECT_THAT(KeysOf(List(tree, "copy")), ElementsAre("C0001.MP4"));

  MakeXAVCCard(tree, "A001R01", XAVCLayout::kXDRoot, {{.name = "A001C001"}});
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("A001R01")), 100) << "a renamed XDROOT";
  tree.File("PRIVATE/PXROOT/Clip/A001C001S03.MP4", "proxy of another card");
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("PRIVATE/PXROOT")), 40);
  MakeXAVCCard(tree, "low", XAVCLayout::kM4Root, {clip});
  fs::rename(tree.Path("low/CLIP"), tree.Path("low/clip"));
  fs::rename(tree.Path("low/MEDIAPRO.XML"), tree.Path("low/mediapro.xml"));
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("low")), 100) << "in any case";
  EXPECT_EQ(TextOf(List(tree, "low").at("C0001.MP4"), kPathField), tree.Path("low/clip/C0001.MP4"));

  MakeXDCAMDisc(tree, "disc", {{"C0001"}});
  MakeP2Card(tree, "p2");
  tree.Folder("none/CLIP");
  for (const char* other : {"disc", "p2", "p2/CONTENTS", "none", "copy/CLIP", "missing"}) {
    EXPECT_EQ(kProvider.CanProvideFor(tree.Path(other)), 0) << other;
  }
}

TEST(ProviderSonyXAVC, JoinsListAndFolderWithoutNumbers) {
  const TempTree tree;
  MakeXAVCCard(
      tree, "M4ROOT", XAVCLayout::kM4Root,
      {{.name = "C5850", .device = kSecondDevice},
       {.name = "C0001", .essence = false},
       {.name = "C0002", .listed = false},
       {.name = "C0003", .essence = false, .record = false, .proxy = false, .thumbnail = false},
       {.name = "C00022", .record = false}});
  tree.File("M4ROOT/CLIP/._C0002.MP4");
  tree.File("M4ROOT/CLIP/C0002.XMP");
  tree.File("M4ROOT/GENERAL/SONY/PXTMP/C5850_0001.MP4");
  const ContentMap content = List(tree, "M4ROOT");
  EXPECT_THAT(KeysOf(content), ElementsAre("C0001.MP4", "C0002.MP4", "C00022.MP4", "C5850.MP4"))
      << "nothing is left of C0003";
  const std::string root = tree.Path("M4ROOT");
  EXPECT_EQ(content.at("C0001.MP4").count(kPathField), 0u);
  EXPECT_THAT(ExtraPathsOf(content.at("C0001.MP4"), root), Contains("CLIP/C0001M01.XML"));
  EXPECT_THAT(
      ExtraPathsOf(content.at("C0002.MP4"), root),
      UnorderedElementsAre("CLIP/C0002.XMP", "CLIP/C0002M01.XML", "SUB/C0002S03.MP4",
                           "THMBNL/C0002T01.JPG", "MEDIAPRO.XML", "STATUS.BIN", "GENERAL", "TAKE"));
  EXPECT_THAT(ExtraPathsOf(content.at("C5850.MP4"), root),
              Contains("GENERAL/SONY/PXTMP/C5850_0001.MP4"));
}

// Three clips of which the second continues the first.
std::vector<XAVCClip> CutTake() {
  return {
      {.name = "C0001", .start = "00000010", .end = "24030010"},
      {.name = "C0100", .device = kSecondDevice, .start = "00000008"},
      {.name = "C0002", .start = "00040010", .end = "24070010", .created = "2024-05-06T08:00:04Z"},
      {.name = "C0003", .start = "05080010", .created = "2024-05-06T10:00:08+02:00"}};
}

TEST(ProviderSonyXAVC, JoinsPartsOnlyWithAllProofs) {
  const TempTree tree;
  MakeXAVCCard(tree, "M4ROOT", XAVCLayout::kM4Root, CutTake());
  const FieldNameSet fields{kExtraPathField, "duration", "frameCount"};
  const ContentMap content = List(tree, "M4ROOT", fields);
  EXPECT_THAT(KeysOf(content), ElementsAre("C0001.MP4", "C0003.MP4", "C0100.MP4"));
  const FieldValueMap& take = content.at("C0001.MP4");
  EXPECT_EQ(TextOf(take, "duration"), "00:00:08:00");
  EXPECT_EQ(TextOf(take, "frameCount"), "200 @ 1/25");
  EXPECT_THAT(ExtraPathsOf(take, tree.Path("M4ROOT")),
              testing::IsSupersetOf({"CLIP/C0002.MP4", "CLIP/C0002M01.XML", "SUB/C0002S03.MP4"}));
  EXPECT_EQ(kProvider.GetContent(tree.Path("M4ROOT"), "C0001.MP4", fields).at("C0001.MP4"), take);
  EXPECT_THAT(kProvider.GetContent(tree.Path("M4ROOT"), "C0002.MP4", fields), IsEmpty());

  int number = 0;
  for (const auto& change : std::vector<std::function<void(XAVCClip&)>>{
           [](XAVCClip& next) { next.start = "01040010"; },
           [](XAVCClip& next) { next.device = "0000000000000001"; },
           [](XAVCClip& next) { next.codec = "AVC_1920_1080_HP@L42"; },
           [](XAVCClip& next) { next.created = "2024-05-06T10:00:06+02:00"; },
           [](XAVCClip& next) { next.created = "unknown"; },
           [](XAVCClip& next) { next.record = false; },
           [](XAVCClip& next) { next.essence = false; }}) {
    std::vector<XAVCClip> clips = CutTake();
    change(clips[2]);
    const std::string root = "other" + std::to_string(number++);
    MakeXAVCCard(tree, root, XAVCLayout::kM4Root, clips);
    EXPECT_EQ(List(tree, root).size(), 4u) << root;
  }
}

TEST(ProviderSonyXAVC, ShowsThePictureOfTheCamera) {
  const TempTree tree;
  MakeXAVCCard(tree, "M4ROOT", XAVCLayout::kM4Root,
               {{.name = "C0001"}, {.name = "C0002", .thumbnail = false}});
  EXPECT_EQ(kProvider.GetMaximumThumbnailHeight(480), 480);
  const OwnedBitplate picture(
      kProvider.GetThumbnail(tree.Path("M4ROOT"), "C0001.MP4", 64, 48, nullptr));
  ASSERT_NE(picture, nullptr);
  EXPECT_EQ(bitplateGetHeight(picture.get()), 48);
  const OwnedBitplate icon(
      kProvider.GetThumbnail(tree.Path("M4ROOT"), "C0002.MP4", 64, 48, nullptr));
  ASSERT_NE(icon, nullptr);
  EXPECT_EQ(bitplateGetHeight(icon.get()), 16);
  EXPECT_EQ(kProvider.GetThumbnail(tree.Path("M4ROOT"), "../C0001.MP4", 64, 48, nullptr), nullptr);
}

TEST(ProviderSonyXAVC, SurvivesHostileCards) {
  const TempTree tree;
  MakeXAVCCard(tree, "M4ROOT", XAVCLayout::kM4Root, {{.name = "C0001"}, {.name = "C0002"}});
  // The list names files off the card, and lists clips twice.
  const std::string uris =
      XmlElement("Material", "uri=\"./CLIP/C0001.MP4\"",
                 XmlElement("RelevantInfo", "uri=\"../../secret.XML\" type=\"XML\"") +
                     XmlElement("Proxy", "uri=\"/etc/passwd\""));
  tree.File("secret.XML");
  tree.File("M4ROOT/MEDIAPRO.XML", MediaProXml(uris + uris + XmlElement("Material", "uri=\"\"")));
  ContentMap content = List(tree, "M4ROOT");
  EXPECT_THAT(KeysOf(content), ElementsAre("C0001.MP4", "C0002.MP4"));
  EXPECT_THAT(ExtraPathsOf(content.at("C0001.MP4"), tree.Path("M4ROOT")),
              Not(Contains(testing::HasSubstr("secret"))));
  EXPECT_EQ(TextOf(content.at("C0001.MP4"), kProxyPathField), tree.Path("M4ROOT/SUB/C0001S03.MP4"));
  // A FIFO, a folder and a dangling link instead of files.
  for (const char* name : {"CLIP/C0001M01.XML", "CLIP/C0002M01.XML", "MEDIAPRO.XML"}) {
    fs::remove(tree.Path(std::string("M4ROOT/") + name));
  }
  ASSERT_EQ(mkfifo(tree.Path("M4ROOT/CLIP/C0001M01.XML").c_str(), 0600), 0);
  tree.Folder("M4ROOT/CLIP/C0002M01.XML");
  fs::create_symlink("nowhere", tree.Path("M4ROOT/MEDIAPRO.XML"));
  EXPECT_EQ(List(tree, "M4ROOT").size(), 2u);
  // Truncated list.
  fs::remove(tree.Path("M4ROOT/MEDIAPRO.XML"));
  tree.File("M4ROOT/MEDIAPRO.XML", "<?xml version=\"1.0\"?><MediaProfile><Contents><Mat");
  EXPECT_EQ(List(tree, "M4ROOT").size(), 2u);
}

class AdditionalProviders : public testing::Test {
 protected:
  void SetUp() override {
    ProviderHost::RegisterAdditionalProviders();  // before Initialize: no effect
    ProviderHost::Initialize();
  }
  void TearDown() override { ProviderHost::Shutdown(); }
};

TEST_F(AdditionalProviders, AreRegisteredOnceAndChangeNoOrder) {
  const TempTree tree;
  MakeXAVCCard(tree, "XDROOT", XAVCLayout::kXDRoot, {{.name = "C0001"}});
  const auto core = ProviderHost::GetAllProviders();
  EXPECT_EQ(core.size(), 12u);
  EXPECT_EQ(ProviderHost::GetProviderList(tree.Path("XDROOT")).front()->GetIdentification(),
            "com.halvane.Merisk.ProviderXDCAM");
  ProviderHost::RegisterAdditionalProviders();
  const auto all = ProviderHost::GetAllProviders();
  ASSERT_GT(all.size(), core.size());
  EXPECT_TRUE(std::equal(core.begin(), core.end(), all.begin()));
  ProviderHost::RegisterAdditionalProviders();
  EXPECT_EQ(ProviderHost::GetAllProviders().size(), all.size());
  const auto list = ProviderHost::GetProviderList(tree.Path("XDROOT"));
  EXPECT_EQ(list[0]->GetIdentification(), "com.halvane.Merisk.ProviderSonyXAVC");
  EXPECT_EQ(list[1]->GetIdentification(), "com.halvane.Merisk.ProviderXDCAM");
}

TEST_F(AdditionalProviders, FindXAVCOnAMediumAndOwnItsFiles) {
  ProviderHost::RegisterAdditionalProviders();
  const TempTree tree;
  MakeXAVCCard(tree, "sd/PRIVATE/M4ROOT", XAVCLayout::kM4Root, {{.name = "C0001"}});
  MakeXAVCCard(tree, "sd/PRIVATE/XDROOT", XAVCLayout::kXDRoot, {{.name = "C0001"}});
  MakeXAVCCard(tree, "empty/PRIVATE/M4ROOT", XAVCLayout::kM4Root, {});
  std::vector<std::string> found;
  for (const FoundCard& card : FindCards(tree.Root(), SearchDirection::kDeep)) {
    found.push_back(card.path + " " + std::to_string(card.score));
    EXPECT_EQ(card.identification, "com.halvane.Merisk.ProviderSonyXAVC");
  }
  EXPECT_THAT(found, ElementsAre(tree.Path("sd/PRIVATE/M4ROOT") + " 100",
                                 tree.Path("sd/PRIVATE/XDROOT") + " 100"));
  UTF16String key, folder, provider;
  GetRelatedFiles(Hestra::MakeString(tree.Path("sd/PRIVATE/M4ROOT/THMBNL/C0001T01.JPG")), key,
                  folder, provider);
  EXPECT_EQ(Hestra::MakeStdString(key), "C0001.MP4");
  EXPECT_EQ(Hestra::MakeStdString(folder), tree.Path("sd/PRIVATE/M4ROOT"));
}

}  // namespace
