// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "foundation/CallScope.h"
#include "foundation/Paths.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/File.h"
#include "foundation/hestra/PathUtils.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/tarnwick/FileSupport.h"
#include "support/TempTree.h"

namespace {

using Hestra::MakeString;
using Hestra::UTF16String;
using namespace Hestra::PathUtils;
using sorvik_test::TempTree;
namespace Directory = Hestra::Directory;
namespace fs = std::filesystem;

using Names = std::vector<std::string>;

Names NamesOf(const std::vector<UTF16String>& paths) {
  Names names;
  for (const UTF16String& path : paths)
    names.push_back(Hestra::MakeStdString(GetFullFilePart(path)));
  return names;
}

TEST(PathUtils, ValidatesPaths) {
  EXPECT_TRUE(IsLongFormFolderPath("/"));
  EXPECT_TRUE(IsLongFormFolderPath("/a"));
  for (const auto* bad : {"", "a", "./a", "//", "/a/", "C:\\a"}) {
    EXPECT_FALSE(IsLongFormFolderPath(bad)) << bad;
  }
  EXPECT_FALSE(IsLongFormFolderPath(std::string("/a\0b", 4)));
  EXPECT_FALSE(IsLongFormFolderPath("/" + std::string(4096, 'a')));
  EXPECT_TRUE(IsValidPath(u"/a/"));
  EXPECT_TRUE(IsValidPath(u"//"));
  EXPECT_FALSE(IsValidPath(u"a"));
  EXPECT_FALSE(IsValidPath(u""));
  EXPECT_FALSE(IsValidPath(UTF16String{u'/', u'\0'}));
  EXPECT_FALSE(IsValidPath(UTF16String{u'/', 0xD800}));
  EXPECT_FALSE(IsValidPath(u"/" + UTF16String(4095, u'a')));
  EXPECT_TRUE(IsValidPath(u"/" + UTF16String(4094, u'a')));
}

TEST(PathUtils, SplitsAndJoinsPaths) {
  EXPECT_EQ(GetFullFilePart(u"/a/b.c"), u"b.c");
  EXPECT_EQ(GetFilePart(u"/a/b.c.d"), u"b.c");
  EXPECT_EQ(GetExtensionPart(u"/a.x/b"), u"");
  EXPECT_EQ(GetExtensionPart(u"/a/.hidden"), u"");
  EXPECT_EQ(GetFilePart(u"/a/.hidden"), u".hidden");
  EXPECT_EQ(GetExtensionPart(u"/a/b."), u".");
  EXPECT_EQ(GetDirectoryPart(u"/a/b.c"), u"/a/");
  EXPECT_EQ(GetDirectoryPart(u"b"), u"");
  UTF16String drive, folder, title;
  SplitPath(u"/a/b.c", drive, folder, title);
  EXPECT_EQ(drive + u"|" + folder + u"|" + title, u"|/a/|b");
  EXPECT_EQ(MakePath(drive, folder, title, u"IDX"), u"/a/b.IDX");
  EXPECT_EQ(MakePath(drive, folder, title, u".IDX"), u"/a/b.IDX");
  EXPECT_EQ(AddTrailingSlash(u"/"), u"/");
  EXPECT_EQ(CombinePaths(u"/a/", u"b"), u"/a/b");
  EXPECT_EQ(RemoveTrailingSlash(u"/"), u"/");
  EXPECT_EQ(GetLeafDisplayStringFromPath(u"/a/b/"), u"b");
  EXPECT_EQ(GetLeafDisplayStringFromPath(u"/"), u"/");
}

TEST(PathUtils, NormalizesLexically) {
  const std::pair<const char16_t*, const char16_t*> cases[] = {{u"/", u"/"},
                                                               {u"//", u"/"},
                                                               {u"/a//b/./c/", u"/a/b/c"},
                                                               {u"/a/../b", u"/b"},
                                                               {u"/../..", u"/"},
                                                               {u"/a/b/../../..", u"/"},
                                                               {u"/a/.../b", u"/a/.../b"},
                                                               {u"a/../b", u"b"},
                                                               {u"", u""}};
  for (const auto& [path, normal] : cases) EXPECT_EQ(ToNormalizedPath(path), normal);
}

TEST(Directory, ListsInCodeUnitOrderAndFollowsLinks) {
  const TempTree tree;
  tree.File("b.TXT");
  tree.File("a.txt");
  tree.File(".hidden.txt");
  tree.File("\xE9.txt");  // Latin-1
  tree.Folder("folder.txt");
  fs::create_symlink(tree.Path("a.txt"), tree.Path("link.txt"));
  fs::create_symlink(tree.Path("missing"), tree.Path("dangling.txt"));
  fs::create_symlink("self.txt", tree.Path("self.txt"));
  ASSERT_EQ(mkfifo(tree.Path("fifo.txt").c_str(), 0600), 0);
  const UTF16String root = MakeString(tree.Root());
  EXPECT_EQ(NamesOf(Directory::GetContainedFilePaths(root, u".txt")),
            (std::vector<std::string>{".hidden.txt", "a.txt", "b.TXT", "link.txt", "\xE9.txt"}));
  std::vector<UTF16String> files, folders;
  Directory::GetContainedFileAndDirectoryPaths(root + u"/", files, folders);
  EXPECT_EQ(NamesOf(folders), std::vector<std::string>{"folder.txt"});
  FilterHiddenFiles(files);
  EXPECT_EQ(NamesOf(files), (std::vector<std::string>{"a.txt", "b.TXT", "link.txt", "\xE9.txt"}));
  EXPECT_EQ(Directory::GetContainedPaths(root).size(), 6u);
  EXPECT_TRUE(Directory::GetContainedPaths(root + u"/a.txt").empty());
  EXPECT_TRUE(Directory::GetContainedPaths(u"relative").empty());
  EXPECT_TRUE(ExistsOnDisk(Directory::GetContainedFilePaths(root).back()));  // the Latin-1 name
  EXPECT_FALSE(ExistsOnDisk(root + u"/dangling.txt"));
}

TEST(Directory, SortsNamesWithLongCommonPrefix) {
  const TempTree tree;
  const Names expected{"clip",           "clip.",         "clip.0", "clip.00000000",
                       "clip.000000001", "clip.00000001", "clip.1", "clip1"};
  for (auto name = expected.rbegin(); name != expected.rend(); ++name) tree.File(*name);
  EXPECT_EQ(NamesOf(Directory::GetContainedPaths(MakeString(tree.Root()))), expected);
  // U+1F3AC is above U+FF21, but its code units are below.
  tree.File("clip.\xEF\xBC\xA1");
  tree.File("clip.\xF0\x9F\x8E\xAC");
  const Names all = NamesOf(Directory::GetContainedPaths(MakeString(tree.Root())));
  EXPECT_EQ(Names(all.begin() + 7, all.end()),
            (Names{"clip.\xF0\x9F\x8E\xAC", "clip.\xEF\xBC\xA1", "clip1"}));
}

TEST(Directory, RecursesWithoutFollowingLinks) {
  const TempTree tree;
  tree.File("a/b/deep.xml");
  tree.File("top.xml");
  fs::create_directory_symlink(tree.Root(), tree.Path("a/loop"));
  std::string deepest = "d";
  for (int i = 0; i < 80; ++i) deepest += "/d";
  tree.File(deepest + "/too-deep.xml");
  EXPECT_EQ(NamesOf(Directory::GetContainedFilePaths(MakeString(tree.Root()), u".XML", true)),
            (std::vector<std::string>{"top.xml", "deep.xml"}));
}

TEST(Directory, ReadsFoldersOncePerOutermostCallScope) {
  const TempTree tree;
  tree.File("a");
  const UTF16String root = MakeString(tree.Root());
  {
    const Sorvik::foundation::CallScope outer;
    {
      const Sorvik::foundation::CallScope inner;
      EXPECT_EQ(Directory::GetContainedPaths(root).size(), 1u);
    }
    tree.File("b");
    EXPECT_EQ(Directory::GetContainedPaths(root).size(), 1u);
    const Sorvik::foundation::CallScope second;
    EXPECT_EQ(Directory::GetContainedPaths(root).size(), 1u);
  }
  EXPECT_EQ(Directory::GetContainedPaths(root).size(), 2u);
}

TEST(RegularFile, OpensNothingElse) {
  const TempTree tree;
  tree.File("file", "0123456789");
  ASSERT_EQ(mkfifo(tree.Path("fifo").c_str(), 0600), 0);
  using Sorvik::platform::RegularFile;
  EXPECT_FALSE(RegularFile::Open(tree.Path("fifo")));
  EXPECT_FALSE(RegularFile::Open(tree.Root()));
  EXPECT_FALSE(RegularFile::Open("/dev/null"));
  EXPECT_FALSE(RegularFile::Open(tree.Path("missing")));
  const auto file = RegularFile::Open(tree.Path("file"));
  ASSERT_TRUE(file);
  std::vector<std::byte> bytes(8);
  EXPECT_EQ(file->ReadAt(6, bytes), 4u);
  EXPECT_EQ(bytes[3], std::byte{'9'});
  EXPECT_EQ(file->ReadAt(~0ULL - 2, bytes), 0u);
  std::uint64_t size = 0;
  EXPECT_EQ(Hestra::File::SizeOnDisk(MakeString(tree.Path("file")), size), 0);
  EXPECT_EQ(size, 10u);
  EXPECT_EQ(
      static_cast<std::uint32_t>(Hestra::File::SizeOnDisk(MakeString(tree.Path("missing")), size)),
      0xA00F0003u);
  EXPECT_LT(Hestra::File::SizeOnDisk(MakeString(tree.Path("fifo")), size), 0);
  std::uint64_t time = 0;
  EXPECT_LT(Hestra::File::GetLastModificationTime(u"/missing/x", time), 0);
  EXPECT_EQ(Hestra::File::GetLastModificationTime(MakeString(tree.Path("file")), time), 0);
  EXPECT_GT(time, 0u);
}

TEST(PathText, PrefixesConsistOfCompleteCharacters) {
  using Sorvik::foundation::StartsWithCharacters;
  EXPECT_TRUE(StartsWithCharacters("A001_C001.R3D", "A001"));
  EXPECT_FALSE(StartsWithCharacters("a001", "A001"));
  EXPECT_FALSE(StartsWithCharacters("A0", "A001"));
  EXPECT_TRUE(StartsWithCharacters("\xE2\x82\xACx", "\xE2\x82\xAC"));
  EXPECT_TRUE(StartsWithCharacters("\xE2x", "\xE2")) << "not UTF-8";
  EXPECT_FALSE(StartsWithCharacters("\xE2\x82\xAC", "\xE2")) << "the first byte of a character";
}

TEST(FileSupport, NavigatesParents) {
  using namespace tarnwick::filesupport;
  const TempTree tree;
  tree.File("BDMV/STREAM/00001.MTS");
  const File file(MakeString(tree.Path("BDMV/STREAM/00001.MTS")));
  EXPECT_EQ(file.GetTitle(), u"00001");
  EXPECT_EQ(file.GetExtension(true), u".mts");
  EXPECT_EQ(file.Parent().Parent().GetName(), u"BDMV");
  EXPECT_TRUE(file.Exists());
  EXPECT_TRUE(file.Parent().Exists());
  EXPECT_FALSE(Dir(file.FullPath()).Exists()) << "a file";
  EXPECT_TRUE(Dir(u"/").IsTopLevelDir());
  EXPECT_FALSE(Dir(u"/").Parent().Exists());
  EXPECT_EQ(Dir(u"/a").Parent().FullPath(), u"/");
  EXPECT_EQ(CompareFileNames(u"Stream", u"STREAM"), 0);
  EXPECT_LT(CompareFileNames(u"a", u"B"), 0);
}

}  // namespace
