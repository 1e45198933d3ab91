// SPDX-License-Identifier: MIT
// The memory that sorvik needs for large folders.
#include <gtest/gtest.h>

#include <string>

#include "support/Program.h"
#include "support/TempTree.h"

namespace sorvik_test {
namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr bool kMeasuresMemory = false;
#elif defined(__SANITIZE_THREAD__)
constexpr bool kMeasuresMemory = false;
#else
constexpr bool kMeasuresMemory = true;
#endif

// 800 MB for 200,000 names.
constexpr long kMaxBytesPerEntry = 4000;

TEST(Memory, JsonOfAllFieldsHoldsTheEntriesOnce) {
  if (!kMeasuresMemory) GTEST_SKIP() << "sanitizers need memory of their own";
  constexpr long kFew = 100;
  constexpr long kMany = 20'000;
  const TempTree tree;
  for (long i = 0; i < kMany; ++i) {
    const std::string name = "clip-with-a-usual-name-" + std::to_string(i) + ".mov";
    tree.File("many/" + name);
    if (i < kFew) tree.File("few/" + name);
  }
  const auto run = [&tree](const char* folder) {
    return RunSorvik({"ls", tree.Path(folder), "--all", "--json"});
  };
  const ProgramResult few = run("few");
  const ProgramResult many = run("many");
  ASSERT_EQ(many.exitCode, 0);
  EXPECT_NE(many.output.find("clip-with-a-usual-name-19999.mov"), std::string::npos);
  const long bytes = (many.peakKilobytes - few.peakKilobytes) * 1024;
  EXPECT_LT(bytes / (kMany - kFew), kMaxBytesPerEntry);
}

}  // namespace
}  // namespace sorvik_test
