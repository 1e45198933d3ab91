// SPDX-License-Identifier: MIT
// The parts of shots of each structure: order, missing parts and their lengths.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "SorvikProvider/cardtools/ShotParts.h"
#include "SorvikProvider/foundation/Messaging.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/frame/SharedReads.h"
#include "support/AvchdCard.h"
#include "support/Cards.h"
#include "support/ModernCards.h"
#include "support/SoundFile.h"
#include "support/TempTree.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

class ShotPartsOf : public testing::Test {
 protected:
  void SetUp() override {
    ProviderHost::Initialize();
    ProviderHost::RegisterAdditionalProviders();
  }
  void TearDown() override { ProviderHost::Shutdown(); }

  ShotParts Parts(const std::string& card, const std::string& provider, const std::string& key) {
    return GetShotParts(tree_.Path(card), "com.halvane.Merisk." + provider, key);
  }
  // "name frames", with the channel of a sound track, and "?" after a missing part.
  static std::vector<std::string> Lines(const ShotParts& shot) {
    std::vector<std::string> lines;
    for (const ShotPart& part : shot.parts) {
      std::string line = part.name;
      if (part.channel != 0) line += "/" + std::to_string(part.channel);
      line += " " + (part.frames ? std::to_string(*part.frames) : std::string("-"));
      lines.push_back(line + (part.isPresent ? "" : "?") + (part.isInferred ? "~" : ""));
    }
    return lines;
  }

  const TempTree tree_;
};

TEST_F(ShotPartsOf, CallsThatShareReadsListAFolderOnce) {
  tree_.File("card/DCIM/100CANON/MVI_0001.MP4", "clip");
  const auto hasParts = [this](const char* key) {
    return !Parts("card", "ProviderDCIM", key).parts.empty();
  };
  {
    const SharedReads reads;
    const SharedReads::Scope scope(reads);
    EXPECT_TRUE(hasParts("100CANON/MVI_0001"));
    tree_.File("card/DCIM/100CANON/MVI_0002.MP4", "clip");
    EXPECT_FALSE(hasParts("100CANON/MVI_0002"));
  }
  EXPECT_TRUE(hasParts("100CANON/MVI_0002"));
}

TEST_F(ShotPartsOf, P2ShotsOverCards) {
  auto clips = P2Shot({"0003AA", "0001AA", "0002AA"}, "S1");
  for (const char* card : {"one", "two"}) MakeP2Card(tree_, card);
  for (std::size_t i = 0; i < clips.size(); ++i) {
    clips[i].frames = 100 + static_cast<int>(i);
    AddP2Clip(tree_, i == 1 ? "two" : "one", clips[i]);
  }
  for (const char* name : {"0003AA00", "0001AA00", "0002AA00"}) {
    tree_.File((name[3] == '1' ? "two" : "one") + std::string("/CONTENTS/AUDIO/") + name + ".MXF",
               "sound");
  }
  const ShotParts shot = Parts("one", "ProviderP2", "0003AA");
  // The order is that of the references, not of the names. The records list two channels.
  EXPECT_THAT(Lines(shot),
              ElementsAre("0003AA 100", "0001AA 101", "0002AA 102", "0003AA/1 100", "0001AA/1 101",
                          "0002AA/1 102", "0003AA/2 -?", "0001AA/2 -?", "0002AA/2 -?"));
  EXPECT_EQ(shot.rate, (ShotRate{25, 1}));
  EXPECT_EQ(shot.parts[1].path, tree_.Path("two/CONTENTS/VIDEO/0001AA.MXF"));
  EXPECT_EQ(shot.parts[1].track, ShotTrack::kPicture);
  EXPECT_EQ(shot.parts[3].track, ShotTrack::kSound);
  EXPECT_EQ(shot.parts[0].joinMicroseconds, 4'000'000);
  // The same shot by the clip of the other card; without that card a part is missing.
  EXPECT_EQ(Lines(Parts("two", "ProviderP2", "0001AA")), Lines(shot));
  fs::remove_all(tree_.Path("two"));
  const ShotParts rest = Parts("one", "ProviderP2", "0003AA");
  EXPECT_FALSE(rest.isComplete);
  ASSERT_EQ(rest.parts.size(), 9u);
  EXPECT_EQ(rest.parts[1].name, P2GlobalId("0001AA"));
  EXPECT_FALSE(rest.parts[1].isPresent);
}

