// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SorvikProvider/foundation/Localizer.h"
#include "filesystem/WinProviderVolume.h"

namespace {

using namespace Sorvik;
using platform::Volume;
using platform::VolumeKind;
using testing::IsEmpty;

// English texts, whatever the language of the machine.
class VolumeProvider : public testing::Test {
 protected:
  void SetUp() override { tarnwick::config::Localizer::Get().SetLanguage("en"); }
  void TearDown() override { tarnwick::config::Localizer::Get().SetLanguage(""); }

  static std::string NameOf(const Volume& volume) {
    return ContentOfVolumes({volume}, {"Name"})
        .at(volume.mountPoint)
        .at("Name")
        .cast<std::string>();
  }

  const WinProviderVolume provider_;
};

TEST_F(VolumeProvider, NamesVolumesByLabelKindAndShare) {
  EXPECT_EQ(NameOf({"/media/u/X", "DATA", "", VolumeKind::kRemovable, false, "", true}),
            "/media/u/X (DATA)");
  EXPECT_EQ(NameOf({"/", "", "", VolumeKind::kFixed, false, "", true}), "/ (Local Disk)");
  EXPECT_EQ(NameOf({"/r", "", "", VolumeKind::kRAMDisk, false, "", true}), "/r (RAM Disk)");
  EXPECT_EQ(NameOf({"/c", "", "", VolumeKind::kOptical, false, "", true}), "/c (CD-ROM)");
  EXPECT_EQ(NameOf({"/s", "", "", VolumeKind::kRemovable, false, "", true}), "/s (Removable)");
  EXPECT_EQ(NameOf({"/u", "", "", VolumeKind::kUnknown, false, "", true}), "/u (Unknown)");
  EXPECT_EQ(NameOf({"/nas", "", "", VolumeKind::kRemote, true, "//srv/share", true}),
            "/nas (//srv/share)");
  EXPECT_EQ(NameOf({"/run/g/s", "", "", VolumeKind::kRemote, true, "smb://srv/share", false}),
            "smb://srv/share");
}

TEST_F(VolumeProvider, FillsRequestedFields) {
  const Volume volume{"/data", "D", "", VolumeKind::kFixed, false, "", true};
  EXPECT_THAT(ContentOfVolumes({volume}, {}).at("/data"), IsEmpty());
  const auto extra = ContentOfVolumes({volume}, {"ExtraPath", "26", "name"}).at("/data");
  EXPECT_EQ(extra, (FieldValueMap{{"ExtraPath", any_regular_t()}}));
  const auto all = ContentOfVolumes({volume}, provider_.GetFieldList()).at("/data");
  EXPECT_EQ(all.size(), 3u);
  EXPECT_EQ(all.at("Path").cast<std::string>(), "/data");
}

TEST_F(VolumeProvider, ClaimsOnlyTheVolumeList) {
  EXPECT_EQ(provider_.CanProvideFor("volumes:"), 100);
  for (const std::string path : {"", "/", "volumes:/", "Volumes:", "networkvolumes:"}) {
    EXPECT_EQ(provider_.CanProvideFor(path), 0) << path;
    EXPECT_THAT(provider_.GetContent(path, {"Name"}, nullptr), IsEmpty()) << path;
    EXPECT_THAT(provider_.GetContent(path, "/", {"Name"}), IsEmpty()) << path;
  }
  EXPECT_TRUE(provider_.GetContent("volumes:", {"Name"}, nullptr).contains("/"));
  EXPECT_EQ(provider_.GetContent("volumes:", "/", {"Path"}).at("/").at("Path").cast<std::string>(),
            "/");
  EXPECT_THAT(provider_.GetContent("volumes:", "/absent", {"Name"}), IsEmpty());
  EXPECT_EQ(provider_.GetThumbnail("volumes:", "/", 16, 16, nullptr), nullptr);
}

}  // namespace
