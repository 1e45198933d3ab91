// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <vector>

#include "SorvikProvider/cardtools/Catalogue.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "foundation/JsonReader.h"
#include "support/AllCards.h"
#include "support/Cards.h"
#include "support/TempTree.h"
#include "support/TestShare.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using foundation::JsonValue;
using foundation::ParseJson;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace fs = std::filesystem;

class Catalogue : public testing::Test {
 protected:
  void SetUp() override {
    ProviderHost::Initialize();
    ProviderHost::RegisterAdditionalProviders();
    options_.tool = "test 1";
  }
  void TearDown() override { ProviderHost::Shutdown(); }

  std::string Write(const std::vector<std::string>& paths) {
    std::string lines;
    result_ = WriteCatalogue(paths, options_, [&lines](std::string_view line) {
      lines += line;
      return true;
    });
    return lines;
  }
  std::string WriteAll() { return Write({tree_.Path("cards")}); }

  // Stores the lines as the earlier catalogue.
  void SetSince(const std::string& lines) {
    options_.since = CatalogueIndex::Open(tree_.File("old.ndjson", lines));
    ASSERT_TRUE(options_.since);
  }

  void MakeP2(const std::string& card, const std::vector<std::string>& clips) const {
    MakeP2Card(tree_, card);
    for (const std::string& clip : clips) AddP2Clip(tree_, card, {.id = clip});
  }

  static std::vector<JsonValue> LinesOf(const std::string& lines, std::string_view type) {
    std::vector<JsonValue> found;
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
      const auto json = ParseJson(line);
      EXPECT_TRUE(json) << line;
      if (json && (*json)["type"].text == type) found.push_back(*json);
    }
    return found;
  }

  // The sorted lines without "end".
  static std::vector<std::string> Sorted(const std::string& lines) {
    std::vector<std::string> all;
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
      if (!line.starts_with("{\"type\":\"end\"")) all.push_back(line);
    }
    std::ranges::sort(all);
    return all;
  }

  const TempTree tree_;
  CatalogueOptions options_;
  CatalogueResult result_;
};

TEST_F(Catalogue, HasTheSameBytesForAnyNumberOfJobs) {
  const TempTree cards;
  const auto made = MakeAllCards(cards);
  const std::string one = Write({cards.Root()});
  EXPECT_EQ(LinesOf(one, "card").size(), result_.cards);
  EXPECT_GE(result_.cards, made.size());
  EXPECT_EQ(LinesOf(one, "clip").size(), result_.clips);
  const auto end = LinesOf(one, "end");
  ASSERT_EQ(end.size(), 1u);
  EXPECT_EQ(end[0]["clips"].Integer(), static_cast<std::int64_t>(result_.clips));
  EXPECT_TRUE(end[0]["ok"].boolean);
  for (const std::size_t jobs : {2u, 16u}) {
    options_.jobs = jobs;
    EXPECT_EQ(Write({cards.Root()}), one) << jobs;
  }
}

TEST_F(Catalogue, NamesClipsFilesAndProblemsOfACard) {
  MakeP2("cards/a", {"0001AB"});
  tree_.File("cards/a/CONTENTS/VIDEO/0009ZZ.MXF", "orphan");
  const std::string lines = WriteAll();
  const auto card = LinesOf(lines, "card");
  ASSERT_EQ(card.size(), 1u);
  EXPECT_EQ(card[0]["path"].text, tree_.Path("cards/a"));
  EXPECT_FALSE(card[0]["complete"].boolean);
  const auto clip = LinesOf(lines, "clip");
  ASSERT_EQ(clip.size(), 1u);
  EXPECT_EQ(clip[0]["card"].text, card[0]["id"].text);
  EXPECT_EQ(clip[0]["fields"]["duration"]["count"].Integer(), 100);
  EXPECT_EQ(clip[0]["fields"]["duration"]["rate"].text, "25/1");
  bool hasOrphan = false;
  for (const JsonValue& problem : LinesOf(lines, "problem")) {
    hasOrphan = hasOrphan || problem["kind"].text == "orphaned";
    EXPECT_EQ(problem["card"].text, card[0]["id"].text);
  }
  EXPECT_TRUE(hasOrphan);
  EXPECT_TRUE(result_.anyIncomplete);
  options_.clips = options_.files = options_.problems = false;
  EXPECT_EQ(Sorted(WriteAll()).size(), 1u);
}

