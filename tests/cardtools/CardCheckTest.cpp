// SPDX-License-Identifier: MIT
// Findings that concern several files or cards, for each structure.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <mutex>
#include <set>

#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/cardtools/CardFinder.h"
#include "SorvikProvider/cardtools/EntryFiles.h"
#include "SorvikProvider/cardtools/MediumFiles.h"
#include "SorvikProvider/foundation/ReadFailures.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "support/AvchdCard.h"
#include "support/Cards.h"
#include "support/MadeMedia.h"
#include "support/TempTree.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

class CardCheck : public testing::Test {
 protected:
  void SetUp() override { ProviderHost::Initialize(); }
  void TearDown() override { ProviderHost::Shutdown(); }

  // "kind role path" of each finding, errors first; warnings end with "?".
  std::vector<std::string> Findings(const std::string& card, const std::string& provider) {
    std::vector<std::string> lines;
    const std::string root = tree_.Path(card) + "/";
    for (const Finding& finding :
         CheckCard(tree_.Path(card), "com.halvane.Merisk." + provider).findings) {
      const std::string path =
          finding.path.starts_with(root) ? finding.path.substr(root.size()) : finding.path;
      const bool warning = finding.severity != Finding::Severity::kError;
      lines.push_back(std::string(NameOf(finding.kind)) + " " + finding.role + " " + path +
                      (warning ? "?" : ""));
    }
    return lines;
  }
  void Media(const std::vector<std::string>& files) {
    for (const std::string& file : files) tree_.File(file, MadeMedia(file));
  }
  void AddCompleteP2Clip(const std::string& card, const P2Clip& clip) {
    AddP2Clip(tree_, card, clip);
    const std::string audio = card + "/CONTENTS/AUDIO/" + clip.id;
    Media({audio + "00.MXF", audio + "01.MXF"});
  }

  const TempTree tree_;
};

TEST_F(CardCheck, FindsSpansOfP2ShotsOnCardsNextToThisOne) {
  const auto shot = P2Shot({"0001AA", "0002AA", "0003AA"}, "S1");
  for (const char* card : {"one", "two"}) MakeP2Card(tree_, card);
  AddCompleteP2Clip("one", shot[0]);
  AddCompleteP2Clip("two", shot[1]);
  EXPECT_THAT(Findings("two", "ProviderP2"), ElementsAre("missing span " + P2GlobalId("0003AA")));
  AddCompleteP2Clip("one", shot[2]);
  EXPECT_THAT(Findings("two", "ProviderP2"), IsEmpty());
  // A record alone isn't the span.
  fs::remove(tree_.Path("one/CONTENTS/VIDEO/0003AA.MXF"));
  for (const char* channel : {"00", "01"}) {
    fs::remove(tree_.Path("one/CONTENTS/AUDIO/0003AA" + std::string(channel) + ".MXF"));
  }
  EXPECT_THAT(Findings("two", "ProviderP2"), ElementsAre("missing span " + P2GlobalId("0003AA")));
}

TEST_F(CardCheck, RequiresTheFilesOfP2Clips) {
  MakeP2Card(tree_, "card");
  P2Clip clip{.id = "0001AA"};
  clip.extraXml = "<Proxy><ProxyFormat>MOV</ProxyFormat></Proxy><Thumbnail/>";
  AddCompleteP2Clip("card", clip);
  AddP2Clip(tree_, "card", {.id = "0002BB", .essence = "AVCLIP"});
  const P2Clip longGop{.id = "0003CC", .essence = ""};
  AddP2Clip(tree_, "card", longGop);
  std::string xml = P2ClipXml(longGop);
  tree_.File("card/CONTENTS/CLIP/0003CC.XML", xml.replace(xml.find("AVC-I_"), 6, "AVC-LongG25_"));
  Media({"card/CONTENTS/VOICE/0001AA00.WAV", "card/CONTENTS/VIDEO/0009ZZ.MXF"});
  const std::string contents = "CONTENTS/";
  EXPECT_THAT(Findings("card", "ProviderP2"),
              UnorderedElementsAre("missing proxy CONTENTS/PROXY/0001AA.MOV",
                                   "missing essence CONTENTS/AVCLIP/0003CC.MXF",
                                   "missing clip record CONTENTS/CLIP/0009ZZ.XML",
                                   "orphaned essence CONTENTS/VIDEO/0009ZZ.MXF"));
  const auto result = CheckCard(tree_.Path("card"), "com.halvane.Merisk.ProviderP2");
  for (const CardFile& file : result.files) {
    if (!file.path.ends_with(".WAV")) continue;
    EXPECT_THAT(file.owners, ElementsAre("0001AA"));
  }
}