TEST_F(ShotPartsOf, P2ReferencesThatFormACycle) {
  auto clips = P2Shot({"0001AA", "0002AA"}, "S1");
  clips[0].previous = P2GlobalId("0002AA");
  clips[1].next = P2GlobalId("0001AA");
  for (P2Clip& clip : clips) clip.top.clear();
  MakeP2Card(tree_, "card");
  for (const P2Clip& clip : clips) AddP2Clip(tree_, "card", clip);
  EXPECT_EQ(Parts("card", "ProviderP2", "0001AA").MainTrack().size(), 2u);
}

TEST_F(ShotPartsOf, TakesWithAMissingClip) {
  const std::vector<SonyClip> clips = {{"Clip_01"}, {"Clip_02"}, {"Clip_03"}};
  MakeXDCAMEXCard(tree_, "ex", clips, {{"Take_01", {"Clip_01", "Clip_02", "Clip_03"}}});
  const std::string folder = tree_.Path("ex/BPAV/CLPR/Clip_0");
  const std::string key = folder + "1/Clip_01M01.XML";
  EXPECT_THAT(Lines(Parts("ex", "ProviderXDCAMEX", key)),
              ElementsAre("Clip_01 100", "Clip_02 100", "Clip_03 100"));
  fs::remove(folder + "2/Clip_02.MP4");
  const ShotParts shot = Parts("ex", "ProviderXDCAMEX", key);
  EXPECT_THAT(Lines(shot), ElementsAre("Clip_01 100", "Clip_02 100?", "Clip_03 100"));
  EXPECT_EQ(shot.parts[1].path, folder + "2/Clip_02.MP4");
}

TEST_F(ShotPartsOf, TracksOfXDCAM) {
  MakeXDCAMProav(tree_, "proav", {{"C0001"}});
  const std::string stem = tree_.Path("proav/PROAV/CLPR/C0001/C0001");
  EXPECT_THAT(Lines(Parts("proav", "ProviderXDCAM", stem + "M01.XML")),
              ElementsAre("C0001V01 100", "C0001A01/1 100", "C0001A02/2 100"));
}

TEST_F(ShotPartsOf, InferredPartsOfXAVC) {
  XAVCClip first{"C0001"};
  XAVCClip second{"C0002"};
  second.start = "00040010";
  second.end = "24070010";
  second.created = "2024-05-06T10:00:04+02:00";
  XAVCClip other{"C0003"};
  MakeXAVCCard(tree_, "M4ROOT", XAVCLayout::kM4Root, {first, second, other});
  EXPECT_THAT(Lines(Parts("M4ROOT", "ProviderSonyXAVC", "C0001.MP4")),
              ElementsAre("C0001 100", "C0002 100~"));
  EXPECT_THAT(Lines(Parts("M4ROOT", "ProviderSonyXAVC", "C0003.MP4")), ElementsAre("C0003 100"));
  EXPECT_THAT(Lines(Parts("M4ROOT", "ProviderSonyXAVC", "C0002.MP4")), IsEmpty());
}

TEST_F(ShotPartsOf, PlayItemsOfAVCHD) {
  const AvchdCard card(tree_, "avchd");
  card.Clips({"00001", "00003"});
  card.Playlist("00001", {{"00001"}, {"00002", 6}, {"00003", 6}});
  const ShotParts shot = Parts("avchd", "ProviderAVCHD", "00001.MTS");
  ASSERT_EQ(shot.parts.size(), 3u);
  EXPECT_FALSE(shot.parts[1].isPresent);
  EXPECT_EQ(shot.parts[1].path, card.Path("STREAM/00002.MTS"));
  EXPECT_TRUE(shot.parts[2].isPresent);
  EXPECT_THAT(Lines(Parts("avchd", "ProviderAVCHD", "../00001.MTS")), IsEmpty());
}

