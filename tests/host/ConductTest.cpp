// SPDX-License-Identifier: MIT
// How sorvik behaves as a program: exit codes, errors, hostile names, terminals, Ctrl-C.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "support/Program.h"
#include "support/TempTree.h"

namespace sorvik_test {
namespace {

using Words = std::vector<std::string>;

bool IsOneLine(const std::string& text) {
  return !text.empty() && text.find('\n') == text.size() - 1;
}

TEST(Conduct, WrongUseEndsWithTwoAndOneLine) {
  const std::vector<Words> wrong = {{"--bogus"},
                                    {"ls", "--bogus"},
                                    {"ls", "/", "/"},
                                    {"who"},
                                    {"who", "--fields", "Name", "/"},
                                    {"entry", "/"},
                                    {"owner"},
                                    {"ls", ""},
                                    {"ls", "/", "--provider"},
                                    {"ls", "/", "--json=yes"},
                                    {"ls", "/", "--all", "--fields", "Name"},
                                    {"ls", "/", "--thumbs=ascii"},
                                    {"thumb", "/", "tmp"},
                                    {"thumb", "/", "tmp", "-o", "x.png", "--size", "80"},
                                    {"thumb", "/", "tmp", "-o", "x.png", "--size", "-1x60"},
                                    {"thumb", "/", "tmp", "-o", "x.png", "--size", "80x60x"},
                                    {"thumb", "--folder", "/", "-o", "x.png"},
                                    {"meta"},
                                    {"meta", "--packet", "/"}};
  for (const Words& words : wrong) {
    const ProgramResult result = RunSorvik(words);
    EXPECT_EQ(result.exitCode, 2) << testing::PrintToString(words);
    EXPECT_TRUE(IsOneLine(result.errors)) << result.errors;
    EXPECT_EQ(result.output, "");
  }
}

TEST(Conduct, ErrorsNameWhatIsWrongWithThePath) {
  TempTree tree;
  const std::string file = tree.File("a.txt");
  const std::string gone = tree.Path("gone");
  const std::string pipe = tree.Path("pipe");
  const std::string link = tree.Path("link");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::filesystem::create_symlink(gone, link);
  const std::pair<Words, std::string> cases[] = {
      {{"ls", gone}, "there is no " + gone},
      {{"meta", gone}, "there is no " + gone},
      {{"ls", file + "/b"}, "there is no " + file + "/b"},
      {{"who", file}, "not a folder: " + file},
      {{"places", file}, "not a folder: " + file},
      {{"ls", pipe}, "not a folder: " + pipe},
      {{"ls", link}, "the link leads nowhere: " + link},
      {{"owner", link}, "the link leads nowhere: " + link},
      {{"meta", file}, "no metadata in " + file},
      {{"ls", "networkvolumes:"}, "nothing understands networkvolumes:"},
      {{"lss", tree.Root()}, "there is no command lss"},
      {{"lss", tree.Root(), "-0"}, "there is no command lss"},
      {{tree.Root(), tree.Root()}, "ls was given too many words"},
  };
  for (const auto& [words, expected] : cases) {
    const ProgramResult result = RunSorvik(words);
    EXPECT_TRUE(result.errors.starts_with("sorvik: " + expected)) << result.errors;
  }
}

TEST(Conduct, NothingFoundEndsWithOneAndOneLine) {
  TempTree tree;
  tree.File("a.txt");
  const std::string gone = tree.Path("gone\nfolder");
  const std::vector<Words> nothing = {{"ls", gone},
                                      {"who", gone},
                                      {"places", gone},
                                      {"owner", gone},
                                      {"who", "networkvolumes:"},
                                      {"ls", "volumes:/"},
                                      {"ls", tree.Root(), "--provider", "ProviderRED"},
                                      {"places", tree.Root(), "--provider", "ProviderRED"},
                                      {"entry", tree.Root(), "b.txt"},
                                      {"files", tree.Root(), "b.txt"},
                                      {"thumb", "volumes:", "/", "-o", tree.Path("x.png")},
                                      {"thumb", "--folder", "-o", tree.Path("no/x.png")}};
  for (const Words& words : nothing) {
    const ProgramResult result = RunSorvik(words);
    EXPECT_EQ(result.exitCode, 1) << testing::PrintToString(words);
    EXPECT_TRUE(IsOneLine(result.errors)) << result.errors;
    EXPECT_EQ(result.output, "");
  }
  EXPECT_EQ(RunSorvik({"who", gone, "--json"}).output, "[]\n");
}

TEST(Conduct, HelpAndVersionAreNoErrors) {
  for (const char* word : {"--help", "--version"}) {
    const ProgramResult result = RunSorvik({word});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_FALSE(result.output.empty());
    EXPECT_EQ(result.errors, "");
  }
}

TEST(Conduct, PathsAreMadeAbsoluteAndPlain) {
  TempTree tree;
  tree.File("sub/a.txt");
  const std::string expected = nlohmann::json(tree.Path("sub")).dump();
  for (const char* form : {"/sub/", "/./sub", "//sub//", "/sub/b/.."}) {
    const ProgramResult result = RunSorvik({"ls", "--json", tree.Root() + form});
    EXPECT_NE(result.output.find("{\"path\":" + expected + ","), std::string::npos) << form;
  }
  EXPECT_EQ(RunSorvik({"ls", "--json", "/.."}).output.substr(0, 11), "{\"path\":\"/\"");
  EXPECT_NE(RunSorvik({"ls", "--json"}).output.find("\"path\":\"volumes:\""), std::string::npos);
}

TEST(Conduct, NamesInAnyBytesGoThroughPipesAndNotToTerminals) {
  TempTree tree;
  tree.File("a\x1b[31m\n\"\\b");
  tree.File("latin-\xe4");
  tree.File("ok \xc3\xa4");

  const ProgramResult pipe = RunSorvik({"files", tree.Root()});
  EXPECT_NE(pipe.output.find("latin-\xe4\n"), std::string::npos);
  EXPECT_NE(pipe.output.find("a\x1b[31m\n\"\\b\n"), std::string::npos);

  const std::string json = RunSorvik({"ls", tree.Root(), "--json"}).output;
  EXPECT_NE(json.find("\"latin-\\udce4\":"), std::string::npos);
  EXPECT_NE(json.find("\"a\\u001b[31m\\n\\\"\\\\b\":"), std::string::npos);
  EXPECT_NE(json.find("\"ok \xc3\xa4\":"), std::string::npos);

  const ProgramResult terminal = RunSorvikOnTerminal({"ls", tree.Root()});
  EXPECT_EQ(terminal.exitCode, 0);
  EXPECT_EQ(terminal.output.find('\x1b'), std::string::npos);
  EXPECT_NE(terminal.output.find("a\\x1b[31m\\x0a\"\\b"), std::string::npos);
  EXPECT_NE(terminal.output.find("latin-\\xe4"), std::string::npos);
  EXPECT_NE(terminal.output.find("ok \xc3\xa4"), std::string::npos);

  // A key comes back byte for byte.
  EXPECT_EQ(RunSorvik({"entry", tree.Root(), "latin-\xe4"}).exitCode, 0);
  EXPECT_EQ(RunSorvik({"entry", tree.Root(), "a\x1b[31m\n\"\\b"}).exitCode, 0);
}

TEST(Conduct, ControlCEndsAStuckReaderInTime) {
  RunningSorvik stuck({"meta", "--packet"});
  ASSERT_TRUE(stuck.WaitUntilReading());
  const auto begun = std::chrono::steady_clock::now();
  stuck.Signal(SIGINT);
  EXPECT_EQ(stuck.WaitFor(std::chrono::seconds(10)), 130);
  EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::milliseconds(2000));
}

TEST(Conduct, SecondControlCEndsAtOnce) {
  RunningSorvik stuck({"meta", "--packet"});
  ASSERT_TRUE(stuck.WaitUntilReading());
  stuck.Signal(SIGINT);
  EXPECT_EQ(stuck.WaitFor(std::chrono::milliseconds(200)), -1) << "waits for the worker";
  stuck.Signal(SIGINT);
  EXPECT_EQ(stuck.WaitFor(std::chrono::milliseconds(500)), 130);
}

TEST(Conduct, FullDiskIsAnError) {
  const std::string command = SORVIK_BINARY_DIR "/sorvik providers > /dev/full 2> /dev/null";
  EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1);
}