// A case-insensitive file system finds a file under another spelling. Elsewhere a file with another
// spelling is another file.
TEST_F(CardCheck, ComparesSpellingsByTheFileTheyLeadTo) {
  MakeXDCAMDisc(tree_, "disc", {{.name = "C0001"}});
  const std::string clip = tree_.Path("disc/Clip/");
  fs::rename(clip + "C0001.MXF", clip + "c0001.mxf");
  EXPECT_THAT(
      Findings("disc", "ProviderXDCAM"),
      UnorderedElementsAre("missing essence Clip/C0001.MXF", "orphaned essence Clip/c0001.mxf"));
  fs::create_hard_link(clip + "c0001.mxf", clip + "C0001.MXF");
  EXPECT_THAT(Findings("disc", "ProviderXDCAM"), IsEmpty());
}

TEST_F(CardCheck, NamesNoPathOutsideTheCard) {
  const std::string material = XmlElement(
      "Material", "uri=\"./../../outside.MXF\" type=\"MXF\" umid=\"" + UmidOf("C0002") + "\"",
      XmlElement("RelevantInfo", "uri=\"../../outside.XML\" type=\"XML\""));
  MakeXDCAMDisc(tree_, "disc", {{.name = "C0001"}});
  tree_.File("disc/MEDIAPRO.XML", MediaProXml(material));
  const auto result = CheckCard(tree_.Path("disc"), "com.halvane.Merisk.ProviderXDCAM");
  for (const Finding& finding : result.findings) {
    EXPECT_EQ(finding.path.find("outside"), std::string::npos) << finding.path;
  }
}

TEST_F(CardCheck, FindsPartsOfTakesOnOtherCards) {
  MakeXDCAMEXCard(tree_, "one", {{.name = "A_01"}}, {{.name = "A", .clips = {"A_01", "A_02"}}});
  EXPECT_THAT(Findings("one", "ProviderXDCAMEX"), ElementsAre("missing span " + UmidOf("A_02")));
  MakeXDCAMEXCard(tree_, "two", {{.name = "A_02"}});
  EXPECT_THAT(Findings("one", "ProviderXDCAMEX"), IsEmpty());
  fs::remove(tree_.Path("two/BPAV/CLPR/A_02/A_02.MP4"));
  EXPECT_THAT(Findings("one", "ProviderXDCAMEX"),
              ElementsAre("missing span " + tree_.Path("two/BPAV/CLPR/A_02/A_02.MP4")));
  // A playlist without an end continues on a card that isn't there.
  MakeXDCAMEXCard(tree_, "three", {{.name = "B_01"}},
                  {{.name = "B", .clips = {"B_01"}, .complete = false}});
  EXPECT_THAT(Findings("three", "ProviderXDCAMEX"), ElementsAre("missing span " + UmidOf("B_01")));
}

TEST_F(CardCheck, AcceptsCopiesOfXDCAMEXCardsInLowerCase) {
  MakeXDCAMEXCard(tree_, "card", {{.name = "A_0001_01"}, {.name = "A_0001_02"}, {"A_0950_01"}},
                  {{.name = "A_0001", .clips = {"A_0001_01", "A_0001_02"}}});
  std::vector<fs::path> paths;
  for (const char* folder : {"card/BPAV/CLPR", "card/BPAV/TAKR"}) {
    for (const auto& item : fs::recursive_directory_iterator(tree_.Path(folder))) {
      paths.push_back(item.path());
    }
  }
  for (auto path = paths.rbegin(); path != paths.rend(); ++path) {
    std::string name = path->filename().string();
    for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    fs::rename(*path, path->parent_path() / name);
  }
  EXPECT_THAT(Findings("card", "ProviderXDCAMEX"), testing::IsEmpty());
  const CardFindings result = CheckCard(tree_.Path("card"), "com.halvane.Merisk.ProviderXDCAMEX");
  EXPECT_EQ(result.clips, 2u);
  for (const CardFile& file : result.files) {
    EXPECT_NE(file.role, CardFileRole::kForeign) << file.path;
  }
}

