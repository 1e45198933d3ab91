// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/cardtools/CardFinder.h"
#include "SorvikProvider/foundation/Bitplate.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "providers/modern/DCIMMakers.h"
#include "providers/modern/ProviderDCIM.h"
#include "support/IsoBytes.h"
#include "support/MadeMedia.h"
#include "support/ModernCards.h"
#include "support/TempTree.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using testing::ElementsAre;
using testing::IsEmpty;

const ProviderDCIM kProvider;
const FieldNameSet kPaths{kNameField, kPathField, kExtraPathField, kProxyPathField};
constexpr char kId[] = "com.halvane.Merisk.ProviderDCIM";

// The files of an entry below DCIM: Path, then ExtraPath in order. The proxy has a leading "~".
using Entries = std::map<std::string, std::vector<std::string>>;

Entries EntriesOf(const TempTree& tree, const std::string& card) {
  const std::string root = tree.Path(card);
  Entries entries;
  for (const auto& [key, fields] : kProvider.GetContent(root, kPaths, nullptr)) {
    std::vector<std::string> files;
    const std::string path = TextOf(fields, kPathField);
    files.push_back(path == "<none>" ? path : path.substr(root.size() + 1));
    const std::string proxy = TextOf(fields, kProxyPathField);
    for (const std::string& file : ExtraPathsOf(fields, root)) {
      files.push_back((root + "/" + file == proxy ? "~" : "") + file);
    }
    for (std::string& file : files) {
      if (const auto at = file.find("DCIM/"); at != file.npos) file.erase(at, 5);
    }
    entries.emplace(key, files);
    EXPECT_EQ(kProvider.GetContent(root, key, kPaths), (ContentMap{{key, fields}})) << key;
  }
  return entries;
}

struct MakerCase {
  std::string maker;
  std::vector<std::string> files;  // below the root
  Entries entries;
};

class DCIMMaker : public testing::TestWithParam<MakerCase> {};

TEST_P(DCIMMaker, GroupsFilesByTheNamesOfTheMaker) {
  const TempTree tree;
  for (const std::string& file : GetParam().files) tree.File("card/" + file, "x");
  EXPECT_EQ(EntriesOf(tree, "card"), GetParam().entries);
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("card")), 100);
}

const std::string kInsta = "Camera01/VID_20240101_120000_00_001";