TEST_F(Catalogue, ListsFilesOfOwnFoldersOnly) {
  MakeP2("cards", {"0001AB"});
  tree_.File("cards/other/large/archive.bin", "x");
  MakeP2("cards/other/p2", {"0002AB"});
  std::set<std::string> paths;
  for (const JsonValue& file : LinesOf(WriteAll(), "file")) {
    EXPECT_TRUE(paths.insert(file["path"].text).second) << "twice: " << file["path"].text;
  }
  EXPECT_EQ(result_.cards, 2u);
  EXPECT_FALSE(paths.contains(tree_.Path("cards/other/large/archive.bin")));
  options_.searchesBelow = false;
  EXPECT_EQ(LinesOf(WriteAll(), "card").size(), 1u);
}

TEST_F(Catalogue, WritesAFolderOnceHoweverItIsReached) {
  MakeP2("cards/a", {"0001AB"});
  fs::create_directory_symlink(tree_.Path("cards"), tree_.Path("link"));
  const std::string once = WriteAll();
  EXPECT_EQ(Write({tree_.Path("cards"), tree_.Path("link"), tree_.Path("cards/a"),
                   tree_.Path("cards/a/CONTENTS/CLIP")}),
            once);
}

TEST_F(Catalogue, ShardsAreThePartsOfOneRun) {
  for (int i = 0; i < 12; ++i) MakeP2("cards/" + std::to_string(i), {"0001AB"});
  const auto oneRun = Sorted(WriteAll());
  std::string all;
  options_.shards = 3;
  int filled = 0;
  for (options_.shard = 0; options_.shard < 3; ++options_.shard) {
    const std::string part = WriteAll();
    all += part;
    filled += !LinesOf(part, "card").empty();
    EXPECT_THAT(result_.pathsWithoutCards, IsEmpty()) << "an empty shard is no error";
  }
  EXPECT_EQ(Sorted(all), oneRun);
  EXPECT_GE(filled, 2);
  // The same on all machines.
  EXPECT_EQ(ShardOf("/mnt/archive/day1/CARD", 7), 5u);
  EXPECT_EQ(ShardOf("/mnt/archive/day2/CARD", 7), 3u);
}

TEST_F(Catalogue, IdentitiesSurviveCopiesAndRenames) {
  MakeXDCAMDisc(tree_, "cards/disc", {{.name = "C0001"}});
  const auto identities = [this](const std::string& path) {
    std::vector<std::string> found;
    for (const JsonValue& clip : LinesOf(Write({path}), "clip")) {
      found.push_back(clip["identity"].text + " " + clip["identityFrom"].text);
    }
    return found;
  };
  const auto first = identities(tree_.Path("cards/disc"));
  ASSERT_EQ(first.size(), 1u);
  EXPECT_THAT(first[0], testing::EndsWith(" umid"));
  fs::copy(tree_.Path("cards/disc"), tree_.Path("copy"), fs::copy_options::recursive);
  for (const char* name : {"Clip/C0001.MXF", "Clip/C0001M01.XML"}) {
    const std::string old = tree_.Path(std::string("copy/") + name);
    std::string renamed = old;
    renamed.replace(renamed.find("C0001", renamed.rfind('/')), 5, "C0777");
    fs::rename(old, renamed);
  }
  EXPECT_EQ(identities(tree_.Path("copy")), first);
}

