// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "providers/common/StructureParts.h"
#include "providers/structures/ProviderAVCHD.h"
#include "providers/structures/ProviderCanonXF.h"
#include "providers/structures/ProviderSonyHDV.h"
#include "support/AvchdCard.h"
#include "support/FakeProvider.h"
#include "support/TempTree.h"

namespace {

using namespace Sorvik;
using sorvik_test::TempTree;

std::vector<std::string> Missing(const StructureFindings& findings, const std::string& root) {
  std::vector<std::string> lines;
  for (const StructurePart& part : findings.missing) {
    lines.push_back(part.entryKey + ": " + part.kind + " " + part.path.substr(root.size() + 1));
  }
  return lines;
}

using Lines = std::vector<std::string>;

TEST(StructureChecks, ReportMissingAndUnreachedStreamsOfAVCHD) {
  for (const char* folder : {"", "AVCHD"}) {
    const TempTree tree;
    const sorvik_test::AvchdCard card(tree, folder);
    card.Playlist("00000", {{"00000"}, {"00001", 6}, {"00002"}});
    card.Playlist("00003", {{"00000"}, {"odd!!"}});
    card.File("STREAM/00000.MTS");
    card.File("CLIPINF/00000.CPI");
    card.File("STREAM/00002.MTS");
    card.File("STREAM/00007.MTS");
    card.File("STREAM/00002.mts");  // a listing uses 00002.MTS
    card.File("STREAM/thumbs.db");
    card.File("BACKUP/CLIPINF/00000.CPI");
    const StructureFindings findings = ProviderAVCHD().CheckStructure(tree.Root());
    EXPECT_EQ(Missing(findings, card.BDMV()),
              (Lines{"00000.MTS: stream STREAM/00001.MTS",
                     "00000.MTS: clip information CLIPINF/00001.CPI",
                     "00002.MTS: clip information CLIPINF/00002.CPI"}));
    ASSERT_EQ(findings.unreached.size(), 2u);
    EXPECT_EQ(findings.unreached[0].path, card.Path("STREAM/00002.mts"));
    EXPECT_EQ(findings.unreached[1].path, card.Path("STREAM/00007.MTS"));
    EXPECT_THAT(findings.structureFiles,
                testing::AllOf(testing::Contains(card.Path("PLAYLIST/00000.MPL")),
                               testing::Contains(card.Path("BACKUP/CLIPINF/00000.CPI")),
                               testing::Not(testing::Contains(testing::HasSubstr("STREAM")))));
  }
}

// A stream can be in a playlist and still belong to no entry.
TEST(StructureChecks, ReportStreamsOfNoAVCHDEntry) {
  const TempTree tree;
  const sorvik_test::AvchdCard card(tree);
  card.Clips({"00001", "00002", "00003", "00004", "00006", "00007", "00008"});
  const auto list = [](const std::vector<sorvik_test::PlayItemOf>& items) {
    return sorvik_test::PlaylistOf(items).str();
  };
  // The shot of 00001 is searched in playlists up to 00001.
  card.File("PLAYLIST/00009.MPL", list({{"00001"}, {"00002", 6}}));
  card.File("PLAYLIST/00003.mpl", list({{"00003"}}));                // ignored in this spelling
  card.File("PLAYLIST/.00004.MPL", list({{"00004"}}));               // hidden
  card.File("PLAYLIST/00005.MPL", list({{"00005"}, {"00006", 6}}));  // its head is missing
  card.File("PLAYLIST/00007.MPL", list({{"00007"}, {"00008", 6}}));
  card.File("STREAM/copy of 00001.mts");
  std::vector<std::string> unreached;
  for (const auto& part : ProviderAVCHD().CheckStructure(tree.Root()).unreached) {
    unreached.push_back(part.path.substr(card.Path("STREAM/").size()));
  }
  EXPECT_EQ(unreached,
            (Lines{"00002.MTS", "00003.MTS", "00004.MTS", "00006.MTS", "copy of 00001.mts"}));
}

TEST(StructureChecks, ReportMissingSpansOfCanonXF) {
  const TempTree tree;
  const std::string root = "CONTENTS/CLIPS001/";
  for (const char* file :
       {"INDEX.MIF", "AA0001/AA000102.MXF", "AA0001/AA000104.MXF", "AA0001/AA0001.CIF",
        "AB0002/AB000201.MXF", "AB0002/._AB0002.CIF", "AC0003/x"}) {
    tree.File(root + file);
  }
  const Lines expected{"AA000102: span CONTENTS/CLIPS001/AA0001/AA000101.MXF",
                       "AA000102: span CONTENTS/CLIPS001/AA0001/AA000103.MXF",
                       "AB000201: clip information CONTENTS/CLIPS001/AB0002/AB0002.CIF",
                       ": span CONTENTS/CLIPS001/AC0003/AC000301.MXF"};
  const StructureFindings found = ProviderCanonXF().CheckStructure(tree.Root());
  EXPECT_EQ(Missing(found, tree.Root()), expected);
  EXPECT_EQ(found.structureFiles, Lines{tree.Path(root + "INDEX.MIF")});
  ProviderHost::Initialize();
  const char* id = "com.halvane.Merisk.ProviderCanonXF";
  EXPECT_EQ(Missing(CheckStructure(tree.Root(), id), tree.Root()), expected);
  EXPECT_TRUE(CheckStructure(tree.Path("CONTENTS"), id).missing.empty());
  // Without its index the card isn't recognized, though spans are missing all the same.
  std::filesystem::remove(tree.Path(root + "INDEX.MIF"));
  EXPECT_EQ(Missing(ProviderCanonXF().CheckStructure(tree.Root()), tree.Root()), expected);
  EXPECT_TRUE(CheckStructure(tree.Root(), id).missing.empty());
  EXPECT_TRUE(CheckStructure(tree.Root(), "com.halvane.Merisk.ProviderSonyHDV").missing.empty());
  EXPECT_TRUE(CheckStructure(tree.Root(), "unknown").missing.empty());
  ProviderHost::Shutdown();
}

TEST(StructureChecks, ReportMissingIndexesOfSonyHDV) {
  const TempTree tree;
  for (const char* file : {"00_0012_2014-01-31_101530.M2T", "00_0012_2014-01-31_101530.IDX",
                           "00_0012_2014-01-31_103000.M2T", "00_0013_2014-01-31_104500.M2T"}) {
    tree.File(std::string("VIDEO/HVR/") + file);
  }
  EXPECT_EQ(Missing(ProviderSonyHDV().CheckStructure(tree.Root()), tree.Root()),
            (Lines{"00_0013_2014-01-31_104500.M2T: index "
                   "VIDEO/HVR/00_0013_2014-01-31_104500.IDX"}));
}

// A case-insensitive file system finds a file under another spelling. Elsewhere a listed path that
// doesn't exist is another file.
TEST(StructureChecks, IgnoreListedPathsThatDoNotExist) {
  const TempTree tree;
  const std::string file = tree.File("CLIP/A001.MXF");
  const auto answers = std::make_shared<sorvik_test::FakeAnswers>();
  std::string listed;
  answers->listing = [&listed](ProviderRequest*) {
    return ContentMap{{"A001", {{kPathField, any_regular_t(listed)}}}};
  };
  const sorvik_test::FakeProvider provider(answers);
  const auto unreached = [&](const std::string& path) {
    listed = path;
    StructureFindings findings;
    AddUnreached(provider, tree.Root(), "media", {file}, findings);
    return findings.unreached.size();
  };
  EXPECT_EQ(unreached(file), 0u);
  EXPECT_EQ(unreached(tree.Path("CLIP/a001.mxf")), 1u) << "doesn't exist";
  std::filesystem::create_symlink("A001.MXF", tree.Path("CLIP/a001.mxf"));
  EXPECT_EQ(unreached(tree.Path("CLIP/a001.mxf")), 0u) << "exists in another spelling";
}

}  // namespace
