// SPDX-License-Identifier: MIT
// Listing a folder with the directory provider, compared with plain system calls and `ls -l`. The
// methods alternate within one run and the best round of each counts, so that the ratios are
// comparable between machines. A listing includes destroying its map. Arguments: number of files
// (100000) and of rounds (9).
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "SorvikProvider/frame/ProviderHost.h"
#include "filesystem/WinProviderDirectory.h"
#include "support/TempTree.h"

namespace {

using Sorvik::ContentMap;
using Sorvik::FieldNameSet;

// Names in unsorted order, as in a real file system; times spread over about a year.
void MakeFiles(const sorvik_test::TempTree& tree, long count) {
  for (long i = 0; i < count; ++i) {
    char name[64];
    std::snprintf(name, sizeof(name), "2026-05-12 interview take %07ld.wav", i * 7919 % count);
    const std::string path = tree.File(name);
    const timespec time{1'700'000'000 + i * 317, 123'456'789};
    const timespec times[] = {time, time};
    utimensat(AT_FDCWD, path.c_str(), times, 0);
  }
}

// Reads every name, and every file's attributes if `withStat`.
void PlainWalk(const std::string& path, bool withStat) {
  const int folder = open(path.c_str(), O_RDONLY | O_DIRECTORY);
  static char block[256 << 10];
  std::uint64_t sum = 0;
  for (;;) {
    const ssize_t filled = getdents64(folder, block, sizeof block);
    if (filled <= 0) break;
    for (ssize_t at = 0; at < filled;) {
      const auto* entry = reinterpret_cast<const dirent64*>(block + at);
      at += entry->d_reclen;
      struct statx facts;
      if (withStat && statx(folder, entry->d_name, AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC,
                            STATX_BASIC_STATS | STATX_BTIME, &facts) == 0) {
        sum += facts.stx_size;
      }
    }
  }
  close(folder);
  benchmark::DoNotOptimize(sum);
}

void RunLs(const std::string& path, const char* options) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  std::string words[] = {"ls", options, path};
  char* const arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
  pid_t process = 0;
  if (posix_spawnp(&process, "ls", &actions, nullptr, arguments, environ) == 0) {
    waitpid(process, nullptr, 0);
  }
  posix_spawn_file_actions_destroy(&actions);
}

struct Method {
  const char* name;
  std::function<void()> run;
  double best = 1e9;
};

void Time(Method& method) {
  const auto start = std::chrono::steady_clock::now();
  method.run();
  const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
  method.best = std::min(method.best, time.count());
}

}  // namespace

int main(int argc, char** argv) {
  const long count = argc > 1 ? std::atol(argv[1]) : 100'000;
  const long rounds = argc > 2 ? std::atol(argv[2]) : 9;
  const sorvik_test::TempTree tree;
  const std::string& path = tree.Root();
  MakeFiles(tree, count);

  const Sorvik::WinProviderDirectory provider;
  const auto list = [&](const FieldNameSet& fields) {
    return [&provider, &path, fields] { provider.GetContent(path, fields, nullptr); };
  };
  Sorvik::ProviderHost::Initialize();
  std::vector<Method> methods;
  methods.push_back({"plain getdents64", [&] { PlainWalk(path, false); }});
  methods.push_back({"plain getdents64 + statx", [&] { PlainWalk(path, true); }});
  methods.push_back({"ls -l", [&] { RunLs(path, "-l"); }});
  methods.push_back({"listing, Name and Path", list({"Name", "Path"})});
  methods.push_back({"listing, plus size", list({"Name", "Path", "26"})});
  methods.push_back({"listing, plus three times", list({"Name", "Path", "26", "19", "20", "21"})});
  methods.push_back({"list of providers", [&] { Sorvik::ProviderHost::GetProviderList(path); }});

  // Run last: the largest listing fragments the heap, which would slow down the others.
  Method all{"listing, all 23 fields", list(provider.GetFieldList())};
  for (Method& method : methods) method.run();
  for (long round = 0; round < rounds; ++round) {
    for (Method& method : methods) Time(method);
  }
  for (long round = 0; round < rounds; ++round) Time(all);
  methods.push_back(all);
  Sorvik::ProviderHost::Shutdown();

  const double plain = methods[1].best;
  const double ls = methods[2].best;
  std::printf("%ld files, best of %ld rounds\n", count, rounds);
  std::printf("%-26s %10s %16s %10s\n", "", "ms", "vs. plain statx", "vs. ls -l");
  for (const Method& method : methods) {
    std::printf("%-26s %10.1f %16.2f %10.2f\n", method.name, method.best, method.best / plain,
                method.best / ls);
  }
}