const std::vector<MakerCase>& Cases() {
  static const std::vector<MakerCase> cases{
      MakerCase{
          "GoPro",
          {"DCIM/100GOPRO/GX010001.MP4",
           "DCIM/100GOPRO/GX020001.MP4",
           "DCIM/100GOPRO/GX010001.THM",
           "DCIM/100GOPRO/GL010001.LRV",
           "DCIM/100GOPRO/GL020001.LRV",
           "DCIM/100GOPRO/GX010002.MP4",
           "DCIM/100GOPRO/Proxies/GX010002_Proxy.MP4",
           "DCIM/100GOPRO/GH010003.MP4",
           "DCIM/100GOPRO/gl010003.lrv",
           "DCIM/100GOPRO/GXAA0004.MP4",
           "DCIM/100GOPRO/GXAA0005.MP4",
           "DCIM/100GOPRO/GXAB0006.MP4",
           "DCIM/100GOPRO/GS010007.360",
           "DCIM/100GOPRO/GS__0008.JPG",
           "DCIM/100GOPRO/G0010009.JPG",
           "DCIM/100GOPRO/G0010010.JPG",
           "DCIM/101GOPRO/GOPR0001.MP4",
           "DCIM/101GOPRO/GP010001.MP4",
           "DCIM/101GOPRO/GX010001.MP4",
           "MISC/version.txt"},
          {{"100GOPRO/GX010001",
            {"100GOPRO/GX010001.MP4", "100GOPRO/GX020001.MP4", "~100GOPRO/GL010001.LRV",
             "100GOPRO/GL020001.LRV", "100GOPRO/GX010001.THM"}},
           {"100GOPRO/GX010002", {"100GOPRO/GX010002.MP4", "~100GOPRO/Proxies/GX010002_Proxy.MP4"}},
           {"100GOPRO/GH010003", {"100GOPRO/GH010003.MP4", "~100GOPRO/gl010003.lrv"}},
           {"100GOPRO/GXAA0004", {"100GOPRO/GXAA0004.MP4", "100GOPRO/GXAA0005.MP4"}},
           {"100GOPRO/GXAB0006", {"100GOPRO/GXAB0006.MP4"}},
           {"100GOPRO/GS010007", {"100GOPRO/GS010007.360"}},
           {"100GOPRO/GS__0008", {"100GOPRO/GS__0008.JPG"}},
           {"100GOPRO/G0010009", {"100GOPRO/G0010009.JPG", "100GOPRO/G0010010.JPG"}},
           {"101GOPRO/GOPR0001", {"101GOPRO/GOPR0001.MP4", "101GOPRO/GP010001.MP4"}},
           {"101GOPRO/GX010001", {"101GOPRO/GX010001.MP4"}}}},
      MakerCase{
          "DJI",
          {"DCIM/100MEDIA/DJI_0001.MP4", "DCIM/100MEDIA/DJI_0001.SRT", "DCIM/100MEDIA/DJI_0001.LRF",
           "DCIM/100MEDIA/DJI_0002.JPG", "DCIM/100MEDIA/DJI_0002.DNG", "MISC/THM/100/DJI_0001.THM",
           "MISC/THM/101/DJI_0001.THM", "DCIM/DJI_001/DJI_20240101120000_0001_D.MP4",
           "DCIM/DJI_001/DJI_20240101120000_0001_D.SRT",
           "DCIM/DJI_001/DJI_20240101120959_0002_D.MP4",
           "DCIM/DJI_001/CAM_20240101121500_0003_D.OSV",
           "DCIM/DJI_001/CAM_20240101121500_0003_D.LRF",
           "DCIM/HYPERLAPSE/HYPERLAPSE_0001/HYPERLAPSE_0001.JPG",
           "DCIM/HYPERLAPSE/HYPERLAPSE_0001/HYPERLAPSE_0002.JPG"},
          {{"100MEDIA/DJI_0001",
            {"100MEDIA/DJI_0001.MP4", "~100MEDIA/DJI_0001.LRF", "MISC/THM/100/DJI_0001.THM",
             "100MEDIA/DJI_0001.SRT"}},
           {"100MEDIA/DJI_0002", {"100MEDIA/DJI_0002.DNG", "100MEDIA/DJI_0002.JPG"}},
           {"DJI_001/DJI_20240101120000_0001_D",
            {"DJI_001/DJI_20240101120000_0001_D.MP4", "DJI_001/DJI_20240101120000_0001_D.SRT"}},
           {"DJI_001/DJI_20240101120959_0002_D", {"DJI_001/DJI_20240101120959_0002_D.MP4"}},
           {"DJI_001/CAM_20240101121500_0003_D",
            {"DJI_001/CAM_20240101121500_0003_D.OSV", "~DJI_001/CAM_20240101121500_0003_D.LRF"}},
           {"HYPERLAPSE/HYPERLAPSE_0001/HYPERLAPSE_0001",
            {"HYPERLAPSE/HYPERLAPSE_0001/HYPERLAPSE_0001.JPG",
             "HYPERLAPSE/HYPERLAPSE_0001/HYPERLAPSE_0002.JPG"}}}},
      MakerCase{
          "Insta360",
          {"DCIM/" + kInsta + ".insv", "DCIM/Camera01/VID_20240101_120000_10_001.insv",
           "DCIM/Camera01/LRV_20240101_120000_01_001.lrv",
           "DCIM/Camera01/VID_20240101_120000_00_002.insv",
           "DCIM/Camera01/IMG_20240101_120000_00_003.insp",
           "DCIM/Camera01/IMG_20240101_120000_00_003.insp.gyro", "DCIM/index.list"},
          {{kInsta,
            {kInsta + ".insv", "Camera01/VID_20240101_120000_10_001.insv",
             "~Camera01/LRV_20240101_120000_01_001.lrv"}},
           {"Camera01/VID_20240101_120000_00_002", {"Camera01/VID_20240101_120000_00_002.insv"}},
           {"Camera01/IMG_20240101_120000_00_003",
            {"Camera01/IMG_20240101_120000_00_003.insp",
             "Camera01/IMG_20240101_120000_00_003.insp.gyro"}}}},
      MakerCase{"iPhone",
                {"DCIM/100APPLE/IMG_0001.HEIC", "DCIM/100APPLE/IMG_0001.MOV",
                 "DCIM/100APPLE/IMG_E0001.HEIC", "DCIM/100APPLE/IMG_0001.AAE",
                 "DCIM/100APPLE/IMG_0002.MOV"},
                {{"100APPLE/IMG_0001",
                  {"100APPLE/IMG_0001.HEIC", "100APPLE/IMG_0001.MOV", "100APPLE/IMG_E0001.HEIC",
                   "100APPLE/IMG_0001.AAE"}},
                 {"100APPLE/IMG_0002", {"100APPLE/IMG_0002.MOV"}}}},
      MakerCase{
          "Nikon",
          {"DCIM/100NCZ_9/DSC_0001.NEV", "DCIM/100NCZ_9/DSC_0001.MP4", "DCIM/100NCZ_9/DSC_0002.MOV",
           "DCIM/100NCZ_9/DSC_0002.MP4", "DCIM/100NCZ_9/_DSC0003.NEF", "DCIM/100NCZ_9/_DSC0003.JPG",
           "DCIM/100NCZ_9/NKSC_PARAM/_DSC0003.NEF.nksc", "DCIM/100NCZ_9/NC_FLLST.DAT",
           "NIKON001.DSC"},
          {{"100NCZ_9/DSC_0001", {"100NCZ_9/DSC_0001.NEV", "~100NCZ_9/DSC_0001.MP4"}},
           {"100NCZ_9/DSC_0002", {"100NCZ_9/DSC_0002.MOV", "100NCZ_9/DSC_0002.MP4"}},
           {"100NCZ_9/_DSC0003",
            {"100NCZ_9/_DSC0003.NEF", "100NCZ_9/_DSC0003.JPG",
             "100NCZ_9/NKSC_PARAM/_DSC0003.NEF.nksc"}}}},
      MakerCase{"LUMIX",
                {"DCIM/100_PANA/P1000001.RW2", "DCIM/100_PANA/P1000001.JPG",
                 "DCIM/100_PANA/P1000002.MOV", "DCIM/100_PANA/P1000003.MOV"},
                {{"100_PANA/P1000001", {"100_PANA/P1000001.RW2", "100_PANA/P1000001.JPG"}},
                 {"100_PANA/P1000002", {"100_PANA/P1000002.MOV"}},
                 {"100_PANA/P1000003", {"100_PANA/P1000003.MOV"}}}},
      MakerCase{"Canon",
                {"DCIM/100CANON/IMG_0001.CR3", "DCIM/100CANON/IMG_0001.JPG",
                 "DCIM/100CANON/IMG_0001.WAV", "DCIM/100EOSR5/MVI_0002.MP4",
                 "DCIM/100EOSR5/MVI_0002.THM", "DCIM/101_0711/MVIC0003.MP4", "CANONMSC/M0100.CTG"},
                {{"100CANON/IMG_0001",
                  {"100CANON/IMG_0001.CR3", "100CANON/IMG_0001.JPG", "100CANON/IMG_0001.WAV"}},
                 {"100EOSR5/MVI_0002", {"100EOSR5/MVI_0002.MP4", "100EOSR5/MVI_0002.THM"}},
                 {"101_0711/MVIC0003", {"101_0711/MVIC0003.MP4"}}}},
      MakerCase{"Sony",
                {"DCIM/100MSDCF/DSC00001.ARW", "DCIM/100MSDCF/DSC00001.HIF",
                 "DCIM/100MSDCF/A7300002.JPG", "PRIVATE/DATABASE/DATABASE.BIN"},
                {{"100MSDCF/DSC00001", {"100MSDCF/DSC00001.ARW", "100MSDCF/DSC00001.HIF"}},
                 {"100MSDCF/A7300002", {"100MSDCF/A7300002.JPG"}}}},
      MakerCase{"Fujifilm",
                {"DCIM/100_FUJI/DSCF0001.RAF", "DCIM/100_FUJI/DSCF0001.JPG",
                 "DCIM/100_FUJI/DSCF0002.MOV"},
                {{"100_FUJI/DSCF0001", {"100_FUJI/DSCF0001.RAF", "100_FUJI/DSCF0001.JPG"}},
                 {"100_FUJI/DSCF0002", {"100_FUJI/DSCF0002.MOV"}}}},
      MakerCase{"Olympus",
                {"DCIM/100OLYMP/P7110001.ORF", "DCIM/100OLYMP/P7110001.JPG"},
                {{"100OLYMP/P7110001", {"100OLYMP/P7110001.ORF", "100OLYMP/P7110001.JPG"}}}},
      MakerCase{"DCF",
                {"DCIM/100LEICA/L1000001.DNG", "DCIM/100LEICA/L1000001.JPG",
                 "DCIM/100LEICA/L1000001.JPG.xmp", "DCIM/100LEICA/L1000002.WAV",
                 "DCIM/100LEICA/notes.txt"},
                {{"100LEICA/L1000001",
                  {"100LEICA/L1000001.DNG", "100LEICA/L1000001.JPG", "100LEICA/L1000001.JPG.xmp"}},
                 {"100LEICA/L1000002", {"100LEICA/L1000002.WAV"}}}}};
  return cases;
}