TEST_F(CardCheck, NamesAVCHDPartsAsTheCardDoes) {
  const AvchdCard card(tree_, "card", kLongNames);
  card.Clips({"00000", "00001", "00007"});
  card.Playlist("00000", {{"00000"}, {"00001", 6}, {"00002"}});
  fs::remove(card.Path("STREAM/00001.m2ts"));
  fs::remove(card.Path("CLIPINF/00000.clpi"));
  EXPECT_THAT(Findings("card", "ProviderAVCHD"),
              UnorderedElementsAre("missing clip record BDMV/CLIPINF/00000.clpi",
                                   "missing essence BDMV/STREAM/00001.m2ts",
                                   "missing clip record BDMV/CLIPINF/00002.clpi",
                                   "missing essence BDMV/STREAM/00002.m2ts",
                                   "orphaned essence BDMV/STREAM/00007.m2ts"));
}

// Eight packets with a video frame at `first`, the others at `last` (90 kHz).
std::string StreamOf(std::uint64_t first, std::uint64_t last) {
  Bytes stream;
  for (int i = 0; i < 8; ++i) {
    const std::uint64_t time = i == 0 ? first : last;
    Bytes frame = Bytes().U24(1).U8(0xE0).U16(0).U8(0x80).U8(0x80).U8(5);
    frame.U8(0x21 | (time >> 29 & 0x0E)).U16((time >> 14 & 0xFFFE) | 1);
    frame.U16((time << 1 & 0xFFFE) | 1);
    stream.U32(0).U8(0x47).U16(0x5011).U8(0x10).Add(frame.PadTo(184));
  }
  return stream.str();
}

TEST_F(CardCheck, ComparesStreamsWithPlaylistsWithoutClipInformation) {
  const AvchdCard card(tree_, "card");
  card.Playlist("00000", {{"00000"}, {"00001"}, {"00002"}});  // from second 1 to 2
  card.File("STREAM/00000.MTS", StreamOf(90000, 180000 - 3600));
  card.File("STREAM/00001.MTS", StreamOf(90000, 90000 + 3600));
  card.File("STREAM/00002.MTS", StreamOf(900000, 0));  // of another clock
  EXPECT_THAT(Findings("card", "ProviderAVCHD"),
              UnorderedElementsAre("missing clip record BDMV/CLIPINF/00000.CPI",
                                   "missing clip record BDMV/CLIPINF/00001.CPI",
                                   "missing clip record BDMV/CLIPINF/00002.CPI"));
  card.File("STREAM/00001.MTS", StreamOf(90000, 90000));
  EXPECT_THAT(Findings("card", "ProviderAVCHD"),
              testing::Contains("truncated essence BDMV/STREAM/00001.MTS"));
}

TEST_F(CardCheck, FindsLostSpansOfCanonXF) {
  const std::string root = "card/CONTENTS/CLIPS001/";
  Media({root + "INDEX.MIF", root + "AA0001/AA000102.MXF", root + "AA0001/AA000102.SIF",
         root + "AA0001/AA000103.SIF", root + "AA0001/AA0001.CIF", root + "AB0002/AB000201.MXF"});
  const std::string clips = "CONTENTS/CLIPS001/";
  EXPECT_THAT(Findings("card", "ProviderCanonXF"),
              UnorderedElementsAre("missing span " + clips + "AA0001/AA000101.MXF",
                                   "missing sidecar " + clips + "AA0001/AA000101.SIF",
                                   "missing span " + clips + "AA0001/AA000103.MXF",
                                   "missing clip record " + clips + "AB0002/AB0002.CIF"));
}

TEST_F(CardCheck, FindsTheLostFirstFileOfAnHDVRecording) {
  const std::string folder = "card/VIDEO/HVR/";
  Media({folder + "00_0012_2014-01-31_101530.IDX", folder + "00_0012_2014-01-31_103000.M2T",
         folder + "00_0013_2014-01-31_104500.M2T"});
  EXPECT_THAT(Findings("card", "ProviderSonyHDV"),
              UnorderedElementsAre("missing essence VIDEO/HVR/00_0012_2014-01-31_101530.M2T",
                                   "missing index VIDEO/HVR/00_0013_2014-01-31_104500.IDX"));
}

