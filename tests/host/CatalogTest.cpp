// SPDX-License-Identifier: MIT
// sorvik catalog, and the commands that answer from a catalogue.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "support/Cards.h"
#include "support/Program.h"
#include "support/TempTree.h"
#include "support/TestShare.h"

namespace sorvik_test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;

std::string ContentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

// The rows of a query, columns separated by "|".
std::vector<std::string> Query(const std::string& database, const std::string& sql) {
  sqlite3* opened = nullptr;
  EXPECT_EQ(sqlite3_open(database.c_str(), &opened), SQLITE_OK);
  std::vector<std::string> rows;
  const auto add = [](void* list, int count, char** values, char**) {
    std::string row;
    for (int i = 0; i < count; ++i) {
      row += (i > 0 ? "|" : "") + std::string(values[i] == nullptr ? "" : values[i]);
    }
    static_cast<std::vector<std::string>*>(list)->push_back(row);
    return 0;
  };
  char* error = nullptr;
  EXPECT_EQ(sqlite3_exec(opened, sql.c_str(), add, &rows, &error), SQLITE_OK) << error;
  sqlite3_free(error);
  sqlite3_close(opened);
  return rows;
}

class Catalog : public testing::Test {
 protected:
  void SetUp() override {
    MakeXDCAMDisc(tree_, "archive/disc", {{.name = "C0001"}, {.name = "C0002"}});
    MakeP2Card(tree_, "archive/p2");
    AddP2Clip(tree_, "archive/p2", {.id = "0001AB"});
  }
  ProgramResult Run(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "catalog");
    return RunSorvik(arguments);
  }

  const TempTree tree_;
  const std::string archive_ = tree_.Path("archive");
  const std::string file_ = tree_.Path("all.ndjson");
};

TEST_F(Catalog, ExitCodesDistinguishWhatHappened) {
  const std::string disc = tree_.Path("archive/disc");
  EXPECT_EQ(Run({disc}).exitCode, 0) << Run({disc}).output;
  const ProgramResult none = Run({tree_.Folder("empty")});
  EXPECT_EQ(none.exitCode, 3);
  EXPECT_EQ(none.errors, "sorvik: " + tree_.Path("empty") + ": no card found\n");
  const ProgramResult missing = Run({disc, tree_.Path("missing")});
  EXPECT_EQ(missing.exitCode, 4);
  EXPECT_THAT(missing.output, HasSubstr("/C0001.MXF\""));
  EXPECT_THAT(missing.errors, HasSubstr("No such file or directory"));
  fs::remove(tree_.Path("archive/disc/Clip/C0001.MXF"));
  EXPECT_EQ(Run({disc}).exitCode, 1);
  EXPECT_EQ(Run({disc, "--since", tree_.Path("missing")}).exitCode, 4);
  for (const std::vector<std::string>& usage :
       std::vector<std::vector<std::string>>{{},
                                             {disc, "--jobs", "0"},
                                             {disc, "--shard", "3/2"},
                                             {disc, "--shard", "0/2"},
                                             {disc, "--only", "cards"},
                                             {disc, "--timeout-per-card", "x"},
                                             {disc, "--json"}}) {
    EXPECT_EQ(Run(usage).exitCode, 2);
  }
}

