// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <random>

#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/hestra/PathUtils.h"
#include "support/TempTree.h"

namespace {

using namespace Sorvik::foundation;
using sorvik_test::TempTree;
using testing::ElementsAre;

TEST(CardFolder, ListingAndDiskGiveTheSameKinds) {
  const TempTree tree;
  tree.File("00001.MTS");
  tree.File("\xE9t\xE9.MTS");
  tree.File("sub/inner");
  ASSERT_EQ(mkfifo(tree.Path("fifo").c_str(), 0600), 0);
  std::filesystem::create_symlink("00001.MTS", tree.Path("link"));
  std::filesystem::create_symlink("sub", tree.Path("dirlink"));
  std::filesystem::create_symlink("missing", tree.Path("dangling"));
  std::filesystem::create_symlink("loop", tree.Path("loop"));
  const CallScope scope;
  const auto folder = CardFolder::Of(tree.Root() + "/");
  for (const char* name : {"00001.MTS", "00001.mts", "00001.M", "\xE9t\xE9.MTS", "\xC9T\xC9.MTS",
                           "sub", "fifo", "link", "dirlink", "dangling", "loop", "missing"}) {
    EXPECT_EQ(folder->KindOf(name), Sorvik::platform::KindOf(tree.Path(name))) << name;
    EXPECT_EQ(folder->KindOf(name, Lookup::kDisk), folder->KindOf(name)) << name;
  }
  EXPECT_TRUE(folder->ContainsFolder("dirlink"));
  EXPECT_FALSE(folder->ContainsFolder("link"));
  EXPECT_FALSE(folder->Contains("fifo")) << "neither a regular file nor a folder";
  EXPECT_FALSE(folder->Contains("dangling"));
}

TEST(CardFolder, TakesPlainNamesOnly) {
  const TempTree tree;
  tree.File("sub/inner");
  const auto folder = CardFolder::Of(tree.Path("sub"));
  for (const std::string& name : {std::string(), std::string("../sub"), std::string("/inner"),
                                  std::string("inner\0", 6), std::string("inner/")}) {
    EXPECT_FALSE(folder->Contains(name)) << name;
    EXPECT_FALSE(folder->Contains(name, Lookup::kDisk)) << name;
    EXPECT_FALSE(folder->Find(name)) << name;
  }
  EXPECT_TRUE(folder->Contains("inner"));
}

TEST(CardFolder, FindsNamesIgnoringCaseButPrefersTheExactOne) {
  const TempTree tree;
  tree.File("clip.MXF");
  tree.File("CLIP.mxf");
  tree.File("\xC3\x89T\xC3\x89.XML");  // with capital e acute
  std::filesystem::create_symlink("missing", tree.Path("INDEX.MIF"));
  const auto folder = CardFolder::Of(tree.Root());
  EXPECT_EQ(folder->Find("clip.MXF"), "clip.MXF");
  EXPECT_EQ(folder->Find("Clip.Mxf"), "CLIP.mxf") << "the first in order of code units";
  EXPECT_EQ(folder->Find("\xC3\xA9t\xC3\xA9.xml"), "\xC3\x89T\xC3\x89.XML");
  EXPECT_FALSE(folder->Find("index.mif")) << "a dangling link";
  EXPECT_EQ(FindOnCard(tree.Path("Clip.Mxf")), tree.Path("CLIP.mxf"));
  EXPECT_EQ(FindOnCard(tree.Path("missing/clip")), std::nullopt);
  constexpr std::string_view kNames[] = {"INDEX.MIF", "CLIP.mxf", "clip.MXF"};
  EXPECT_EQ(folder->FirstOf(kNames), "CLIP.mxf");
}

TEST(CardFolder, ListsFilesAndFolders) {
  const TempTree tree;
  for (const char* name : {"b.MXF", "a.mxf", ".c.MXF", "d.xml", "sub/e.MXF", ".hidden/f.MXF"}) {
    tree.File(name);
  }
  std::filesystem::create_directory_symlink("sub", tree.Path("linked"));
  const auto folder = CardFolder::Of(tree.Root());
  EXPECT_THAT(folder->Files(), ElementsAre(".c.MXF", "a.mxf", "b.MXF", "d.xml"));
  EXPECT_THAT(folder->VisibleFiles(".MXF"), ElementsAre("a.mxf", "b.MXF"));
  EXPECT_THAT(folder->Folders(), ElementsAre(".hidden", "linked", "sub"));
  EXPECT_THAT(folder->VisibleFolders(), ElementsAre("linked", "sub"));
  EXPECT_EQ(folder->VisibleCount(), 5u);
  EXPECT_EQ(folder->VisibleNames().size(), 5u);
  EXPECT_THAT(ListFilesBelow(tree.Root(), ".MXF"),
              ElementsAre(tree.Path(".c.MXF"), tree.Path("a.mxf"), tree.Path("b.MXF"),
                          tree.Path(".hidden/f.MXF"), tree.Path("sub/e.MXF")))
      << "links to folders aren't followed";
}

TEST(CardFolder, IsEmptyIfItCannotBeListed) {
  const TempTree tree;
  for (const std::string& path :
       {tree.Path("missing"), tree.File("file"), std::string("relative")}) {
    const auto folder = CardFolder::Of(path);
    EXPECT_FALSE(folder->IsReadable()) << path;
    EXPECT_FALSE(folder->Contains("name")) << path;
    EXPECT_TRUE(folder->Files().empty()) << path;
  }
}

TEST(CardFolder, ListsOnceWithinACall) {
  const TempTree tree;
  tree.File("first");
  {
    const CallScope scope;
    EXPECT_TRUE(MayExistOnCard(tree.Path("third"))) << "nothing has been listed yet";
    EXPECT_FALSE(ExistsOnCard(tree.Path("second"), Lookup::kListing));
    tree.File("second");
    EXPECT_FALSE(ExistsOnCard(tree.Path("second"), Lookup::kListing));
    EXPECT_TRUE(ExistsOnCard(tree.Path("second"), Lookup::kDisk));
    EXPECT_TRUE(MayExistOnCard(tree.Path("first")));
    EXPECT_FALSE(MayExistOnCard(tree.Path("third")));
    EXPECT_TRUE(MayExistOnCard(tree.Path("unlisted/third")));
  }
  EXPECT_TRUE(ExistsOnCard(tree.Path("second"), Lookup::kListing));
  EXPECT_TRUE(MayExistOnCard(tree.Path("third")));
}

// The UTF-8 functions follow the rules of the UTF-16 ones.
TEST(Paths, AgreeWithPathUtils) {
  namespace PathUtils = Hestra::PathUtils;
  using Hestra::MakeStdString;
  using Hestra::MakeString;
  std::mt19937 random(11);
  const std::string_view parts[] = {"/",  "//", "a",        "B",    ".",
                                    "..", ".x", "\xC3\xA9", "\xE9", "\xF0\x9F\x8E\xAC"};
  for (int round = 0; round < 5000; ++round) {
    std::string path(random() % 4 == 0 ? "" : "/");
    for (std::size_t i = random() % 6; i > 0; --i) path += parts[random() % std::size(parts)];
    const auto text = MakeString(path);
    EXPECT_EQ(FileName(path), MakeStdString(PathUtils::GetFullFilePart(text)));
    EXPECT_EQ(FileStem(path), MakeStdString(PathUtils::GetFilePart(text)));
    EXPECT_EQ(FileExtension(path), MakeStdString(PathUtils::GetExtensionPart(text)));
    EXPECT_EQ(NormalizedPath(path), MakeStdString(PathUtils::ToNormalizedPath(text)));
    EXPECT_EQ(JoinPath(path, "n"), MakeStdString(PathUtils::CombinePaths(text, u"n")));
    EXPECT_EQ(WithoutTrailingSlash(path), MakeStdString(PathUtils::RemoveTrailingSlash(text)));
    EXPECT_EQ(IsValidPath(path), PathUtils::IsValidPath(text));
    EXPECT_EQ(CountCodeUnits(path), text.size());
    const std::size_t begin = std::min<std::size_t>(random() % 4, text.size());
    EXPECT_EQ(SubstrOfCodeUnits(path, begin, 3), MakeStdString(text.substr(begin, 3)));
    EXPECT_EQ(FoldCase(path), MakeStdString(tarnwick::utility::FoldCase(text)));
  }
  EXPECT_EQ(ParentFolder("/a/b.c"), "/a");
  EXPECT_EQ(ParentFolder("/a"), "/");
  EXPECT_EQ(ParentFolder("a"), "");
  EXPECT_TRUE(IsInside("/card/x/../y", "/card/"));
  EXPECT_FALSE(IsInside("/card/../y", "/card"));
  EXPECT_FALSE(IsInside("/card2/y", "/card"));
  EXPECT_FALSE(IsInside("/card", "/card"));
  EXPECT_TRUE(EqualIgnoringCase("C0001M01.XML", "c0001m01.xml"));
  EXPECT_TRUE(EqualIgnoringCase("\xC3\x89", "\xC3\xA9"));
  EXPECT_FALSE(EqualIgnoringCase("a", "ab"));
}

}  // namespace
