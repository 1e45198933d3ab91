// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "SorvikProvider/cardtools/FileGroup.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "support/TempTree.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;

class FileGroups : public testing::Test {
 protected:
  void SetUp() override {
    ProviderHost::Initialize();
    ProviderHost::RegisterAdditionalProviders();
  }
  void TearDown() override { ProviderHost::Shutdown(); }

  // "PROVIDER: part part | other other", with "~" in front of the proxy.
  std::string GroupOf(const std::string& file) const {
    const auto group = GetFileGroup(tree_.Path("loose/" + file));
    if (!group) return "none";
    std::string text = group->identification.substr(group->identification.rfind("Provider") + 8);
    const auto add = [&](const std::string& path) {
      text += (path == group->proxy ? " ~" : " ") + path.substr(path.rfind('/') + 1);
    };
    text += ":";
    for (const std::string& path : group->parts) add(path);
    text += " |";
    for (const std::string& path : group->others) add(path);
    return text;
  }

  const TempTree tree_;
};

TEST_F(FileGroups, FollowTheNamesOfEachCamera) {
  const std::string canon = "A_0001C313A260711_101700EJ_CANON";
  for (const std::string& file : std::vector<std::string>{"C0001.MP4",
                                                          "C0001M01.XML",
                                                          "C0001S03.MP4",
                                                          "C0001T01.JPG",
                                                          "C0001.xmp",
                                                          "C0011.MP4",
                                                          canon + "-001.MP4",
                                                          canon + "-001.XML",
                                                          canon + "-002.MP4",
                                                          canon + "-001_Proxy.MP4",
                                                          "GX010001.MP4",
                                                          "GX020001.MP4",
                                                          "GL010001.LRV",
                                                          "DJI_0007.MP4",
                                                          "DJI_0007.SRT",
                                                          "DJI_0007.LRF",
                                                          "00000.MTS",
                                                          "00000.CPI",
                                                          "IMG_0001.HEIC",
                                                          "IMG_E0001.HEIC",
                                                          "0001AB.MXF",
                                                          "0001AB00.MXF",
                                                          "0001AB01.MXF",
                                                          "0001AB.XML",
                                                          "0001AB.MP4",
                                                          "0002CD.MXF",
                                                          "AA000102.MXF",
                                                          "AA000101.MXF",
                                                          "AA0001.CIF",
                                                          "AA000201.XML",
                                                          "A001_C001_0925AB_002.R3D",
                                                          "A001_C001_0925AB_001.R3D",
                                                          "A001_C001_0925AB_001.mov",
                                                          "A001_C001_0925AB.RMD",
                                                          "SHIP.MP4",
                                                          "SHIPS01.MP4",
                                                          "notes.txt",
                                                          "only.SRT"}) {
    tree_.File("loose/" + file, "x");
  }
  const std::string sony =
      "SonyXAVC: C0001.MP4 | C0001.xmp C0001M01.XML ~C0001S03.MP4 C0001T01.JPG";
  const std::string parts = "CanonXFAVC: " + canon + "-001.MP4 " + canon + "-002.MP4 | ~" + canon +
                            "-001_Proxy.MP4 " + canon + "-001.XML";
  const std::string chapters = "DCIM: GX010001.MP4 GX020001.MP4 | ~GL010001.LRV";
  const std::pair<std::string, std::string> kCases[] = {
      {"C0001.MP4", sony},
      {"c0001m01.xml", "none"},  // another spelling is another file
      {"C0001M01.XML", sony},
      {"C0001S03.MP4", sony},
      {"C0011.MP4", "DCIM: C0011.MP4 |"},
      {canon + "-002.MP4", parts},
      {canon + "-001.XML", parts},
      {"GX020001.MP4", chapters},
      {"GL010001.LRV", chapters},
      {"DJI_0007.SRT", "DCIM: DJI_0007.MP4 | ~DJI_0007.LRF DJI_0007.SRT"},
      {"00000.CPI", "DCIM: 00000.MTS | 00000.CPI"},
      {"IMG_E0001.HEIC", "DCIM: IMG_0001.HEIC | IMG_E0001.HEIC"},
      {"0001AB01.MXF", "P2: 0001AB.MXF | ~0001AB.MP4 0001AB.XML 0001AB00.MXF 0001AB01.MXF"},
      {"0002CD.MXF", "DCIM: 0002CD.MXF |"},
      {"AA0001.CIF", "CanonXF: AA000101.MXF AA000102.MXF | AA0001.CIF"},
      {"AA000201.XML", "none"},
      {"A001_C001_0925AB.RMD",
       "RED: A001_C001_0925AB_001.R3D A001_C001_0925AB_002.R3D | A001_C001_0925AB.RMD "
       "~A001_C001_0925AB_001.mov"},
      {"SHIPS01.MP4", "DCIM: SHIPS01.MP4 |"},
      {"notes.txt", "none"},
      {"only.SRT", "none"},
      {"missing.MP4", "none"},
      {"", "none"}};
  for (const auto& [file, group] : kCases) EXPECT_EQ(GroupOf(file), group) << file;
}

TEST_F(FileGroups, IgnoreWhatIsNoFile) {
  tree_.Folder("loose/GX010001.MP4");
  mkfifo(tree_.Path("loose/GX020001.MP4").c_str(), 0600);
  tree_.File("loose/GX030001.MP4", "x");
  EXPECT_EQ(GroupOf("GX010001.MP4"), "none");
  EXPECT_EQ(GroupOf("GX020001.MP4"), "none");
  EXPECT_EQ(GroupOf("GX030001.MP4"), "DCIM: GX030001.MP4 |");
  for (const char* path : {"", "relative", "/", "/.."}) {
    EXPECT_FALSE(GetFileGroup(path).has_value()) << path;
  }
}

}  // namespace
