// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "providers/modern/ProviderREDMOV.h"
#include "support/CheckText.h"
#include "support/MadeMedia.h"
#include "support/TempTree.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const ProviderREDMOV kProvider;
const FieldNameSet kPaths{kNameField, kPathField, kExtraPathField};

// Adds a clip with these files, whose names begin with that of the clip.
void AddClip(const TempTree& tree, const std::string& clip, const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    tree.File("mag/" + clip + ".RDC/" + clip + file, MadeMedia(file));
  }
}

TEST(ProviderREDMOV, ListsClipsWithoutR3D) {
  const TempTree tree;
  AddClip(tree, "A001_C001_0925AB", {"_002.MOV", "_001.mov", ".wav", ".rtn"});
  AddClip(tree, "A001_C002_0925CD", {"_001.R3D", "_001.mov"});
  tree.Folder("mag/A001_C003_0925EF.RDC");
  tree.File("mag/A001_C004_0925GH.rdc/A001_C004_0925GH_001.mov");
  const std::string root = tree.Path("mag");
  EXPECT_EQ(kProvider.CanProvideFor(root), 100);
  const ContentMap content = kProvider.GetContent(root, kPaths, nullptr);
  const std::string clip = "A001_C001_0925AB.RDC/A001_C001_0925AB";
  const std::string key = root + "/" + clip + "_001.mov";
  EXPECT_THAT(KeysOf(content), ElementsAre(key));
  EXPECT_EQ(TextOf(content.at(key), kNameField), "A001_C001_0925AB");
  EXPECT_EQ(TextOf(content.at(key), kPathField), key);
  EXPECT_THAT(ExtraPathsOf(content.at(key), root),
              ElementsAre(clip + "_002.MOV", clip + ".rtn", clip + ".wav"));
  EXPECT_EQ(kProvider.GetContent(root, key, kPaths), content);
  EXPECT_THAT(kProvider.GetContent(root, root + "/other.mov", kPaths), IsEmpty());
  tree.File("mag/loose.mov");
  EXPECT_EQ(kProvider.CanProvideFor(root), 40);
  EXPECT_EQ(kProvider.CanProvideFor(root + "/A001_C001_0925AB.RDC"), 0);
}

TEST(ProviderREDMOV, ChecksSegments) {
  const TempTree tree;
  AddClip(tree, "A001_C001_0925AB", {"_002.mov", "_004.mov", ".RDX"});
  const Checked checked("com.halvane.Merisk.ProviderREDMOV", tree.Path("mag"));
  const std::string clip = "A001_C001_0925AB.RDC/A001_C001_0925AB";
  EXPECT_THAT(checked.findings,
              UnorderedElementsAre("missing error segment " + clip + "_001.mov",
                                   "missing error segment " + clip + "_003.mov",
                                   "missing warning segment " + tree.Path("mag")));
  EXPECT_THAT(checked.foreign, IsEmpty());
}

TEST(ProviderRED, NamesTheFilesNextToR3D) {
  const TempTree tree;
  AddClip(tree, "A001_C001_0925AB", {"_001.R3D", "_001.mov", "_001.rtn", ".RDX", ".wav", ".RMD"});
  tree.File("mag/A001_C001_0925AB.RDC/stray.mov", MadeMedia("stray.mov"));
  tree.File("mag/A001_C001_0925AB.RDC/A001_C001_0925AB_002.mov", "");
  const Checked checked("com.halvane.Merisk.ProviderRED", tree.Path("mag"));
  const std::string folder = "A001_C001_0925AB.RDC/";
  EXPECT_THAT(checked.findings,
              UnorderedElementsAre("empty error proxy " + folder + "A001_C001_0925AB_002.mov",
                                   "orphaned error essence " + folder + "stray.mov"));
  std::vector<std::string> parts;
  for (const CardFile& file : checked.result.files) {
    if (file.owners.empty()) continue;
    parts.push_back(file.path.substr(file.path.rfind("0925AB") + 6) + " " + file.part);
  }
  EXPECT_THAT(parts, UnorderedElementsAre("_001.R3D segment", "_001.mov proxy", "_002.mov proxy",
                                          "_001.rtn thumbnail", ".RDX sidecar", ".RMD sidecar",
                                          ".wav sound channel"));
}

}  // namespace