TEST_F(CardCheck, FindsGapsOfSequences) {
  Media({"arri/A_0099.ari", "arri/A_0101.ari", "arri/A_0099.wav", "arri/._A_0100.ari",
         "photos/c_0001.dng", "photos/c_0003.dng", "raw/C_02.RMF", "raw/C_01.WAV"});
  EXPECT_THAT(Findings("arri", "ProviderARRIRAW"), ElementsAre("missing frame A_0100.ari"));
  EXPECT_THAT(Findings("photos", "ProviderCinemaDNG"), ElementsAre("missing frame c_0002.dng"));
  EXPECT_THAT(Findings("raw", "ProviderCanonRAW"), ElementsAre("missing frame C_01.RMF"));
  // Without a frame rate they are photographs.
  std::string photo = MadeMedia(".dng");
  photo[10 + 24] = 0x01;
  photo[10 + 25] = 0x02;
  for (const char* file : {"photos/c_0001.dng", "photos/c_0003.dng"}) tree_.File(file, photo);
  EXPECT_THAT(Findings("photos", "ProviderCinemaDNG"), ElementsAre("missing frame c_0002.dng?"));
  // A clip over midnight at 24 frames a second.
  Media(
      {"night/A_0000000.ari", "night/A_0000001.ari", "night/A_2073598.ari", "night/A_2073599.ari"});
  EXPECT_THAT(Findings("night", "ProviderARRIRAW"), ElementsAre("missing frame A_0000002.ari?"));
}

TEST_F(CardCheck, FindsGapsOfREDSegments) {
  Media({"red/A1.RDC/A1_002.R3D", "red/A1.RDC/A1_004.R3D", "red/A2.RDC/A2_001.R3D",
         "red/A2.RDC/B1_001.R3D"});
  tree_.File("red/A3.RDC/A3.RMD", "look");
  EXPECT_THAT(
      Findings("red", "ProviderRED"),
      UnorderedElementsAre("missing segment A1.RDC/A1_001.R3D", "missing segment A1.RDC/A1_003.R3D",
                           "missing segment A3.RDC", "orphaned segment A2.RDC/B1_001.R3D"));
}

TEST_F(CardCheck, AnEmptyCardHasNoFindings) {
  MakeP2Card(tree_, "p2");
  MakeXDCAMDisc(tree_, "disc", {});
  MakeXDCAMEXCard(tree_, "ex", {});
  const AvchdCard avchd(tree_, "avchd");
  for (const auto& [card, provider] :
       {std::pair("p2", "ProviderP2"), std::pair("disc", "ProviderXDCAM"),
        std::pair("ex", "ProviderXDCAMEX"), std::pair("avchd", "ProviderAVCHD")}) {
    EXPECT_THAT(Findings(card, provider), IsEmpty()) << card;
  }
}

TEST_F(CardCheck, AbortedOrUnknownChecksAreNeverComplete) {
  MakeP2Card(tree_, "p2");
  EXPECT_FALSE(CheckCard(tree_.Path("p2"), "none").complete);
  EXPECT_FALSE(CheckCard(tree_.Path(""), "com.halvane.Merisk.ProviderP2").complete);
  const auto request =
      Hestra::InterfaceRef<CardCheckRequest, Hestra::IThreadedQueueRequest>(new CardCheckRequest(
          {}, tree_.Path("p2"), "com.halvane.Merisk.ProviderP2", CheckDepth::kStructure));
  request->Abort();
  EXPECT_FALSE(CheckCard(tree_.Path("p2"), "com.halvane.Merisk.ProviderP2", CheckDepth::kStructure,
                         &*request)
                   .complete);
}

TEST_F(CardCheck, RequestPostsOneMessage) {
  MakeP2Card(tree_, "p2");
  AddCompleteP2Clip("p2", {.id = "0001AA"});
  const std::string path = tree_.Path("p2");
  std::vector<CardCheckMessage> messages;
  Hestra::StationUtils::RegisterStation("check", [&messages](const Hestra::Message& message) {
    messages.push_back(dynamic_cast<const CardCheckMessage&>(message));
  });
  RequestCardCheck(path, "com.halvane.Merisk.ProviderP2", CheckDepth::kNames, "check");
  while (messages.empty()) Hestra::StationUtils::WaitAndDispatch(50);
  CardCheckRequest aborted("check", path, "com.halvane.Merisk.ProviderP2", CheckDepth::kNames);
  aborted.AddRef();
  aborted.Abort();
  aborted.Run();
  while (messages.size() < 2) Hestra::StationUtils::WaitAndDispatch(50);
  Hestra::StationUtils::UnregisterStation("check");
  for (const CardCheckMessage& message : messages) {
    EXPECT_EQ(message.path, path);
    EXPECT_EQ(message.identification, "com.halvane.Merisk.ProviderP2");
  }
  EXPECT_EQ(messages[0].result, kResultDone);
  EXPECT_TRUE(messages[0].findings.complete);
  EXPECT_EQ(messages[0].findings.depth, CheckDepth::kNames);
  EXPECT_EQ(messages[0].findings.clips, 1u);
  EXPECT_EQ(messages[1].result, kResultAborted);
  EXPECT_FALSE(messages[1].findings.complete);
}