TEST_F(Catalogue, CopiesTheLinesOfUnchangedCards) {
  MakeP2("cards/a", {"0001AB"});
  MakeP2("cards/b", {"0002AB"});
  const std::string first = WriteAll();
  SetSince(first);
  EXPECT_EQ(WriteAll(), first);
  EXPECT_EQ(result_.copiedCards, 2u);
  // As a program of Windows stores it.
  std::string stored = "\xEF\xBB\xBF" + first;
  for (auto at = stored.find('\n'); at != stored.npos; at = stored.find('\n', at + 2)) {
    stored.insert(at, 1, '\r');
  }
  SetSince(stored);
  EXPECT_EQ(WriteAll(), first);
  EXPECT_EQ(result_.copiedCards, 2u);

  // The same size, another time; a new file; a removed file; a new card next to the others.
  tree_.File("cards/a/CONTENTS/VIDEO/0001AB.MXF", "another");
  EXPECT_THAT(WriteAll(), Not(testing::StrEq(first)));
  EXPECT_EQ(result_.copiedCards, 1u);
  AddP2Clip(tree_, "cards/b", {.id = "0003AB"});
  EXPECT_EQ(LinesOf(WriteAll(), "clip").size(), 3u);
  EXPECT_EQ(result_.copiedCards, 0u);
  MakeP2("cards/c", {"0004AB"});
  MakeXDCAMEXCard(tree_, "cards/a", {{"A_01"}});
  EXPECT_EQ(LinesOf(WriteAll(), "card").size(), 4u) << "a second structure in a known folder";
  options_.since = nullptr;
  const std::string fresh = WriteAll();
  SetSince(first);
  EXPECT_EQ(WriteAll(), fresh);
}

TEST_F(Catalogue, CopiesOnlyFromACompleteCatalogueOfTheSameKind) {
  MakeP2("cards/a", {"0001AB"});
  const std::string first = WriteAll();
  // Cut off anywhere, the lines are made again.
  for (std::size_t length = 0; length < first.size(); length += 97) {
    SetSince(first.substr(0, length));
    EXPECT_EQ(WriteAll(), first) << length;
  }
  SetSince(first);
  options_.tool = "test 2";
  WriteAll();
  EXPECT_EQ(result_.copiedCards, 0u) << "another version";
  options_.tool = "test 1";
  options_.depth = CheckDepth::kNames;
  WriteAll();
  EXPECT_EQ(result_.copiedCards, 0u) << "another depth";
  options_.depth = CheckDepth::kStructure;
  options_.clips = false;
  const std::string withoutClips = WriteAll();
  SetSince(withoutClips);
  options_.clips = true;
  EXPECT_EQ(WriteAll(), first);
}

TEST_F(Catalogue, ReadsBackWhatItHasWritten) {
  MakeP2("cards/a\xff", {"0001AB"});
  tree_.File("cards/a\xff/CONTENTS/VIDEO/0009ZZ.MXF", "orphan");
  const std::string lines = WriteAll();
  const auto index = CatalogueIndex::Open(tree_.File("all.ndjson", "junk\n{}\n" + lines + lines));
  ASSERT_EQ(index->Cards().size(), 1u) << "the later lines replace the earlier ones";
  EXPECT_FALSE(index->IsCutOff());
  EXPECT_EQ(index->Cards()[0].path, tree_.Path("cards/a\xff"));
  CataloguedCard card;
  ASSERT_TRUE(ReadCataloguedCard(*index, index->Cards()[0], card));
  const CardFindings live = CheckCard(card.path, card.identification);
  ASSERT_EQ(card.findings.findings.size(), live.findings.size());
  EXPECT_EQ(card.findings.findings[0].path, live.findings[0].path);
  EXPECT_EQ(card.findings.findings[0].kind, live.findings[0].kind);
  EXPECT_EQ(card.findings.files.size(), live.files.size());
  EXPECT_EQ(card.findings.bytes, live.bytes);
  ASSERT_EQ(card.clips.size(), 1u);
  EXPECT_EQ(card.clips[0].key, "0001AB");
  EXPECT_TRUE(ParseJson(card.clips[0].fields)) << card.clips[0].fields;
  EXPECT_FALSE(CatalogueIndex::Open(tree_.Path("missing")));
  EXPECT_TRUE(CatalogueIndex::Open(tree_.File("cut", lines.substr(0, 900)))->IsCutOff());
}