TEST_F(Catalog, ReplacesTheOutputOnlyWhenItIsComplete) {
  tree_.File("all.ndjson", "earlier");
  EXPECT_EQ(Run({archive_, "-o", file_, "--jobs", "4"}).output, "");
  const std::string lines = ContentOf(file_);
  EXPECT_THAT(lines, HasSubstr("{\"type\":\"end\",\"cards\":2,\"clips\":3,"));
  EXPECT_FALSE(fs::exists(file_ + ".part"));
  EXPECT_EQ(Run({archive_}).output, lines);
  EXPECT_EQ(Run({archive_, "--since", file_, "-o", file_}).errors, "");
  EXPECT_EQ(ContentOf(file_), lines);
  const ProgramResult refused = Run({archive_, "-o", tree_.Path("missing/out")});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.errors, HasSubstr("cannot write (No such file or directory)"));
  // A link is followed; a pipe, such as /dev/null, is written to and stays.
  fs::create_symlink(file_, tree_.Path("link"));
  EXPECT_EQ(Run({archive_, "-o", tree_.Path("link")}).errors, "");
  EXPECT_TRUE(fs::is_symlink(tree_.Path("link")));
  const std::string pipe = tree_.Path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::string piped;
  std::thread reader([&] { piped = ContentOf(pipe); });
  EXPECT_EQ(Run({archive_, "-o", pipe}).errors, "");
  reader.join();
  EXPECT_EQ(piped, lines);
  EXPECT_TRUE(fs::is_fifo(pipe));
  const std::string record = tree_.Path("archive/disc/MEDIAPRO.XML");
  EXPECT_EQ(Run({archive_, "-o", record}).exitCode, 1) << "a file of a card";
}

TEST_F(Catalog, DatabaseHasOneRowPerClipHoweverOftenItRuns) {
  const std::string database = tree_.Path("cat.db");
  const auto count = [&](const std::string& table) {
    return Query(database, "select count(*) from " + table).front();
  };
  for (int run = 0; run < 2; ++run) {
    EXPECT_THAT(Run({archive_, "--sqlite", database}).errors, "");
    EXPECT_EQ(count("card"), "2");
    EXPECT_EQ(count("clip"), "3");
  }
  EXPECT_EQ(Query(database,
                  "select frames, seconds, length(identity) from clip where key like '%C0001%'"),
            std::vector<std::string>{"100|4.0|64"});
  const std::string lines = Run({archive_, "-o", "-", "--sqlite", database}).output;
  EXPECT_EQ(Query(database, "select json from card order by path").front() + "\n",
            lines.substr(0, lines.find('\n') + 1));
  // What is gone from a card is gone from the database; a card that isn't there stays.
  fs::remove(tree_.Path("archive/disc/Clip/C0002.MXF"));
  fs::remove(tree_.Path("archive/disc/Clip/C0002M01.XML"));
  fs::rename(tree_.Path("archive/p2"), tree_.Path("elsewhere"));
  Run({archive_, "--sqlite", database});
  EXPECT_EQ(count("card"), "2");
  EXPECT_EQ(count("clip"), "2");
  EXPECT_THAT(
      Run({archive_, "--sqlite", tree_.File("text.db", "not a database, but a text")}).errors,
      HasSubstr("file is not a database"));
}

// A list of files must not be short because the catalogue is.
TEST_F(Catalog, RefusesToAnswerWithoutAllLinesOfACard) {
  const std::string disc = tree_.Path("archive/disc");
  Run({archive_, "-o", file_, "--only", "card,clip"});
  const ProgramResult files = RunSorvik({"files", disc, "--catalog", file_});
  EXPECT_EQ(files.exitCode, 1);
  EXPECT_EQ(files.output, "");
  EXPECT_EQ(files.errors,
            "sorvik: " + file_ + ": invalid or missing lines of the card " + disc + "\n");
  EXPECT_EQ(RunSorvik({"check", disc, "--catalog", file_}).exitCode, 1);
}