TEST(Conduct, FailedWriteRemovesNoDevice) {
  TempTree tree;
  const std::string link = tree.Path("full");
  ASSERT_EQ(symlink("/dev/full", link.c_str()), 0);
  EXPECT_EQ(RunSorvik({"thumb", "--folder", "-o", link}).exitCode, 1);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
}

TEST(Conduct, ClosedStreamsAreNotTakenForOtherFiles) {
  TempTree tree;
  const std::string errors = tree.Path("errors");
  const std::string command = SORVIK_BINARY_DIR "/sorvik providers >&- 2> " + errors;
  EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1);
  std::ifstream file(errors);
  const std::string line{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(line, "sorvik: cannot write the output: Bad file descriptor\n");
}

TEST(Conduct, TakesNoLibraryFromTheFolderItIsCalledIn) {
  TempTree card;
  for (const char* name : {"libSorvikProvider.so.1", "libpng16.so.16", "libc.so.6"}) {
    card.File(name, "not a library");
  }
  const std::string command =
      "cd " + card.Root() + " && " SORVIK_BINARY_DIR "/sorvik ls . > /dev/null";
  EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 0);
}

// The exit code of `sorvik providers` behind other programs that set limits.
int RunLimited(const std::string& limits) {
  const std::string command =
      "timeout 20 " + limits + " " SORVIK_BINARY_DIR "/sorvik providers > /dev/null 2> /dev/null";
  return WEXITSTATUS(std::system(command.c_str()));
}

