// SPDX-License-Identifier: MIT
// An unreachable network share must not block listings of other folders.
#include "support/DeadShareTest.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "filesystem/WinProviderDirectory.h"
#include "filesystem/WinProviderVolume.h"
#include "foundation/Mounts.h"

namespace {

namespace fs = std::filesystem;
using namespace Sorvik;
using sorvik_test::DeadShareTest;

class DeadShare : public DeadShareTest {
 protected:
  const WinProviderDirectory directory_;
};

TEST_F(DeadShare, ListingDoesNotBlock) {
  if (!mount_) GTEST_SKIP() << "no mount of a share can be made here";
  tree_.File("folder/a.mov");
  tree_.File("folder/x.desktop",
             "[Desktop Entry]\nType=Link\nURL=file://" + tree_.Path("folder/nas/c"));
  fs::create_directory_symlink("nas/folder", tree_.Path("folder/link"));
  fs::create_symlink("nas/other.lnk", tree_.Path("folder/y.lnk"));
  const std::string folder = tree_.Path("folder");
  Ask("the listing", [&] {
    const auto content = directory_.GetContent(folder, directory_.GetFieldList(), nullptr);
    EXPECT_EQ(content.size(), 5u);
    EXPECT_EQ(content.at("nas").at("06").cast<std::string>(), "D");
    EXPECT_EQ(content.at("nas").at("21").cast<std::string>(), "");
    EXPECT_EQ(content.at("link").at("13").cast<std::string>(), "Reparse Point");
    EXPECT_EQ(content.at("x.desktop").at("Path").cast<std::string>(), folder + "/nas/c");
  });
  // The same folder through a symbolic link.
  fs::create_directory_symlink(folder, tree_.Path("by"));
  Ask("the listing through a link", [&] {
    const auto content = directory_.GetContent(tree_.Path("by"), {"26", "06"}, nullptr);
    EXPECT_EQ(content.at("nas").at("06").cast<std::string>(), "D");
  });
  Ask("the call for one entry", [&] {
    EXPECT_EQ(directory_.GetContent(folder, "nas", {"06"}).size(), 1u);
    EXPECT_EQ(directory_.GetContent(folder, "link", {"06"}).size(), 1u);
  });
  Ask("the icon", [&] {
    Bitplate** plate = directory_.GetThumbnail(folder, "nas", 32, 32, nullptr);
    EXPECT_NE(plate, nullptr);
    bitplateDispose(plate);
  });
}

TEST_F(DeadShare, IsListedAsVolume) {
  if (!mount_) GTEST_SKIP() << "no mount of a share can be made here";
  const std::string share = tree_.Path("folder/nas");
  Ask("the list of volumes", [&] {
    const auto content = WinProviderVolume().GetContent("volumes:", {"Name"}, nullptr);
    ASSERT_TRUE(content.contains(share));
    EXPECT_EQ(content.at(share).at("Name").cast<std::string>(), share + " (//dead/share)");
  });
  Ask("the mount of a path", [&] {
    EXPECT_TRUE(foundation::IsMountPoint(share));
    EXPECT_FALSE(foundation::IsMountPoint(share + "/a"));
  });
}

}  // namespace