TEST_F(Catalog, AnswersWithTheMediumOffline) {
  const std::string p2 = tree_.Path("archive/p2");
  const std::string disc = tree_.Path("archive/disc");
  const std::string sound = p2 + "/CONTENTS/VIDEO/0001AB.MXF";
  const std::string files = RunSorvik({"files", disc}).output;
  const std::string filesOfClip = RunSorvik({"files", disc, "C0001.MXF"}).output;
  const std::string check = RunSorvik({"check", p2, "--json", "--files"}).output;
  const json owner = json::parse(RunSorvik({"owner", sound, "--json"}).output);
  const auto join = [](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "join");
    return RunSorvik(arguments).output;
  };
  const std::string table = join({disc, "--format", "csv"});
  EXPECT_THAT(table, HasSubstr("C0001"));
  const std::string timeline = join({p2, "0001AB", "--format", "otio"});
  EXPECT_THAT(timeline, HasSubstr("0001AB00.MXF"));
  Run({archive_, "-o", file_});
  fs::rename(archive_, tree_.Path("gone"));

  EXPECT_EQ(RunSorvik({"files", disc, "--catalog", file_}).output, files);
  EXPECT_EQ(RunSorvik({"check", p2, "--json", "--files", "--catalog", file_}).output, check);
  const json offline =
      json::parse(RunSorvik({"owner", sound, "--json", "--catalog", file_}).output);
  for (const char* member : {"path", "provider", "key"}) EXPECT_EQ(offline[member], owner[member]);
  EXPECT_EQ(offline["fields"]["duration"], (json{{"count", 100}, {"rate", "25/1"}}));
  std::istringstream wanted(filesOfClip);
  const std::string found = RunSorvik({"files", disc, "C0001.MXF", "--catalog", file_}).output;
  for (std::string line; std::getline(wanted, line);) EXPECT_THAT(found, HasSubstr(line));
  EXPECT_THAT(RunSorvik({"files", archive_, "--relative", "--catalog", file_}).output,
              HasSubstr("p2/CONTENTS/CLIP/0001AB.XML\n"));
  EXPECT_EQ(join({disc, "--format", "csv", "--catalog", file_}), table);
  EXPECT_EQ(join({p2, "0001AB", "--format", "otio", "--catalog", file_}), timeline);
  EXPECT_THAT(RunSorvik({"join", archive_, "--format", "csv", "--catalog", file_}).errors,
              HasSubstr("archive: several cards in the catalogue, such as "));
  EXPECT_EQ(RunSorvik({"owner", disc + "/x", "--catalog", file_}).exitCode, 1);
  EXPECT_EQ(RunSorvik({"check", tree_.Path("other"), "--catalog", file_}).exitCode, 1);
  EXPECT_EQ(RunSorvik({"check", p2, "--catalog", tree_.Path("none")}).exitCode, 1);
}

TEST_F(Catalog, ComparesARestoredCopyWithTheCatalogue) {
  Run({archive_, "-o", file_});
  fs::rename(archive_, tree_.Path("restored"));
  const std::vector<std::string> arguments = {"check",     tree_.Path("archive/disc"),
                                              "--catalog", file_,
                                              "--against", tree_.Path("restored/disc")};
  EXPECT_EQ(RunSorvik(arguments).exitCode, 0) << RunSorvik(arguments).output;
  fs::resize_file(tree_.Path("restored/disc/Clip/C0001.MXF"), 1);
  EXPECT_EQ(RunSorvik(arguments).exitCode, 1);
  EXPECT_THAT(RunSorvik(arguments).output, HasSubstr("C0001.MXF"));
}

TEST_F(Catalog, TimeoutsAndInterruptsHaveTheirOwnExitCodes) {
  TestShare share(tree_.Folder("server"), tree_.Folder("share"));
  if (!share) GTEST_SKIP() << share.Reason();
  SkipLeakCheckOfProgram();
  share.Stop();
  const ProgramResult late =
      Run({"--timeout-per-card", "4", tree_.Path("share"), archive_, "--jobs", "2"});
  EXPECT_EQ(late.exitCode, 75);
  EXPECT_THAT(late.output, HasSubstr("\"kind\":\"timeout\""));
  EXPECT_THAT(late.output, HasSubstr("{\"type\":\"end\",\"cards\":2,"));
  RunningSorvik running({"catalog", tree_.Path("share"), "-o", file_});
  for (int i = 0; i < 600 && !fs::exists(file_ + ".part"); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  running.Signal(SIGINT);
  EXPECT_EQ(running.WaitFor(std::chrono::seconds(30)), 130);
  EXPECT_FALSE(fs::exists(file_));
  share.Continue();
}

}  // namespace
}  // namespace sorvik_test