INSTANTIATE_TEST_SUITE_P(Rows, DCIMMaker, testing::ValuesIn(Cases()),
                         [](const auto& row) { return row.param.maker; });

TEST(DCIMMakers, HaveATestForEachRow) {
  std::vector<std::string_view> rows;
  for (const dcim::Maker& maker : dcim::Makers()) rows.push_back(maker.name);
  std::vector<std::string_view> tested;
  for (const MakerCase& maker : Cases()) tested.push_back(maker.maker);
  EXPECT_EQ(rows, tested);
}

TEST(ProviderDCIM, ListsWhatNoCameraNamed) {
  const TempTree tree;
  for (const char* file :
       {"survey/DJI_0001.JPG", "survey/x_Timestamp.MRK", "Camera/20240101_120000.jpg", "IMG_1.JPG",
        "loose/GX020001.MP4", "loose/GX010001.MP4", "100APPLE/._IMG_0001.MOV"}) {
    tree.File(std::string("card/DCIM/") + file, "x");
  }
  EXPECT_EQ(EntriesOf(tree, "card"),
            (Entries{{"Camera/20240101_120000", {"Camera/20240101_120000.jpg"}},
                     {"IMG_1", {"IMG_1.JPG"}},
                     {"loose/GX010001", {"loose/GX010001.MP4", "loose/GX020001.MP4"}},
                     {"survey/DJI_0001", {"survey/DJI_0001.JPG"}}}));
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("card")), 40) << "no folder of a camera has files";
  tree.Folder("empty/DCIM/100GOPRO");
  tree.File("file/DCIM", "x");
  for (const char* path : {"empty", "file", "card/DCIM", "missing"}) {
    EXPECT_EQ(kProvider.CanProvideFor(tree.Path(path)), 0) << path;
  }
  for (const char* key : {"", "..", "../card", "loose/../IMG_1", "100APPLE/", "loose", "/IMG_1",
                          "loose//GX010001", "loose/./GX010001"}) {
    EXPECT_THAT(kProvider.GetContent(tree.Path("card"), key, kPaths), IsEmpty()) << key;
  }
}

