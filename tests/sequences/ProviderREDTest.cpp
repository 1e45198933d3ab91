// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "providers/sequences/ProviderRED.h"
#include "support/TempTree.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using sorvik_test::ExtraPathsOf;
using sorvik_test::KeysOf;
using sorvik_test::TempTree;
using sorvik_test::TextOf;
using Names = std::vector<std::string>;

TEST(RED, RecognizesCaseSensitiveExtensions) {
  const ProviderRED red;
  struct Case {
    const char* file;
    int score;
  };
  for (const Case& c :
       {Case{"A001_C001.RDC/A001_C001_001.R3D", 100}, Case{"A001_C001.RDC/A001_C001.RMD", 0},
        Case{"A001_C001.rdc/A001_C001_001.R3D", 0}, Case{"A001_C001.RDC/A001_C001_001.r3d", 0},
        Case{"A001_C001.RDC/.A001_C001_001.R3D", 0}, Case{"A001_C001_001.R3D", 0}}) {
    const TempTree tree;
    tree.File(c.file);
    EXPECT_EQ(red.CanProvideFor(tree.Root()), c.score) << c.file;
  }
  EXPECT_EQ(red.CanProvideFor(""), 0);
  EXPECT_EQ(red.GetMaximumThumbnailHeight(17), 16);
  EXPECT_EQ(red.GetMaximumThumbnailHeight(8), 8);
}

TEST(RED, ListsEverySubfolderWithASegment) {
  const TempTree tree;
  const std::string first = tree.File("A001_C001.RDC/A001_C001_001.R3D");
  for (const char* name :
       {"A001_C001_002.R3D", "A001_C001.RMD", "A001_C001.RTN", "notes.txt", ".A001_C001_x"}) {
    tree.File(std::string("A001_C001.RDC/") + name);
  }
  const std::string other = tree.File("Other/x.R3D");
  const ProviderRED red;
  const FieldNameSet fields{kNameField, kPathField, kExtraPathField};
  const ContentMap content = red.GetContent(tree.Root(), fields, nullptr);
  EXPECT_EQ(KeysOf(content), (Names{first, other}));
  EXPECT_EQ(TextOf(content.at(first), kNameField), "A001_C001_001.R3D");
  EXPECT_EQ(ExtraPathsOf(content.at(first), tree.Path("A001_C001.RDC")),
            (Names{"A001_C001.RMD", "A001_C001.RTN", "A001_C001_002.R3D"}));
  EXPECT_EQ(ExtraPathsOf(content.at(other), tree.Root()), Names{});

  const FieldValueMap one = red.GetContent(tree.Root(), first, fields).at(first);
  EXPECT_EQ(TextOf(one, kNameField), "A001_C001_001");
  EXPECT_EQ(ExtraPathsOf(one, tree.Root()).size(), 3u);
  const FieldValueMap missing = red.GetContent("/missing", first, fields).at(first);
  EXPECT_EQ(TextOf(missing, kPathField), "<none>");
  EXPECT_EQ(ExtraPathsOf(missing, tree.Root()), Names{"<none>"});
}

}  // namespace