TEST_F(Catalogue, ReportsPathsThatCannotBeRead) {
  const std::string lines = Write({tree_.Path("missing"), tree_.Folder("empty")});
  EXPECT_TRUE(result_.anyUnreadable);
  EXPECT_FALSE(result_.anyTransient);
  EXPECT_EQ(result_.pathsWithoutCards.size(), 2u);
  EXPECT_EQ(LinesOf(lines, "problem").size(), 1u);
  EXPECT_FALSE(LinesOf(lines, "end")[0]["ok"].boolean);
}

TEST_F(Catalogue, StopsWithoutAnEnd) {
  for (int i = 0; i < 8; ++i) MakeP2("cards/" + std::to_string(i), {"0001AB"});
  std::string lines;
  int count = 0;
  result_ = WriteCatalogue({tree_.Path("cards")}, options_, [&](std::string_view line) {
    lines += line;
    return ++count < 3;
  });
  EXPECT_TRUE(result_.aborted);
  EXPECT_EQ(count, 3);
  EXPECT_THAT(lines, Not(HasSubstr("\"end\"")));
  result_ = WriteCatalogue(
      {tree_.Path("cards")}, options_, [](std::string_view) { return true; }, [] { return true; });
  EXPECT_TRUE(result_.aborted);
}

class CatalogueOfAShare : public Catalogue {};

TEST_F(CatalogueOfAShare, JobsOverlapTheLatencyOfTheServer) {
  constexpr long kJobs = 8;
  TestShare share(tree_.Folder("server"), tree_.Folder("share"));
  if (!share) GTEST_SKIP() << share.Reason();
  for (long i = 0; i < kJobs; ++i) MakeP2("server/" + std::to_string(i), {"0001AB"});
  share.SetDelay(std::chrono::milliseconds(1));
  const auto calls = [&](std::size_t jobs) {
    options_.jobs = jobs;
    share.MostCalls();
    Write({tree_.Path("share")});
    EXPECT_EQ(result_.cards, static_cast<std::uint64_t>(kJobs));
    return share.MostCalls();
  };
  const long one = calls(1);
  EXPECT_GT(calls(kJobs), one + 2) << "bench/slowcatalogue.sh measures the time";
}

TEST_F(CatalogueOfAShare, AHangingMountCostsItsOwnLines) {
  TestShare share(tree_.Folder("server"), tree_.Folder("share"));
  if (!share) GTEST_SKIP() << share.Reason();
  MakeP2("server/card", {"0003AB"});
  MakeP2("cards/a", {"0001AB"});
  MakeP2("cards/b", {"0002AB"});
  const std::vector<std::string> paths = {tree_.Path("cards/a"), tree_.Path("share"),
                                          tree_.Path("cards/b")};
  EXPECT_EQ(LinesOf(Write(paths), "card").size(), 3u);
  share.Stop();
  // The other cards must not take that long on a busy machine.
  options_.cardTimeout = std::chrono::seconds(5);
  options_.jobs = 4;
  const std::string lines = Write(paths);
  EXPECT_TRUE(result_.anyTransient);
  EXPECT_EQ(LinesOf(lines, "card").size(), 2u);
  std::vector<std::string> timeouts;
  for (const JsonValue& problem : LinesOf(lines, "problem")) {
    if (problem["kind"].text == "timeout") timeouts.push_back(problem["path"].text);
  }
  EXPECT_EQ(timeouts, std::vector<std::string>{tree_.Path("share")});
  share.Continue();
}

}  // namespace
