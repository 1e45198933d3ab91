// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "providers/modern/ProviderSoundRoll.h"
#include "providers/modern/SoundTakes.h"
#include "support/CheckText.h"
#include "support/SoundFile.h"
#include "support/TempTree.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const ProviderSoundRoll kProvider;
const FieldNameSet kPaths{kNameField, kPathField, kExtraPathField};
constexpr std::uint64_t kHour = 3600 * 48000ULL;

// The takes of a folder as "first: others".
std::vector<std::string> Takes(const std::string& root) {
  std::vector<std::string> takes;
  for (const auto& [key, fields] : kProvider.GetContent(root, kPaths, nullptr)) {
    std::string take = key + ":";
    for (const std::string& path : ExtraPathsOf(fields, root)) take += " " + path;
    takes.push_back(take);
  }
  return takes;
}

TEST(ProviderSoundRoll, GroupsFilesOfATake) {
  const TempTree tree;
  const auto add = [&tree](const std::string& name, const Recording& recording) {
    tree.File("roll/" + name, MadeRecording(recording));
  };
  // By the family, whatever the names and the place of the chunk.
  add("A1.WAV", {.ixml = FamilyXml("f1", "A", 2), .start = kHour});
  add("zz.wav", {.ixml = FamilyXml("f1", "B", 2), .start = kHour, .ixmlLast = true});
  add("A2.WAV", {.ixml = FamilyXml("f2", "A", 1), .start = 2 * kHour});
  tree.File("roll/A1.xml");
  tree.File("roll/210304_REPORT.csv");
  tree.File("roll/notes.txt");
  tree.File("roll/._A1.WAV");
  // By track names.
  add("001_Tr1.WAV", {.start = 3 * kHour});
  add("001_Tr2.WAV", {.start = 3 * kHour});
  add("001_LR.WAV", {.start = 3 * kHour, .channels = 2});
  add("002_Tr1.WAV", {.bext = false});
  add("002_tr2.wav", {.bext = false});
  // A digit is a track only with the same start; it can also number takes.
  add("T_1.WAV", {.start = 5 * kHour});
  add("T_2.WAV", {.start = 5 * kHour});
  add("U_1.WAV", {.start = 6 * kHour});
  add("U_2.WAV", {.start = 7 * kHour});
  add("V_1.WAV", {});
  add("V_2.WAV", {});
  const std::string root = tree.Path("roll");
  EXPECT_EQ(kProvider.CanProvideFor(root), 100);
  const std::string report = " 210304_REPORT.csv";
  EXPECT_THAT(Takes(root),
              ElementsAre("001_LR.WAV: 001_Tr1.WAV 001_Tr2.WAV" + report,
                          "002_Tr1.WAV: 002_tr2.wav" + report, "A1.WAV: zz.wav A1.xml" + report,
                          "A2.WAV:" + report, "T_1.WAV: T_2.WAV" + report, "U_1.WAV:" + report,
                          "U_2.WAV:" + report, "V_1.WAV:" + report, "V_2.WAV:" + report));
  EXPECT_EQ(TextOf(kProvider.GetContent(root, "A1.WAV", kPaths).at("A1.WAV"), kNameField),
            "Name of f1");
  EXPECT_EQ(TextOf(kProvider.GetContent(root, "001_LR.WAV", kPaths).at("001_LR.WAV"), kNameField),
            "001");
  for (const char* key : {"", "..", "zz.wav", "notes.txt"}) {
    EXPECT_THAT(kProvider.GetContent(root, key, kPaths), IsEmpty()) << key;
  }
}