TEST_F(CardCheck, NamesWhatACopyNeeds) {
  MakeP2Card(tree_, "p2");
  AddCompleteP2Clip("p2", {.id = "0001AA"});
  tree_.File("p2/notes.txt", "x");
  tree_.File("p2/.DS_Store", "x");
  const auto result = CheckCard(tree_.Path("p2"), "com.halvane.Merisk.ProviderP2");
  EXPECT_THAT(result.emptyFolders, Contains(tree_.Path("p2/CONTENTS/PROXY")));
  std::uint64_t bytes = 0;
  std::set<CardFileRole> roles;
  for (const CardFile& file : result.files) {
    roles.insert(file.role);
    const bool isOfCard = file.role == CardFileRole::kClip || file.role == CardFileRole::kStructure;
    EXPECT_EQ(file.isPartOfCopy, isOfCard) << file.path;
    if (isOfCard) bytes += file.bytes;
  }
  EXPECT_TRUE(roles.contains(CardFileRole::kForeign) && roles.contains(CardFileRole::kHidden));
  EXPECT_EQ(result.bytes, bytes);
}

TEST_F(CardCheck, ReportsWhatCannotBeReadToTheHandler) {
  MakeP2Card(tree_, "p2");
  AddCompleteP2Clip("p2", {.id = "0001AA"});
  const std::string record = tree_.File("p2/CONTENTS/CLIP/0001AA.XML", "<P2Main>");
  std::mutex mutex;
  std::vector<std::string> reports;
  SetReadFailureHandler([&](const ReadFailure& failure) {
    const std::lock_guard lock(mutex);
    reports.push_back(failure.path + ": " + failure.reason);
  });
  Findings("p2", "ProviderP2");
  SetReadFailureHandler({});
  EXPECT_THAT(reports, Contains(record + ": not well-formed XML"));
  reports.clear();
  Findings("p2", "ProviderP2");
  EXPECT_THAT(reports, IsEmpty()) << "the handler is removed";
}

TEST_F(CardCheck, MediumFilesAreOutsideOfItsCards) {
  AvchdCard(tree_, "sd/PRIVATE/AVCHD").Clips({"00000"});
  tree_.File("sd/PRIVATE/DATABASE/CLIPS.DAT", "12");
  tree_.File("sd/notes.txt", "x");
  const std::string sd = tree_.Path("sd");
  const auto cards = FindCards(sd, SearchDirection::kNearby);
  const auto list = [&](const std::string& path, MediumFileScope scope, bool stopped = false) {
    std::vector<std::string> files;
    for (const CardFile& file :
         ListMediumFiles(path, cards, scope, [stopped] { return stopped; })) {
      files.push_back(std::string(NameOf(file.role)) + " " + file.path.substr(sd.size() + 1));
    }
    return files;
  };
  EXPECT_THAT(list(sd, MediumFileScope::kStructure),
              ElementsAre("structure PRIVATE/DATABASE/CLIPS.DAT"));
  EXPECT_THAT(list(sd, MediumFileScope::kAll),
              ElementsAre("structure PRIVATE/DATABASE/CLIPS.DAT", "foreign notes.txt"));
  EXPECT_THAT(list(sd, MediumFileScope::kAll, true), IsEmpty()) << "stopped";
  EXPECT_THAT(list(tree_.Path("sd/PRIVATE/AVCHD"), MediumFileScope::kAll), IsEmpty()) << "a card";
}

TEST_F(CardCheck, EntryFilesAreTheRegularFilesEachOnce) {
  const std::string file = tree_.File("a", "12");
  const std::vector<std::string> paths{tree_.Path("missing"), file, tree_.Folder("folder"), file,
                                       "relative"};
  const EntryFiles found = FindEntryFiles(tree_.Root(), paths);
  ASSERT_EQ(found.files.size(), 1u);
  EXPECT_EQ(found.files.front().path, file);
  EXPECT_EQ(found.files.front().bytes, 2u);
  EXPECT_THAT(found.unreachable, IsEmpty());
  EXPECT_THAT(FindEntryFiles(tree_.Root(), paths, [] { return true; }).files, IsEmpty());
}

}  // namespace
