// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "foundation/CallScope.h"
#include "foundation/FolderNames.h"
#include "support/TempTree.h"

namespace {

using Sorvik::foundation::CallScope;
using Sorvik::foundation::FolderNames;
using Sorvik::platform::FileKind;
using sorvik_test::TempTree;

TEST(FolderNames, AnswerAsTheDiskDoes) {
  const TempTree tree;
  tree.File("00001.MTS");
  tree.File("\xE9t\xE9.MTS");
  tree.File("sub/inner");
  ASSERT_EQ(mkfifo(tree.Path("fifo").c_str(), 0600), 0);
  std::filesystem::create_symlink("00001.MTS", tree.Path("link"));
  std::filesystem::create_symlink("sub", tree.Path("dirlink"));
  std::filesystem::create_symlink("nowhere", tree.Path("dangling"));
  std::filesystem::create_symlink("loop", tree.Path("loop"));
  const auto names = FolderNames::Of(tree.Root());
  for (const char* name : {"00001.MTS", "00001.mts", "00001.M", "\xE9t\xE9.MTS", "\xC9T\xC9.MTS",
                           "sub", "fifo", "link", "dirlink", "dangling", "loop", "absent"}) {
    EXPECT_EQ(names->KindOf(name), Sorvik::platform::KindOf(tree.Path(name))) << name;
  }
  EXPECT_TRUE(names->HoldsFolder("dirlink"));
  EXPECT_FALSE(names->HoldsFolder("link"));
}

TEST(FolderNames, HoldNoPaths) {
  const TempTree tree;
  tree.File("sub/inner");
  const auto names = FolderNames::Of(tree.Path("sub"));
  for (const std::string& name : {std::string(), std::string("../sub"), std::string("/inner"),
                                  std::string("inner\0", 6), std::string("inner/")}) {
    EXPECT_FALSE(names->Holds(name)) << name;
  }
  EXPECT_TRUE(names->Holds("inner"));
}

TEST(FolderNames, OfWhatIsNoFolderAreNone) {
  const TempTree tree;
  EXPECT_FALSE(FolderNames::Of(tree.Path("absent"))->Holds("name"));
  EXPECT_FALSE(FolderNames::Of(tree.File("file"))->Holds("name"));
}

TEST(FolderNames, AreOneListingWithinACall) {
  const TempTree tree;
  tree.File("first");
  {
    const CallScope scope;
    const auto names = FolderNames::Of(tree.Root());
    tree.File("second");
    EXPECT_EQ(FolderNames::Of(tree.Root()), names);
    EXPECT_FALSE(FolderNames::Of(tree.Root())->Holds("second"));
    EXPECT_TRUE(FolderNames::MayExist(tree.Path("first")));
    EXPECT_FALSE(FolderNames::MayExist(tree.Path("third")));
    EXPECT_TRUE(FolderNames::MayExist(tree.Path("unlisted/third"))) << "nothing is known of it";
  }
  EXPECT_TRUE(FolderNames::Of(tree.Root())->Holds("second"));
  EXPECT_TRUE(FolderNames::MayExist(tree.Path("third"))) << "without a call nothing is known";
}

}  // namespace