TEST(Conduct, FewDescriptorsEndInAnErrorAndNotInAWait) {
  for (int most = 4; most < 9; ++most) {
    const int code = RunLimited("prlimit --nofile=" + std::to_string(most));
    // 127 is the system's loader, which couldn't open the libraries: runners of tests leave
    // descriptors of their own behind.
    EXPECT_TRUE(code == 0 || code == 1 || code == 127) << most << " descriptors: " << code;
  }
}

// Each test that needs a user takes one of its own: the limit of threads counts all of a user's,
// and tests run side by side.
std::string AsUser(int id) {
  const std::string text = std::to_string(id);
  return "setpriv --reuid=" + text + " --regid=" + text + " --clear-groups ";
}

TEST(Conduct, FewThreadsAreEnough) {
  const std::string nobody = AsUser(61234);
  if (geteuid() != 0 || RunLimited(nobody + "prlimit --nproc=1000") != 0) {
    GTEST_SKIP() << "the limit of threads binds no user that sorvik can be run as here";
  }
  // The program's own two, and three of the executor's.
  EXPECT_EQ(RunLimited(nobody + "prlimit --nproc=5"), 0);
  EXPECT_EQ(RunLimited(nobody + "prlimit --nproc=1"), 1);
}

TEST(Conduct, AnUnreadableFolderIsNoEmptyOne) {
  const std::string user = geteuid() == 0 ? AsUser(61235) : "";
  if (RunLimited(user) != 0) GTEST_SKIP() << "sorvik can be run by no user here but root";
  TempTree tree;
  const std::string locked = tree.File("locked.mov");
  tree.File("shut/a.mov");
  const std::filesystem::path shut = tree.Path("shut");
  using std::filesystem::perms;
  std::filesystem::permissions(tree.Root(), perms::owner_all | perms::others_exec);
  std::filesystem::permissions(shut, perms::none);
  std::filesystem::permissions(locked, perms::none);
  const std::pair<std::string, const char*> cases[] = {
      {"ls " + shut.string(), "read"},
      {"files " + shut.string(), "read"},
      {"places " + shut.string(), "read"},
      {"check " + shut.string(), "read"},
      {"entry " + shut.string() + " a.mov", "read"},
      {"meta " + locked, "read"},
      {"owner " + shut.string() + "/a.mov", "look at"},
  };
  for (const auto& [words, refused] : cases) {
    const std::string line = user + SORVIK_BINARY_DIR "/sorvik " + words +
                             " 2>&1 | grep -q '^sorvik: cannot " + refused + " '";
    EXPECT_EQ(std::system(line.c_str()), 0) << words;
  }
  std::filesystem::permissions(shut, perms::owner_all);
}

}  // namespace
}  // namespace sorvik_test