TEST(ProviderDCIM, SurvivesLinksThatLoopAndDeepFolders) {
  const TempTree tree;
  tree.File("card/DCIM/100GOPRO/GX010001.MP4", "x");
  std::filesystem::create_directory_symlink(tree.Path("card/DCIM"),
                                            tree.Path("card/DCIM/100GOPRO/a"));
  std::filesystem::create_directory_symlink(tree.Path("card/DCIM"),
                                            tree.Path("card/DCIM/100GOPRO/b"));
  std::string deep = "card/DCIM";
  for (int i = 0; i < 40; ++i) deep += "/d";
  tree.File(deep + "/GX010002.MP4", "x");
  EXPECT_THAT(KeysOf(kProvider.GetContent(tree.Path("card"), kPaths, nullptr)),
              ElementsAre("100GOPRO/GX010001"));
}

class DCIMChecks : public testing::Test {
 protected:
  void SetUp() override {
    ProviderHost::Initialize();
    ProviderHost::RegisterAdditionalProviders();
  }
  void TearDown() override { ProviderHost::Shutdown(); }

  std::vector<std::string> Findings(const CardFindings& result) const {
    std::vector<std::string> texts;
    for (const Finding& finding : result.findings) {
      texts.push_back(std::string(NameOf(finding.kind)) + " " +
                      std::string(NameOf(finding.severity)) + " " + finding.role + " " +
                      finding.path.substr(tree_.Path("card/DCIM/").size()));
    }
    return texts;
  }
  void Media(const std::string& file) { tree_.File("card/DCIM/" + file, MadeMedia(file)); }

  const TempTree tree_;
};

