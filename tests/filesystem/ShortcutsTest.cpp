// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "filesystem/ShellLink.h"
#include "filesystem/Shortcuts.h"
#include "filesystem/WinProviderDirectory.h"
#include "support/Bytes.h"
#include "support/RealMount.h"
#include "support/TempTree.h"

namespace {

namespace fs = std::filesystem;
using namespace Sorvik;
using sorvik_test::Bytes;
using sorvik_test::RealMount;
using sorvik_test::TempTree;

Bytes Unicode(std::string_view ascii) {
  Bytes bytes;
  for (const char c : ascii) bytes.U16LE(static_cast<unsigned char>(c));
  return bytes;
}
// ShellLinkHeader
Bytes Header(std::uint32_t flags) {
  Bytes bytes;
  bytes.U32LE(0x4C).Hex("01140200 0000 0000 C000 000000000046");
  return bytes.U32LE(flags).PadTo(0x4C);
}
// StringData
Bytes String(std::string_view ascii) { return Bytes().U16LE(ascii.size()).Add(Unicode(ascii)); }
constexpr std::uint32_t kIdList = 0x1, kInfo = 0x2, kName = 0x4, kRelative = 0x8, kUnicode = 0x80;

Bytes RelativeLink(std::string_view path) {
  return Header(kIdList | kName | kRelative | kUnicode)
      .U16LE(3)
      .Text("xyz")  // IDList, skipped
      .Add(String("a description"))
      .Add(String(path));
}
// A LinkInfo with a VolumeID and a path, both in the code page.
Bytes VolumeInfo(std::string_view label, std::uint32_t serial, std::string_view path) {
  Bytes volume;
  volume.U32LE(16 + label.size() + 1).U32LE(2).U32LE(serial).U32LE(16).Text(label).U8(0);
  const std::size_t pathAt = 28 + volume.size();
  Bytes info;
  info.U32LE(pathAt + path.size() + 2).U32LE(28).U32LE(1).U32LE(28).U32LE(pathAt).U32LE(0);
  info.U32LE(pathAt + path.size() + 1).Add(volume).Text(path).U8(0).U8(0);
  return info;
}
// The same with the Unicode forms as well. The texts in the code page differ from them.
Bytes UnicodeVolumeInfo(std::string_view label, std::string_view path, std::string_view suffix) {
  Bytes volume;
  volume.U32LE(22 + 2 * label.size() + 2).U32LE(2).U32LE(7).U32LE(0x14).U32LE(22);
  volume.U16LE(0).Add(Unicode(label)).U16LE(0);
  const std::size_t textAt = 0x24 + volume.size();  // "?" in the code page
  const std::size_t pathAt = textAt + 2;
  const std::size_t suffixAt = pathAt + 2 * path.size() + 2;
  Bytes info;
  info.U32LE(suffixAt + 2 * suffix.size() + 2).U32LE(0x24).U32LE(1).U32LE(0x24).U32LE(textAt);
  info.U32LE(0).U32LE(textAt).U32LE(pathAt).U32LE(suffixAt).Add(volume).Text("?").U8(0);
  return info.Add(Unicode(path)).U16LE(0).Add(Unicode(suffix)).U16LE(0);
}
Bytes VolumeLink(std::string_view label, std::uint32_t serial, std::string_view path) {
  return Header(kInfo).Add(VolumeInfo(label, serial, path));
}

std::string TargetOf(const TempTree& tree, std::string_view name, const Bytes& content) {
  tree.File(name, content.str());
  const auto slash = name.rfind('/');
  const std::string folder = slash == name.npos ? tree.Root() : tree.Path(name.substr(0, slash));
  return ShortcutTarget(folder, std::string(name.substr(slash + 1))).value_or("");
}

TEST(ShellLink, ReadsAllParts) {
  const auto relative = ParseShellLink(RelativeLink("..\\m\\a.mov").Reader());
  ASSERT_TRUE(relative);
  EXPECT_EQ(relative->relativePath, "..\\m\\a.mov");

  const auto local = ParseShellLink(VolumeLink("CARD", 0x8A3F1C2D, "D:\\m\\a.mov").Reader());
  ASSERT_TRUE(local);
  EXPECT_EQ(local->volumeLabel, "CARD");
  EXPECT_EQ(local->volumeSerial, 0x8A3F1C2Du);
  EXPECT_EQ(local->localBasePath, "D:\\m\\a.mov");
  EXPECT_EQ(local->pathSuffix, "");

  // Unicode forms take precedence. The strings after the LinkInfo are read, too.
  const auto unicode = ParseShellLink(Header(kInfo | kRelative | kUnicode)
                                          .Add(UnicodeVolumeInfo("CARD 2", "E:\\m", "b.mov"))
                                          .Add(String("..\\b.mov"))
                                          .Reader());
  ASSERT_TRUE(unicode);
  EXPECT_EQ(unicode->volumeLabel, "CARD 2");
  EXPECT_EQ(unicode->volumeSerial, 7u);
  EXPECT_EQ(unicode->localBasePath, "E:\\m");
  EXPECT_EQ(unicode->pathSuffix, "b.mov");
  EXPECT_EQ(unicode->relativePath, "..\\b.mov");

  // CommonNetworkRelativeLink with both forms of the name.
  Bytes network;
  network.U32LE(24 + 4 + 12).U32LE(0).U32LE(24).U32LE(0).U32LE(0x20000).U32LE(28);
  network.Text("\\\\?").U8(0).Add(Unicode("\\\\s\\c")).U16LE(0);
  const std::size_t suffixAt = 0x24 + network.size();
  Bytes info;
  info.U32LE(suffixAt + 4).U32LE(0x24).U32LE(2).U32LE(0).U32LE(0).U32LE(0x24).U32LE(0).U32LE(0);
  info.U32LE(suffixAt).Add(network).Add(Unicode("f")).U16LE(0);
  const auto share = ParseShellLink(Header(kInfo).Add(info).Reader());
  ASSERT_TRUE(share);
  EXPECT_EQ(share->networkName, "\\\\s\\c");
  EXPECT_EQ(share->pathSuffix, "f");

  const auto latin =
      ParseShellLink(Header(kRelative).U16LE(5).Text("caf\xe9\\").Reader());  // code page
  ASSERT_TRUE(latin);
  EXPECT_EQ(latin->relativePath, "caf\xc3\xa9\\");
}

TEST(ShellLink, SurvivesTruncationAndCorruption) {
  const Bytes complete = RelativeLink("a.mov");
  for (std::size_t size = 0; size < complete.size(); ++size) {
    const Bytes cut = complete.Cut(size);
    const auto link = ParseShellLink(cut.Reader());
    EXPECT_EQ(link.has_value(), size >= 0x4C) << size;
    EXPECT_EQ(link ? link->relativePath : "", "") << size;
  }
  const Bytes local = VolumeLink("CARD", 1, "D:\\a");
  for (std::size_t at = 0x4C; at < local.size(); ++at) {
    for (const std::uint64_t value : {0u, 0x80u, 0xFFu}) {
      Bytes damaged = local;
      const Bytes changed = damaged.Set(at, value, 1);
      EXPECT_TRUE(ParseShellLink(changed.Reader()));
      ParseShellLink(changed.Cut(changed.size() - 3).Reader());
    }
  }
  EXPECT_FALSE(ParseShellLink(Header(0).Set(4, 0xFF, 1).Reader()));
}

TEST(Shortcuts, ResolveRelativePathsCaseInsensitively) {
  const TempTree tree;
  tree.File("m/Clip One/a.mov");
  tree.File("links/sibling.mov");
  const std::string clip = tree.Path("m/Clip One/a.mov");
  EXPECT_EQ(TargetOf(tree, "links/x.lnk", RelativeLink("..\\m\\Clip One\\a.mov")), clip);
  EXPECT_EQ(TargetOf(tree, "links/X.LNK", RelativeLink("..\\M\\CLIP one\\A.Mov")), clip);
  EXPECT_EQ(TargetOf(tree, "links/y.lnk", RelativeLink(".\\sibling.mov")),
            tree.Path("links/sibling.mov"));
  EXPECT_EQ(TargetOf(tree, "links/z.lnk", RelativeLink("..\\m")), tree.Path("m"));
  // Missing targets, and paths that aren't relative.
  for (const char* path : {"..\\m\\missing.mov", "", "C:\\m\\a.mov", "\\\\srv\\share\\x"}) {
    EXPECT_EQ(TargetOf(tree, "links/no.lnk", RelativeLink(path)), "") << path;
  }
  EXPECT_EQ(TargetOf(tree, "links/nul.lnk", RelativeLink(std::string_view("..\\m\0x", 6))), "");
  EXPECT_EQ(TargetOf(tree, "links/cut.lnk", RelativeLink("..\\m").Cut(80)), "");
  EXPECT_EQ(TargetOf(tree, "x.mov", RelativeLink(".\\m")), "");
}

TEST(Shortcuts, AreRegularFilesOfWhichOnlyTheHeadIsRead) {
  const TempTree tree;
  tree.File("a.mov");
  tree.Folder("folder.lnk");
  ASSERT_EQ(mkfifo(tree.Path("fifo.lnk").c_str(), 0600), 0);
  fs::create_symlink("x.lnk", tree.Path("x.lnk"));
  for (const char* name : {"folder.lnk", "fifo.lnk", "x.lnk", "missing.lnk", "fifo.desktop"}) {
    EXPECT_FALSE(ShortcutTarget(tree.Root(), name)) << name;
  }
  // The path after so long a description is beyond the part that is read.
  const std::string text(33'000, 'x');
  EXPECT_EQ(TargetOf(tree, "long.lnk",
                     Header(kName | kRelative | kUnicode).Add(String(text)).Add(String("a.mov"))),
            "");
  EXPECT_EQ(TargetOf(tree, "tail.lnk", RelativeLink("a.mov").Fill(1 << 20)), tree.Path("a.mov"));
}

TEST(Shortcuts, FindVolumesByLabel) {
  const TempTree tree;
  const RealMount mount = RealMount::Image(tree.Path("image"), "SVKCARD", tree.Folder("card"));
  if (!mount) GTEST_SKIP() << "no loop mount of an ext4 image can be made here";
  tree.File("card/M/a.mov");
  const std::string clip = tree.Path("card/M/a.mov");
  EXPECT_EQ(TargetOf(tree, "x.lnk", VolumeLink("svkcard", 1, "D:\\m\\A.MOV")), clip);
  EXPECT_EQ(TargetOf(tree, "up.lnk", VolumeLink("SVKCARD", 1, "D:\\..\\image")), "");
  EXPECT_EQ(TargetOf(tree, "other.lnk", VolumeLink("OTHER", 1, "D:\\m\\a.mov")), "");
  EXPECT_EQ(TargetOf(tree, "none.lnk", VolumeLink("", 0, "D:\\m\\a.mov")), "");
}

std::string Desktop(const TempTree& tree, const std::string& url,
                    const std::string& type = "Link") {
  return TargetOf(tree, "x.desktop",
                  Bytes("# comment\n[Desktop Entry]\nType=" + type + "\nURL=" + url + "\n"));
}

TEST(Shortcuts, ResolveDesktopEntries) {
  const TempTree tree;
  const std::string clip = tree.File("m/a b.mov");
  const std::string root = tree.Root();
  EXPECT_EQ(Desktop(tree, "file://" + root + "/m/a%20b.mov"), clip);
  EXPECT_EQ(Desktop(tree, "file://localhost" + root + "/m/../m//./a%20b.mov"), clip);
  EXPECT_EQ(Desktop(tree, "file:" + root + "/m/"), tree.Path("m"));
  const std::string refused[] = {"file://" + root + "/m/missing",
                                 "file://other" + root + "/m",
                                 "http://x" + root + "/m",
                                 "file:m",
                                 root + "/m",
                                 "file://" + root + "/m%00",
                                 "file://" + root + "/m%zz",
                                 std::string()};
  for (const std::string& url : refused) {
    EXPECT_EQ(Desktop(tree, url), "") << url;
  }
  EXPECT_EQ(Desktop(tree, "file://" + root + "/m", "Application"), "");
  EXPECT_EQ(TargetOf(tree, "bad.desktop", Bytes("not a desktop entry")), "");
  EXPECT_EQ(TargetOf(tree, "empty.desktop", Bytes()), "");
}

TEST(Shortcuts, ListTargetUnderKeyOfShortcut) {
  const TempTree tree;
  tree.File("m/a.mov", "12345");
  TargetOf(tree, "x.lnk", RelativeLink("m\\a.mov"));
  TargetOf(tree, "broken.lnk", RelativeLink("m\\b.mov"));
  const WinProviderDirectory provider;
  const ContentMap content =
      provider.GetContent(tree.Root(), {"Name", "Path", "02", "26"}, nullptr);
  const FieldValueMap& entry = content.at("x.lnk");
  EXPECT_EQ(entry.at("Name").cast<std::string>(), "a.mov");
  EXPECT_EQ(entry.at("Path").cast<std::string>(), tree.Path("m/a.mov"));
  EXPECT_EQ(entry.at("02").cast<std::string>(), tree.Path("m/a.mov"));
  // Size and attributes are those of the shortcut itself.
  EXPECT_GT(entry.at("26").cast<Provider::ByteSize_t>().value, 76u);
  EXPECT_EQ(content.at("broken.lnk").at("Path").cast<std::string>(), tree.Path("broken.lnk"));
  EXPECT_EQ(provider.GetContent(tree.Root(), "x.lnk", {"Name"}).at("x.lnk").at("Name"),
            any_regular_t(std::string("a.mov")));
}

}  // namespace
