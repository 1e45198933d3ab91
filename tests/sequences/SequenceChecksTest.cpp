// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "providers/sequences/ProviderARRIRAW.h"
#include "providers/sequences/ProviderCinemaDNG.h"
#include "providers/sequences/ProviderRED.h"
#include "support/TempTree.h"

namespace {

using namespace Sorvik;
using sorvik_test::TempTree;

// "kind path" of each missing part, relative to `root`.
std::vector<std::string> Missing(const StructureFindings& findings, const std::string& root) {
  std::vector<std::string> lines;
  for (const StructurePart& part : findings.missing) {
    lines.push_back(part.kind + " " + part.path.substr(root.size() + 1));
  }
  return lines;
}

using Lines = std::vector<std::string>;

TEST(SequenceChecks, ReportMissingFrames) {
  const TempTree tree;
  for (const char* name : {"A_0099.ari", "A_0100.ari", "A_0103.ari", "B_7.ari", "notes.ari",
                           "A_0105.txt", "A_18446744073709551616.ari", "C_18446744073709551615.ari",
                           "C_018446744073709551615.ari", "._A_0100.ari", "._A_0103.ari"}) {
    tree.File(name);
  }
  const StructureFindings findings = ProviderARRIRAW().CheckStructure(tree.Root());
  EXPECT_EQ(Missing(findings, tree.Root()), (Lines{"frame A_0101.ari", "frame A_0102.ari"}));
  EXPECT_EQ(findings.missing[0].entryKey, tree.Path("A_0099.ari"));
  EXPECT_TRUE(ProviderCinemaDNG().CheckStructure(tree.Root()).missing.empty());
}

TEST(SequenceChecks, CompareExtensionsIgnoringCase) {
  const TempTree tree;
  for (const char* name : {"B_0001.dng", "B_0002.DNG", "B_0003.dng"}) tree.File(name);
  EXPECT_EQ(Missing(ProviderCinemaDNG().CheckStructure(tree.Root()), tree.Root()), Lines{});
}

TEST(SequenceChecks, ReportBothEndsOfALongGap) {
  const TempTree tree;
  tree.File("f0000001.dng");
  tree.File("f9000000.dng");
  EXPECT_EQ(Missing(ProviderCinemaDNG().CheckStructure(tree.Root()), tree.Root()),
            (Lines{"frames from here f0000002.dng", "frames up to here f8999999.dng"}));
}

TEST(SequenceChecks, ReportMissingSegmentsOfRED) {
  const TempTree tree;
  tree.File("A001_C001.RDC/A001_C001_002.R3D");
  tree.File("A001_C001.RDC/A001_C001_004.R3D");
  tree.File("A001_C001.RDC/A001_C001_004 copy.R3D");
  tree.File("A001_C002.RDC/A001_C002_001.R3D");
  tree.File("A001_C003.RDC/A001_C003.RMD");
  tree.File("A001_C004.RDC/A001_C004_001.r3d");
  tree.File("Other/x_5.R3D");
  tree.File("Other/x_6.R3D");
  const StructureFindings findings = ProviderRED().CheckStructure(tree.Root());
  EXPECT_EQ(
      Missing(findings, tree.Root()),
      (Lines{"segment A001_C001.RDC/A001_C001_001.R3D", "segment A001_C001.RDC/A001_C001_003.R3D",
             "segment A001_C003.RDC", "segment A001_C004.RDC"}));
  ASSERT_EQ(findings.unreached.size(), 2U);
  EXPECT_EQ(findings.unreached[0].path, tree.Path("A001_C004.RDC/A001_C004_001.r3d"));
  EXPECT_EQ(findings.unreached[1].path, tree.Path("Other/x_6.R3D"));
}

}  // namespace