TEST_F(DCIMChecks, ReportWhatNamesProve) {
  for (const char* file :
       {"100GOPRO/GX010001.MP4", "100GOPRO/GX030001.MP4", "100GOPRO/GP020002.MP4",
        "100GOPRO/GXAA0007.MP4", "100GOPRO/GXAA0009.MP4", "100GOPRO/GX010004.THM",
        "100GOPRO/G0010005.JPG"}) {
    Media(file);
  }
  tree_.File("card/DCIM/100GOPRO/G0010008.JPG", MadeMedia(".jpg").substr(0, 100));
  tree_.File("card/DCIM/100GOPRO/GL010003.LRV", MadeMedia(".MP4"));
  tree_.File("card/DCIM/100GOPRO/GL010001.LRV", MadeMedia(".MP4").substr(0, 200));
  tree_.File("card/DCIM/101GOPRO/GX010001.MP4");
  const CardFindings result = CheckCard(tree_.Path("card"), kId);
  EXPECT_THAT(Findings(result), ElementsAre("truncated error frame 100GOPRO/G0010008.JPG",
                                            "truncated error proxy 100GOPRO/GL010001.LRV",
                                            "missing error essence 100GOPRO/GL010003",
                                            "missing error segment 100GOPRO/GOPR0002.MP4",
                                            "missing error segment 100GOPRO/GP010002.MP4",
                                            "missing error essence 100GOPRO/GX010004",
                                            "missing error segment 100GOPRO/GX020001.MP4",
                                            "empty error essence 101GOPRO/GX010001.MP4",
                                            "missing warning frame 100GOPRO/G0010006.JPG"));
  EXPECT_FALSE(result.complete);
}

TEST_F(DCIMChecks, KnowTheFilesOfTheMedium) {
  Media("100NCZ_9/DSC_0001.MOV");
  for (const char* file :
       {"DCIM/100NCZ_9/NC_FLLST.DAT", "NIKON001.DSC", "NIKON/Z_7/PCSENDL1.BIN", "MISC/version.txt",
        "PRIVATE/DATABASE/DATABASE.BIN", "PRIVATE/SONY/SONYCARD.IND", "DCIM/101APPLE/IMG_1.AAE"}) {
    tree_.File(std::string("card/") + file, "x");
  }
  tree_.File("card/letter.doc", "x");
  const CardFindings result = CheckCard(tree_.Path("card"), kId);
  EXPECT_TRUE(result.complete);
  for (const CardFile& file : result.files) {
    const bool isForeign = file.path.ends_with("letter.doc");
    EXPECT_EQ(file.role == CardFileRole::kForeign, isForeign) << file.path;
  }
}

// An MP4 of `seconds` seconds, created at `start` seconds after the made date, with a size.
void MakeLongClip(const std::string& path, std::uint32_t start, std::uint32_t seconds,
                  std::uint64_t size) {
  const Bytes header = Box(
      "mvhd",
      Bytes().U32(0).U32(k2021 + start).U32(k2021 + start).U32(1000).U32(seconds * 1000).Fill(80));
  const Bytes track = Track("vide", MediaHeader(25, seconds * 25),
                            {Descriptions(VideoEntry("avc1", 1920, 1080)),
                             Durations({{seconds * 25, 1}}), Sizes(seconds * 25), Chunks(1000)});
  Bytes file = FileType();
  file.Add(Box("moov", {header, track})).U32(1).Text("mdat").U64(size - file.size());
  std::ofstream(path, std::ios::binary) << file.str();
  std::filesystem::resize_file(path, size);
}