TEST(ProviderSoundRoll, JoinsPartsThatContinueAtTheNextSample) {
  const TempTree tree;
  const std::string scene = "<SCENE>1</SCENE>";
  const auto add = [&](const std::string& name, std::uint64_t start,
                       const std::string& ixml = "<SCENE>1</SCENE>", unsigned channels = 1) {
    tree.File("roll/" + name, MadeRecording({.ixml = ixml, .start = start, .channels = channels}));
  };
  add("a.wav", kHour);
  add("b.wav", kHour + 100);
  add("c.wav", kHour + 200);
  add("gap.wav", kHour + 301);
  add("scene.wav", kHour + 401, "<SCENE>2</SCENE>");
  add("tracks.wav", kHour + 501, "<SCENE>2</SCENE>", 2);
  add("night.wav", 24 * kHour - 50);
  add("morning.wav", 50);
  add("twin1.wav", 5 * kHour);
  add("twin2.wav", 5 * kHour + 100);
  add("twin3.wav", 5 * kHour + 100);
  const std::string root = tree.Path("roll");
  EXPECT_THAT(Takes(root),
              ElementsAre("a.wav: b.wav c.wav", "gap.wav:", "night.wav: morning.wav",
                          "scene.wav:", "tracks.wav:", "twin1.wav:", "twin2.wav:", "twin3.wav:"));
  const auto fields = kProvider.GetContent(root, "a.wav", {"frameCount", "scene", "takeNumber"});
  EXPECT_EQ(TextOf(fields.at("a.wav"), "frameCount"), "300 @ 1/48000");
  EXPECT_EQ(TextOf(fields.at("a.wav"), "scene"), "1");

  const Checked checked("com.halvane.Merisk.ProviderSoundRoll", root);
  EXPECT_THAT(checked.findings,
              UnorderedElementsAre("unlisted note span b.wav", "unlisted note span c.wav",
                                   "unlisted note span morning.wav"));
  EXPECT_THAT(checked.result.findings.front().detail, testing::StartsWith("inferred"));
  EXPECT_TRUE(checked.result.complete);
}

TEST(ProviderSoundRoll, RecognizesRecordersByAtMostTwoFiles) {
  const TempTree tree;
  const std::string plain = MadeRecording({.bext = false});
  tree.File("music/a.wav", plain);
  tree.File("music/b.wav", MadeRecording({.originator = ""}));
  tree.File("music/c.wav", MadeRecording({}));
  tree.File("second/a.wav", plain);
  tree.File("second/b.wav", MadeRecording({}));
  tree.File("emptied/a.wav", "");
  tree.File("emptied/b.wav", plain.substr(0, 20));
  tree.File("emptied/c.wav", MadeRecording({}));
  tree.File("far/a.wav", MadeRecording({.paddingBefore = 70'000}));
  tree.File("mixed/a.wav", MadeRecording({.ixml = "<TAKE>1</TAKE>", .bext = false}));
  tree.File("mixed/a.mov");
  for (const char* frame : {"ari", "dng", "R3D"}) {
    tree.File(std::string(frame) + "/a.wav", MadeRecording({}));
    tree.File(std::string(frame) + "/a." + frame);
  }
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("music")), 0);
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("second")), 100);
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("emptied")), 100);
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("far")), 0);
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("mixed")), 40);
  for (const char* other : {"ari", "dng", "R3D", "missing", "second/b.wav"}) {
    EXPECT_EQ(kProvider.CanProvideFor(tree.Path(other)), 0) << other;
  }
}

TEST(ProviderSoundRoll, ReportsMissingFilesOfATake) {
  const TempTree tree;
  const auto add = [&tree](const std::string& name, const std::string& ixml) {
    tree.File("roll/" + name, MadeRecording({.ixml = ixml, .start = kHour}));
  };
  add("a.wav", FamilyXml("f1", "A", 4));
  add("c.wav", FamilyXml("f1", "C", 4));
  add("d.wav", FamilyXml("f2", "A", 1));
  tree.File("roll/e.wav", MadeRecording({.start = 2 * kHour}).substr(0, 700));
  tree.File("roll/f.wav", "");
  const Checked checked("com.halvane.Merisk.ProviderSoundRoll", tree.Path("roll"));
  EXPECT_THAT(checked.findings,
              UnorderedElementsAre("missing error sound channel " + tree.Path("roll"),
                                   "truncated error sound channel e.wav",
                                   "empty error sound channel f.wav"));
  EXPECT_THAT(checked.result.findings,
              Contains(testing::Field(&Finding::detail, "2 of 4 files of the take exist (A, C)")));
  EXPECT_THAT(checked.foreign, IsEmpty());
}