TEST_F(ShotPartsOf, NumberedFiles) {
  const std::string name = "A_0001C313A260711_101700EJ_CANON-00";
  MakeCanonFlatCard(tree_, "flat", {name + "2.MP4", name + "4.MP4"});
  EXPECT_THAT(Lines(Parts("flat", "ProviderCanonXFAVC", name + "2.MP4")),
              ElementsAre(name + "2 -", name + "3 -?", name + "4 -"));

  for (const char* span : {"AA000101.MXF", "AA000103.MXF"}) {
    tree_.File(std::string("xf/CONTENTS/CLIPS001/AA0001/") + span, "span");
  }
  tree_.File("xf/CONTENTS/CLIPS001/INDEX.MIF", "index");
  EXPECT_THAT(Lines(Parts("xf", "ProviderCanonXF", "AA000101")),
              ElementsAre("AA000101 -", "AA000102 -?", "AA000103 -"));

  const std::string red = "red/A001_C001.RDC/A001_C001_00";
  const std::string head = tree_.File(red + "1.R3D", "r3d");
  tree_.File(red + "3.R3D", "r3d");
  EXPECT_THAT(Lines(Parts("red", "ProviderRED", head)),
              ElementsAre("A001_C001_001 -", "A001_C001_002 -?", "A001_C001_003 -"));
}

TEST_F(ShotPartsOf, ChaptersOfDCIM) {
  for (const char* name : {"GX010007.MP4", "GX030007.MP4", "GX010008.MP4"}) {
    tree_.File(std::string("card/DCIM/100GOPRO/") + name, "chapter");
  }
  EXPECT_THAT(Lines(Parts("card", "ProviderDCIM", "100GOPRO/GX010007")),
              ElementsAre("GX010007 -", "GX020007 -?", "GX030007 -"));
  EXPECT_THAT(Lines(Parts("card", "ProviderDCIM", "100GOPRO/GX010008")), ElementsAre("GX010008 -"));
}

TEST_F(ShotPartsOf, SegmentsAndSound) {
  const std::string mov = "mov/A001_C001.RDC/A001_C001_00";
  const std::string first = tree_.File(mov + "1.MOV", "movie");
  tree_.File(mov + "3.MOV", "movie");
  EXPECT_THAT(Lines(Parts("mov", "ProviderREDMOV", first)),
              ElementsAre("A001_C001_001 -", "A001_C001_002 -?", "A001_C001_003 -"));

  tree_.File("braw/A001.braw", "raw");
  tree_.File("braw/A001.braw2", "raw");
  EXPECT_EQ(Parts("braw", "ProviderBRAW", "A001.braw").parts.size(), 2u);

  for (const char* track : {"Tr1", "Tr2"}) {
    tree_.File(std::string("roll/001_") + track + ".WAV", MadeRecording({.start = 48000}));
  }
  tree_.File("roll/a.wav", MadeRecording({.start = 480000}));
  tree_.File("roll/b.wav", MadeRecording({.start = 480100}));
  const ShotParts take = Parts("roll", "ProviderSoundRoll", "001_Tr1.WAV");
  EXPECT_THAT(Lines(take), ElementsAre("001_Tr1/1 100", "001_Tr2/2 100"));
  EXPECT_EQ(take.rate, (ShotRate{48000, 1}));
  EXPECT_EQ(take.parts[1].track, ShotTrack::kSound);
  EXPECT_THAT(Lines(Parts("roll", "ProviderSoundRoll", "a.wav")), ElementsAre("a 100", "b 100~"));
}

