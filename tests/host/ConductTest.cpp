// SPDX-License-Identifier: MIT
// sorvik as a process: exit codes, error messages, unusual file names, terminals, Ctrl-C.
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
#include <sstream>

#include "support/Program.h"
#include "support/TempTree.h"

namespace sorvik_test {
namespace {

using Arguments = std::vector<std::string>;

bool IsOneLine(const std::string& text) {
  return !text.empty() && text.find('\n') == text.size() - 1;
}

TEST(Conduct, UsageErrorExitsWithTwoAndOneLine) {
  const std::vector<Arguments> wrong = {{"--bogus"},
                                        {"ls", "--bogus"},
                                        {"ls", "/", "/"},
                                        {"who"},
                                        {"who", "--fields", "Name", "/"},
                                        {"entry", "/"},
                                        {"owner"},
                                        {"ls", ""},
                                        {"ls", "/", "--provider"},
                                        {"ls", "/", "--provider", "bogus"},
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
  for (const Arguments& words : wrong) {
    const ProgramResult result = RunSorvik(words);
    EXPECT_EQ(result.exitCode, 2) << testing::PrintToString(words);
    EXPECT_TRUE(IsOneLine(result.errors)) << result.errors;
    EXPECT_EQ(result.output, "");
  }
}

TEST(Conduct, ErrorMessagesNameThePathAndTheReason) {
  TempTree tree;
  const std::string file = tree.File("a.txt");
  const std::string missing = tree.Path("missing");
  const std::string pipe = tree.Path("pipe");
  const std::string link = tree.Path("link");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::filesystem::create_symlink(missing, link);
  const std::pair<Arguments, std::string> cases[] = {
      {{"ls", missing}, missing + ": No such file or directory"},
      {{"meta", missing}, missing + ": No such file or directory"},
      {{"ls", file + "/b"}, file + "/b: No such file or directory"},
      {{"who", file}, file + ": Not a directory"},
      {{"places", file}, file + ": Not a directory"},
      {{"ls", pipe}, pipe + ": Not a directory"},
      {{"ls", link}, link + ": dangling symbolic link"},
      {{"owner", link}, link + ": dangling symbolic link"},
      {{"owner", file}, file + ": belongs to no clip"},
      {{"meta", file}, file + ": no metadata"},
      {{"ls", "networkvolumes:"}, "networkvolumes:: no provider for this path"},
      {{"check", tree.Root()}, tree.Root() + ": not a camera card or clip folder"},
      {{"entry", tree.Root(), "b"}, tree.Root() + ": no entry 'b'"},
      {{"ls", tree.Root(), "--provider", "ProviderRED"},
       tree.Root() + ": not supported by provider 'ProviderRED'"},
      {{"check", tree.Root(), "--provider", "XDCAN"}, "unknown provider 'XDCAN' (nearest: xdcam"},
      {{"lss", tree.Root()}, "unknown command 'lss'"},
      {{"lss", tree.Root(), "-0"}, "unknown command 'lss'"},
      {{tree.Root(), tree.Root()}, "ls: too many arguments"},
  };
  for (const auto& [words, expected] : cases) {
    const ProgramResult result = RunSorvik(words);
    EXPECT_TRUE(result.errors.starts_with("sorvik: " + expected)) << result.errors;
  }
}

TEST(Conduct, NoResultExitsWithOneAndOneLine) {
  TempTree tree;
  tree.File("a.txt");
  const std::string missing = tree.Path("missing\nfolder");
  const std::vector<Arguments> empty = {{"ls", missing},
                                        {"who", missing},
                                        {"places", missing},
                                        {"owner", missing},
                                        {"owner", tree.Path("a.txt")},
                                        {"who", "networkvolumes:"},
                                        {"ls", "volumes:/"},
                                        {"ls", tree.Root(), "--provider", "ProviderRED"},
                                        {"places", tree.Root(), "--provider", "ProviderRED"},
                                        {"entry", tree.Root(), "b.txt"},
                                        {"files", tree.Root(), "b.txt"},
                                        {"thumb", "volumes:", "/", "-o", tree.Path("x.png")},
                                        {"thumb", "--folder", "-o", tree.Path("no/x.png")}};
  for (const Arguments& words : empty) {
    const ProgramResult result = RunSorvik(words);
    EXPECT_EQ(result.exitCode, 1) << testing::PrintToString(words);
    EXPECT_TRUE(IsOneLine(result.errors)) << result.errors;
    EXPECT_EQ(result.output, "");
  }
  const std::string error = RunSorvik({"who", missing, "--json"}).output;
  EXPECT_EQ(nlohmann::json::parse(error)["error"]["message"], "No such file or directory");
  EXPECT_TRUE(IsOneLine(RunSorvik({"who", "--json"}).output)) << "a usage error";
}

TEST(Conduct, HelpAndVersionSucceed) {
  const std::vector<Arguments> cases = {
      {"--help"}, {"-h"},         {"help"},     {"--version"},
      {"-V"},     {"help", "ls"}, {"ls", "-h"}, {"sheet", "--help"}};
  for (const Arguments& words : cases) {
    const ProgramResult result = RunSorvik(words);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_FALSE(result.output.empty());
    EXPECT_EQ(result.errors, "");
  }
}

TEST(Conduct, HelpOfEachCommandHasAnExample) {
  std::istringstream help(RunSorvik({"--help"}).output);
  std::size_t commands = 0;
  for (std::string line; std::getline(help, line);) {
    if (line == "options:") break;
    if (!line.starts_with("  ")) continue;
    const std::string command = line.substr(2, line.find(' ', 2) - 2);
    const std::string text = RunSorvik({"help", command}).output;
    EXPECT_NE(text.find("example:\n  sorvik " + command), std::string::npos) << text;
    ++commands;
  }
  EXPECT_GE(commands, 13U);
  EXPECT_EQ(RunSorvik({"help", "bogus"}).exitCode, 2);
}

TEST(Conduct, PathsAreMadeAbsoluteAndNormalised) {
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

TEST(Conduct, PipesGetRawNamesAndTerminalsEscapedOnes) {
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

  // Keys are passed to the library unchanged.
  EXPECT_EQ(RunSorvik({"entry", tree.Root(), "latin-\xe4"}).exitCode, 0);
  EXPECT_EQ(RunSorvik({"entry", tree.Root(), "a\x1b[31m\n\"\\b"}).exitCode, 0);
}

TEST(Conduct, ControlCEndsABlockedReaderInTime) {
  RunningSorvik blocked({"meta", "--packet"});
  ASSERT_TRUE(blocked.WaitUntilReading());
  blocked.Signal(SIGINT);
  EXPECT_EQ(blocked.WaitFor(std::chrono::seconds(10)), 130);
}

TEST(Conduct, SecondControlCEndsImmediately) {
  // A reader that notices the first signal between two reads ends the program: then try again.
  for (int attempt = 0; attempt < 20; ++attempt) {
    RunningSorvik blocked({"meta", "--packet"});
    ASSERT_TRUE(blocked.WaitUntilReading());
    blocked.Signal(SIGINT);
    if (blocked.WaitFor(std::chrono::milliseconds(200)) == 130) continue;
    blocked.Signal(SIGINT);
    EXPECT_EQ(blocked.WaitFor(std::chrono::milliseconds(500)), 130);
    return;
  }
  FAIL() << "no reader stayed blocked after the first signal";
}

TEST(Conduct, FullDiskIsAnError) {
  const std::string command = SORVIK_BINARY_DIR "/sorvik providers > /dev/full 2> /dev/null";
  EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1);
}

TEST(Conduct, FailedWriteKeepsDevices) {
  TempTree tree;
  const std::string link = tree.Path("full");
  ASSERT_EQ(symlink("/dev/full", link.c_str()), 0);
  EXPECT_EQ(RunSorvik({"thumb", "--folder", "-o", link}).exitCode, 1);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
}

TEST(Conduct, ClosedStreamsAreNotReplacedByOtherFiles) {
  TempTree tree;
  const std::string errors = tree.Path("errors");
  const std::string command = SORVIK_BINARY_DIR "/sorvik providers >&- 2> " + errors;
  EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1);
  std::ifstream file(errors);
  const std::string line{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(line, "sorvik: standard output: cannot write (Bad file descriptor)\n");
}

TEST(Conduct, LoadsNoLibraryFromTheCurrentDirectory) {
  TempTree card;
  for (const char* name : {"libSorvikProvider.so.2", "libpng16.so.16", "libc.so.6"}) {
    card.File(name, "not a library");
  }
  const std::string command =
      "cd " + card.Root() + " && " SORVIK_BINARY_DIR "/sorvik ls . > /dev/null";
  EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 0);
}

// Returns the exit code of `sorvik providers` run by `limits`, a command that sets resource limits.
int RunLimited(const std::string& limits) {
  const std::string command =
      "timeout 20 " + limits + " " SORVIK_BINARY_DIR "/sorvik providers > /dev/null 2> /dev/null";
  return WEXITSTATUS(std::system(command.c_str()));
}

TEST(Conduct, TooFewDescriptorsFailInsteadOfHanging) {
  for (int limit = 4; limit < 9; ++limit) {
    const int code = RunLimited("prlimit --nofile=" + std::to_string(limit));
    // 127: the dynamic loader couldn't open a library, because test runners can pass on open
    // descriptors.
    EXPECT_TRUE(code == 0 || code == 1 || code == 127) << limit << " descriptors: " << code;
  }
}

// Each test uses a different user: the limit on threads applies to all processes of a user, and
// tests run in parallel.
std::string AsUser(int id) {
  const std::string text = std::to_string(id);
  return "setpriv --reuid=" + text + " --regid=" + text + " --clear-groups ";
}

TEST(Conduct, FewThreadsAreEnough) {
  const std::string user = AsUser(61234);
  if (geteuid() != 0 || RunLimited(user + "prlimit --nproc=1000") != 0) {
    GTEST_SKIP() << "needs root, and a sorvik that another user can run";
  }
  // The program's own two threads, and three of the executor.
  EXPECT_EQ(RunLimited(user + "prlimit --nproc=5"), 0);
  EXPECT_EQ(RunLimited(user + "prlimit --nproc=1"), 1);
}

TEST(Conduct, UnreadableFolderIsAnError) {
  const std::string user = geteuid() == 0 ? AsUser(61235) : "";
  if (RunLimited(user) != 0) GTEST_SKIP() << "sorvik can be run only by root here";
  TempTree tree;
  const std::string file = tree.File("locked.mov");
  tree.File("locked/a.mov");
  const std::filesystem::path folder = tree.Path("locked");
  using std::filesystem::perms;
  std::filesystem::permissions(tree.Root(), perms::owner_all | perms::others_exec);
  std::filesystem::permissions(folder, perms::none);
  std::filesystem::permissions(file, perms::none);
  const std::pair<std::string, const char*> cases[] = {
      {"ls " + folder.string(), "read"},
      {"files " + folder.string(), "read"},
      {"places " + folder.string(), "read"},
      {"check " + folder.string(), "read"},
      {"entry " + folder.string() + " a.mov", "read"},
      {"meta " + file, "read"},
      {"owner " + folder.string() + "/a.mov", "access"},
  };
  for (const auto& [words, refused] : cases) {
    const std::string line = user + SORVIK_BINARY_DIR "/sorvik " + words +
                             " 2>&1 | grep -q '^sorvik: .*: cannot " + refused +
                             " (Permission denied)$'";
    EXPECT_EQ(std::system(line.c_str()), 0) << words;
  }
  std::filesystem::permissions(folder, perms::owner_all);
}

}  // namespace
}  // namespace sorvik_test