TEST(ProviderSoundRoll, StopsWhenAborted) {
  const TempTree tree;
  tree.File("roll/a.wav", MadeRecording({}));
  const auto request = Hestra::InterfaceRef<ProviderContentRequest>(
      new ProviderContentRequest("test", {}, tree.Path("roll"), kPaths));
  EXPECT_EQ(kProvider.GetContent(tree.Path("roll"), kPaths, &*request).size(), 1u);
  request->Abort();
  EXPECT_THAT(kProvider.GetContent(tree.Path("roll"), kPaths, &*request), IsEmpty());
}

TEST(ProviderSoundRoll, SurvivesHostileFolders) {
  const TempTree tree;
  tree.File("roll/a.wav", MadeRecording({.ixml = FamilyXml("f", "A", 4294967295U)}));
  tree.File("roll/b.wav", MadeRecording({.start = ~std::uint64_t{0}, .samples = 0}));
  tree.File("roll/c.wav", MadeRecording({.ixml = "<FILE_SET><FAMILY_UID>../x</FAMILY_UID>"}));
  tree.File("roll/d.wav", "RIFF");
  tree.File("roll/_1.wav", MadeRecording({.channels = 0}));
  tree.Folder("roll/folder.wav");
  ASSERT_EQ(mkfifo(tree.Path("roll/pipe.wav").c_str(), 0600), 0);
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("roll")), 100);
  EXPECT_THAT(KeysOf(kProvider.GetContent(tree.Path("roll"), kPaths, nullptr)),
              ElementsAre("_1.wav", "a.wav", "b.wav", "c.wav", "d.wav"));
}

TEST(SoundTakes, LoseNoFileToContradictingTimes) {
  const auto file = [](const char* name, std::uint64_t start, std::uint64_t samples) {
    auto facts = std::make_shared<formats::sound::RecorderFile>();
    facts->broadcast.emplace().timeReference = start;
    facts->sampleRate = 48000;
    facts->samples = samples;
    return soundroll::TakeFile{name, facts};
  };
  // Two halves of a day continue each other; the second day is no part of the first.
  const auto takes =
      soundroll::GroupTakes({file("a", 0, 12 * kHour), file("b", 12 * kHour, 12 * kHour)});
  ASSERT_EQ(takes.size(), 1u);
  EXPECT_EQ(takes[0].FileCount(), 2u);
  EXPECT_EQ(soundroll::GroupTakes({file("a", 0, 24 * kHour)}).size(), 1u) << "not of itself";
  EXPECT_EQ(soundroll::GroupTakes({file("a", ~std::uint64_t{0}, 5), file("b", 4, 5)}).size(), 2u);
  // Zeros identify no family.
  auto zero = std::make_shared<formats::sound::RecorderFile>();
  zero->ixml.emplace().familyUid = "00000000-0000";
  EXPECT_EQ(soundroll::GroupTakes({{"a", zero}, {"b", zero}}).size(), 2u);
}

TEST(SoundTakes, TrackNames) {
  struct Case {
    const char* stem;
    const char* base;
    bool isTrack;
  };
  for (const Case& c : std::initializer_list<Case>{{"1_Tr12", "1", true},
                                                   {"1_lr", "1", true},
                                                   {"1_Tr", "1_Tr", false},
                                                   {"260920_001", "260920_001", false},
                                                   {"260920_1", "260920", false},
                                                   {"_1", "_1", false},
                                                   {"", "", false}}) {
    bool isTrack = false;
    EXPECT_EQ(soundroll::WithoutTrack(c.stem, isTrack), c.base) << c.stem;
    EXPECT_EQ(isTrack, c.isTrack) << c.stem;
  }
}

}  // namespace
