// SPDX-License-Identifier: MIT
// Listings of synthetic cards on a failing disk: reads that fail or are short, files that are
// missing when they are opened, folders whose listing stops early. This program replaces the system
// calls.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <random>
#include <set>

#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "support/AllCards.h"
#include "support/Values.h"

namespace {

// One failure per this many calls; 0 for none.
std::atomic<unsigned> failureRate{0};
std::atomic<unsigned> failures{0};
thread_local std::minstd_rand randomness;

bool Fails() {
  const unsigned rate = failureRate;
  if (rate == 0 || randomness() % rate != 0) return false;
  ++failures;
  return true;
}

ssize_t FaultyRead(int descriptor, void* into, size_t count, off_t offset) {
  if (Fails()) {
    const auto kind = randomness() % 3;
    if (kind == 0) {
      errno = EIO;
      return -1;
    }
    if (kind == 1) return 0;
    count = count / 2;
  }
  return syscall(SYS_pread64, descriptor, into, count, offset);
}

}  // namespace

extern "C" {

ssize_t pread(int descriptor, void* into, size_t count, off_t offset) {
  return FaultyRead(descriptor, into, count, offset);
}

ssize_t pread64(int descriptor, void* into, size_t count, off64_t offset) {
  return FaultyRead(descriptor, into, count, offset);
}

int open(const char* path, int flags, ...) {
  if (Fails()) {
    errno = ENOENT;
    return -1;
  }
  va_list arguments;
  va_start(arguments, flags);
  const int mode = (flags & O_CREAT) != 0 ? va_arg(arguments, int) : 0;
  va_end(arguments);
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

dirent* readdir(DIR* folder) {
  using Readdir = dirent* (*)(DIR*);
  static const auto real = reinterpret_cast<Readdir>(dlsym(RTLD_NEXT, "readdir"));
  if (Fails()) {
    errno = EIO;
    return nullptr;
  }
  return real(folder);
}

}  // extern "C"

namespace {

using namespace Sorvik;

FieldNameSet AllFieldsOf(const ProviderWrapper& provider) { return provider.GetFieldList(); }

std::set<std::string> FieldNames(const FieldValueMap& fields) {
  std::set<std::string> names;
  for (const auto& [name, value] : fields) names.insert(name);
  return names;
}

TEST(FaultInjection, AffectsOnlyEntriesAndFields) {
  const sorvik_test::TempTree tree;
  const auto cards = sorvik_test::MakeAllCards(tree);
  ProviderHost::Initialize();
  unsigned complete = 0;
  unsigned damaged = 0;
  for (unsigned seed = 1; seed <= 60; ++seed) {
    randomness.seed(seed);
    for (const auto& card : cards) {
      for (ProviderWrapper* provider : ProviderHost::GetAllProviders()) {
        if (provider->GetIdentification() != card.providerId) continue;
        failureRate = 0;
        const ContentMap expected =
            provider->GetContent(card.root, AllFieldsOf(*provider), nullptr);
        failureRate = 5 + seed;
        provider->CanProvideFor(card.root);
        const ContentMap content = provider->GetContent(card.root, AllFieldsOf(*provider), nullptr);
        for (const auto& [key, fields] : expected) {
          provider->GetContent(card.root, key, AllFieldsOf(*provider));
          bitplateDispose(provider->GetThumbnail(card.root, key, 80, 60, nullptr));
        }
        CheckCard(card.root, card.providerId);
        failureRate = 0;
        (content == expected ? complete : damaged) += 1;
        // All listed paths are on the card, and all fields are in the field list.
        for (const auto& [key, fields] : content) {
          const std::string path = sorvik_test::TextOf(fields, kPathField);
          EXPECT_TRUE(path == "<none>" || path.starts_with(card.root + "/")) << path;
          for (const std::string& name : FieldNames(fields)) {
            EXPECT_TRUE(AllFieldsOf(*provider).contains(name)) << name;
          }
        }
      }
    }
  }
  ProviderHost::Shutdown();
  // Some calls failed, but not in every listing.
  EXPECT_GT(failures, 1000u);
  EXPECT_GT(complete, 0u);
  EXPECT_GT(damaged, 0u);
}

}  // namespace