TEST_F(DCIMChecks, NoteClipsThatProbablyContinueOthers) {
  const std::string folder = tree_.Folder("card/DCIM/DJI_001") + "/DJI_2024010112";
  constexpr std::uint64_t kLimit = 4'000'000'000;
  MakeLongClip(folder + "0000_0001_D.MP4", 0, 600, kLimit);
  MakeLongClip(folder + "1000_0002_D.MP4", 600, 30, 1000'000);
  MakeLongClip(folder + "1030_0003_D.MP4", 630, 30, 1000'000);  // the one before is short
  MakeLongClip(folder + "1100_0004_D.MP4", 700, 600, kLimit);
  MakeLongClip(folder + "2200_0005_D.MP4", 1400, 30, 1000'000);  // later
  MakeLongClip(folder + "3000_0007_D.MP4", 2000, 600, kLimit);
  const CardFindings result = CheckCard(tree_.Path("card"), kId);
  ASSERT_THAT(Findings(result),
              ElementsAre("unlisted note span DJI_001/DJI_20240101121000_0002_D.MP4"));
  EXPECT_TRUE(result.findings.front().detail.starts_with("inferred"));
  EXPECT_TRUE(result.complete);
  EXPECT_EQ(result.clips, 6u) << "nothing is joined";
}

TEST_F(DCIMChecks, AreFoundNextToOtherCardsOfTheMedium) {
  Media("100MSDCF/DSC00001.MP4");
  MakeXAVCCard(tree_, "card/PRIVATE/M4ROOT", XAVCLayout::kM4Root, {{.name = "C0001"}});
  tree_.Folder("card/PRIVATE/AVCHD/BDMV");
  std::vector<std::string> found;
  for (const FoundCard& card : FindCards(tree_.Path("card"), SearchDirection::kNearby)) {
    found.push_back(card.path.substr(tree_.Root().size() + 1));
  }
  EXPECT_THAT(found, ElementsAre("card", "card/PRIVATE/M4ROOT"));
  const auto inside = FindCards(tree_.Path("card/DCIM/100MSDCF"), SearchDirection::kNearby);
  ASSERT_EQ(inside.size(), 1u);
  EXPECT_EQ(inside.front().identification, kId);
}

TEST(ProviderDCIM, AsksTheMovieWhetherTheOtherOneIsItsProxy) {
  const TempTree tree;
  const auto movie = [](const char* codec) {
    const Bytes track = Track("vide", MediaHeader(25, 25),
                              {Descriptions(VideoEntry(codec, 4128, 2322)), Durations({{25, 1}}),
                               Sizes(25), Chunks(1000)});
    return FileType().Add(Box("moov", {MovieHeader(25, 25), track})).str();
  };
  tree.File("card/DCIM/100NCZ_9/DSC_0001.MOV", movie("aprn"));
  tree.File("card/DCIM/100NCZ_9/DSC_0002.MOV", movie("apch"));
  for (const char* name : {"DSC_0001", "DSC_0002"}) {
    tree.File(std::string("card/DCIM/100NCZ_9/") + name + ".MP4", "x");
  }
  EXPECT_EQ(EntriesOf(tree, "card"),
            (Entries{{"100NCZ_9/DSC_0001", {"100NCZ_9/DSC_0001.MOV", "~100NCZ_9/DSC_0001.MP4"}},
                     {"100NCZ_9/DSC_0002", {"100NCZ_9/DSC_0002.MOV", "100NCZ_9/DSC_0002.MP4"}}}));
}

TEST(ProviderDCIM, TakesThePositionFromFlightData) {
  const TempTree tree;
  tree.File("card/DCIM/100MEDIA/DJI_0001.MP4", MadeMedia(".MP4"));
  tree.File("card/DCIM/100MEDIA/DJI_0001.SRT",
            "1\n00:00:00,000 --> 00:00:00,033\n[iso: 100] [latitude: 48.5] [longitude: -11.25]\n");
  const FieldNameSet fields{"GPSLatitude", "GPSLongitude", "Model"};
  const FieldValueMap clip =
      kProvider.GetContent(tree.Path("card"), "100MEDIA/DJI_0001", fields).begin()->second;
  EXPECT_EQ(TextOf(clip, "GPSLatitude"), "48,30.00000N");
  EXPECT_EQ(TextOf(clip, "GPSLongitude"), "11,15.00000W");
}

TEST(ProviderDCIM, ShowsTheCamerasPicture) {
  const TempTree tree;
  MakeXAVCCard(tree, "other", XAVCLayout::kM4Root, {{.name = "C0001"}});
  const std::string picture = tree.Path("other/THMBNL/C0001T01.JPG");
  tree.Folder("card/MISC/THM/100");
  tree.File("card/DCIM/100MEDIA/DJI_0001.MP4", "x");
  std::filesystem::copy_file(picture, tree.Path("card/MISC/THM/100/DJI_0001.THM"));
  std::filesystem::copy_file(picture, tree.Path("card/DCIM/100MEDIA/DJI_0002.JPG"));
  for (const char* key : {"100MEDIA/DJI_0001", "100MEDIA/DJI_0002"}) {
    const int height = kProvider.GetMaximumThumbnailHeight(60);
    Bitplate** drawn = kProvider.GetThumbnail(tree.Path("card"), key, 80, height, nullptr);
    ASSERT_NE(drawn, nullptr) << key;
    EXPECT_EQ(bitplateGetHeight(drawn), 60) << key;
    bitplateDispose(drawn);
  }
  EXPECT_EQ(kProvider.GetThumbnail(tree.Path("card"), "100MEDIA/DJI_0009", 80, 60, nullptr),
            nullptr);
}

}  // namespace
