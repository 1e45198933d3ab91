// SPDX-License-Identifier: MIT
// A share whose server is gone must hold nobody who doesn't ask for it.
#include "support/DeadShareTest.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "filesystem/WinProviderDirectory.h"
#include "filesystem/WinProviderVolume.h"
#include "foundation/platform/Volumes.h"

namespace {

namespace fs = std::filesystem;
using namespace Sorvik;
using sorvik_test::DeadShareTest;

class DeadShare : public DeadShareTest {
 protected:
  const WinProviderDirectory directory_;
};

TEST_F(DeadShare, HoldsNoListingAroundIt) {
  if (!mount_) GTEST_SKIP() << "no mount of a share can be made here";
  tree_.File("place/a.mov");
  tree_.File("place/x.desktop",
             "[Desktop Entry]\nType=Link\nURL=file://" + tree_.Path("place/nas/c"));
  fs::create_directory_symlink("nas/folder", tree_.Path("place/link"));
  fs::create_symlink("nas/other.lnk", tree_.Path("place/y.lnk"));
  const std::string place = tree_.Path("place");
  Ask("the listing", [&] {
    const auto content = directory_.GetContent(place, directory_.GetFieldList(), nullptr);
    EXPECT_EQ(content.size(), 5u);
    EXPECT_EQ(content.at("nas").at("06").cast<std::string>(), "D");
    EXPECT_EQ(content.at("nas").at("21").cast<std::string>(), "");
    EXPECT_EQ(content.at("link").at("13").cast<std::string>(), "Reparse Point");
    EXPECT_EQ(content.at("x.desktop").at("Path").cast<std::string>(), place + "/nas/c");
  });
  // The same by a path that goes through a link.
  fs::create_directory_symlink(place, tree_.Path("by"));
  Ask("the listing through a link", [&] {
    const auto content = directory_.GetContent(tree_.Path("by"), {"26", "06"}, nullptr);
    EXPECT_EQ(content.at("nas").at("06").cast<std::string>(), "D");
  });
  Ask("the call for one entry", [&] {
    EXPECT_EQ(directory_.GetContent(place, "nas", {"06"}).size(), 1u);
    EXPECT_EQ(directory_.GetContent(place, "link", {"06"}).size(), 1u);
  });
  Ask("the icon", [&] {
    Bitplate** plate = directory_.GetThumbnail(place, "nas", 32, 32, nullptr);
    EXPECT_NE(plate, nullptr);
    bitplateDispose(plate);
  });
}

TEST_F(DeadShare, IsListedAsAVolume) {
  if (!mount_) GTEST_SKIP() << "no mount of a share can be made here";
  const std::string share = tree_.Path("place/nas");
  Ask("the list of volumes", [&] {
    const auto content = WinProviderVolume().GetContent("volumes:", {"Name"}, nullptr);
    ASSERT_TRUE(content.contains(share));
    EXPECT_EQ(content.at(share).at("Name").cast<std::string>(), share + " (//dead/share)");
  });
  Ask("the place of a path", [&] {
    EXPECT_TRUE(platform::IsMountPoint(share));
    EXPECT_TRUE(platform::IsOnNetworkMount(share + "/a/b"));
    EXPECT_FALSE(platform::IsMountPoint(share + "/a"));
  });
}

}  // namespace