TEST_F(ShotPartsOf, FramesOfASequence) {
  for (const int number : {7, 8, 10}) {
    tree_.File(
        "dng/A001_" + std::string(number < 10 ? "000" : "00") + std::to_string(number) + ".DNG",
        "frame");
  }
  tree_.File("dng/A001.WAV", "sound");
  const ShotParts shot = Parts("dng", "ProviderCinemaDNG", tree_.Path("dng/A001_0007.DNG"));
  ASSERT_EQ(shot.parts.size(), 2u);
  ASSERT_TRUE(shot.parts[0].images);
  EXPECT_EQ(shot.parts[0].path, tree_.Path("dng"));
  EXPECT_EQ(shot.parts[0].images->prefix, "A001_");
  EXPECT_EQ(shot.parts[0].images->digits, 4u);
  EXPECT_EQ(shot.parts[0].images->missing, 1u);
  EXPECT_EQ(shot.parts[0].frames, 4u);
  EXPECT_FALSE(shot.isComplete);
  EXPECT_EQ(shot.parts[1].track, ShotTrack::kSound);
}

TEST_F(ShotPartsOf, RequestPostsOneMessage) {
  MakeP2Card(tree_, "card");
  AddP2Clip(tree_, "card", {.id = "0001AA"});
  std::vector<ShotPartsMessage> messages;
  Hestra::StationUtils::RegisterStation("parts", [&messages](const Hestra::Message& message) {
    messages.push_back(dynamic_cast<const ShotPartsMessage&>(message));
  });
  for (const char* key : {"0001AA", "0009ZZ"}) {
    RequestShotParts(tree_.Path("card"), "com.halvane.Merisk.ProviderP2", key, "parts");
    const std::size_t expected = messages.size() + 1;
    while (messages.size() < expected) Hestra::StationUtils::WaitAndDispatch(50);
  }
  Hestra::StationUtils::UnregisterStation("parts");
  EXPECT_EQ(messages[0].result, kResultDone);
  EXPECT_EQ(messages[0].key, "0001AA");
  EXPECT_FALSE(messages[0].shot.parts.empty());
  EXPECT_EQ(messages[1].result, kResultNoContent);
}

TEST(ShotTimecodes, CountFrames) {
  const ShotRate pal{25, 1};
  const ShotRate ntsc{30000, 1001};
  const ShotRate fast{60000, 1001};
  EXPECT_EQ(FramesOfTimecode("10:20:00:00", pal), 930000u);
  EXPECT_EQ(TimecodeOfFrames(930000, pal, false), "10:20:00:00");
  // Frame numbers 0 and 1 are skipped each minute, but not each tenth.
  EXPECT_EQ(FramesOfTimecode("00:01:00;02", ntsc), 1800u);
  EXPECT_EQ(FramesOfTimecode("00:10:00;00", ntsc), 17982u);
  EXPECT_EQ(TimecodeOfFrames(1799, ntsc, true), "00:00:59;29");
  EXPECT_EQ(TimecodeOfFrames(1800, ntsc, true), "00:01:00;02");
  EXPECT_EQ(TimecodeOfFrames(17981, ntsc, true), "00:09:59;29");
  EXPECT_EQ(TimecodeOfFrames(17982, ntsc, true), "00:10:00;00");
  EXPECT_EQ(TimecodeOfFrames(3600, fast, true), "00:01:00;04");
  for (std::uint64_t frames = 0; frames < 20000; frames += 7) {
    EXPECT_EQ(FramesOfTimecode(TimecodeOfFrames(frames, ntsc, true), ntsc), frames);
  }
  EXPECT_EQ(TimecodeOfFrames(24 * 3600 * 25, pal, false), "00:00:00:00");
  for (const char* invalid : {"", "10:20:00", "10:20:00:25", "a:b:c:d", "10:61:00:00",
                              "10:20:00:00 ", "99999999999999999999:00:00:00"}) {
    EXPECT_EQ(FramesOfTimecode(invalid, pal), std::nullopt) << invalid;
  }
  EXPECT_EQ(FramesOfTimecode("10:20:00:00", {}), std::nullopt);
}

}  // namespace
