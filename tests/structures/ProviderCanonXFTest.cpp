// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "providers/structures/ProviderCanonXF.h"
#include "support/TempTree.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using sorvik_test::ExtraPathsOf;
using sorvik_test::KeysOf;
using sorvik_test::TempTree;
using sorvik_test::TextOf;
using Names = std::vector<std::string>;

const std::string kClips = "CONTENTS/CLIPS001/";
const FieldNameSet kPaths{kNameField, kPathField, kExtraPathField};

// The XMP of a sidecar with a shot name and a title.
std::string Packet(const std::string& shotName, const std::string& title) {
  return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
         "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description "
         "xmlns:xmpDM='http://ns.adobe.com/xmp/1.0/DynamicMedia/' "
         "xmlns:dc='http://purl.org/dc/elements/1.1/' xmpDM:shotName='" +
         shotName + "' dc:title='" + title + "'/></rdf:RDF></x:xmpmeta>";
}

void MakeCard(const TempTree& tree) {
  tree.File(kClips + "INDEX.MIF");
  tree.File(kClips + "AA0001/AA000101.MXF");
}

TEST(CanonXF, ScoresByForeignFiles) {
  const ProviderCanonXF provider;
  struct Case {
    const char* why;
    std::vector<const char*> more;
    int score;
  };
  for (const Case& c :
       {Case{"nothing else", {}, 100}, Case{"one foreign file", {"x"}, 100},
        Case{"two foreign files", {"x", "y"}, 40}, Case{"hidden files", {".x", ".y", ".z"}, 100},
        Case{"the Desktop folder", {"Desktop/f"}, 100}, Case{"a hidden folder", {".Trash/f"}, 100},
        Case{"a foreign folder", {"Other/f"}, 40},
        Case{"a journal", {"CONTENTS/CLIPS001/JOURNAL/00001.JNL"}, 100},
        Case{"a foreign file in the clip root", {"CONTENTS/CLIPS001/x"}, 40},
        Case{"a hidden file in the clip root", {"CONTENTS/CLIPS001/.x"}, 100},
        Case{"other clip roots", {"CONTENTS/CLIPS002/f"}, 100}}) {
    const TempTree tree;
    MakeCard(tree);
    for (const char* file : c.more) tree.File(file);
    EXPECT_EQ(provider.CanProvideFor(tree.Root()), c.score) << c.why;
  }
}

TEST(CanonXF, RequiresIndexAndClipFolder) {
  const ProviderCanonXF provider;
  for (const char* folder : {"AA001", "AAA001", "A10001", "AA00011", "JOURNAL"}) {
    const TempTree tree;
    tree.File(kClips + "INDEX.MIF");
    tree.File(kClips + folder + "/AA000101.MXF");
    EXPECT_EQ(provider.CanProvideFor(tree.Root()), 0) << folder;
  }
  const TempTree lower;
  lower.File(kClips + "INDEX.MIF");
  lower.Folder(kClips + "aa0001");
  EXPECT_EQ(provider.CanProvideFor(lower.Root()), 100);
  const TempTree without;
  without.File(kClips + "AA0001/AA000101.MXF");
  EXPECT_EQ(provider.CanProvideFor(without.Root()), 0);
  EXPECT_EQ(provider.CanProvideFor(without.Path(kClips + "AA0001/AA000101.MXF")), 0);
  EXPECT_EQ(provider.CanProvideFor(""), 0);
}

TEST(CanonXF, UsesTheFirstSpanAsKey) {
  const TempTree tree;
  MakeCard(tree);
  tree.File(kClips + "AA0001/AA000102.mxf");
  tree.File(kClips + "AA0001/AA000100.txt");
  tree.File(kClips + "AB0002/AB000203.MXF");  // its first spans are missing
  tree.File(kClips + "AC0003/AC000399.MXF");  // span 99 is never the first
  tree.File(kClips + "AD0004/CLIP.MXF");      // counts as span 0
  tree.File(kClips + "AD0004/AD000401.MXF");
  tree.Folder(kClips + "AE0005");
  const ProviderCanonXF provider;
  const ContentMap content = provider.GetContent(tree.Root(), kPaths, nullptr);
  // "AD000401.MXF" comes before "CLIP.MXF" and ends the search.
  EXPECT_EQ(KeysOf(content), (Names{"AA000101", "AB000203", "AD000401"}));
  EXPECT_EQ(TextOf(content.at("AA000101"), kPathField), tree.Path(kClips + "AA0001/AA000101.MXF"));
  EXPECT_EQ(TextOf(content.at("AA000101"), kNameField), "AA000101");
  const TempTree zero;
  MakeCard(zero);
  zero.File(kClips + "AA0001/A.MXF");
  EXPECT_TRUE(provider.GetContent(zero.Root(), kPaths, nullptr).empty());
}

TEST(CanonXF, ListsAllFilesOfAClip) {
  const TempTree tree;
  MakeCard(tree);
  for (const char* name :
       {"AA000102.MXF", "aa000103.mxf", "AA0001.CIF", "AA0001.XML", "AA000101.SIF", "AA000102.SIF",
        "AA0001.SIF", "BB000101.SIF", "other.txt"}) {
    tree.File(kClips + "AA0001/" + name);
  }
  tree.File(kClips + "JOURNAL/00001.JNL");
  const Names expected{"INDEX.MIF",           "JOURNAL",
                       "JOURNAL/00001.JNL",   "AA0001",
                       "AA0001/AA0001.CIF",   "AA0001/AA0001.XML",
                       "AA0001/AA0001.SIF",   "AA0001/AA000101.SIF",
                       "AA0001/AA000102.SIF", "AA0001/AA000102.MXF",
                       "AA0001/aa000103.mxf"};
  const std::string clipRoot = tree.Path("CONTENTS/CLIPS001");
  const ProviderCanonXF provider;
  EXPECT_EQ(
      ExtraPathsOf(provider.GetContent(tree.Root(), kPaths, nullptr).at("AA000101"), clipRoot),
      expected);
  EXPECT_EQ(
      ExtraPathsOf(provider.GetContent(tree.Root(), "AA000101", kPaths).at("AA000101"), clipRoot),
      expected);
  EXPECT_TRUE(provider.GetContent(tree.Root(), "AA000109", kPaths).empty());
  EXPECT_TRUE(provider.GetContent(tree.Root(), "AA0001/../AA0001/AA000101", kPaths).empty());
}

TEST(CanonXF, FindsClipFoldersIgnoringCase) {
  const TempTree tree;
  tree.File(kClips + "INDEX.MIF");
  tree.File(kClips + "aa0001/aa000101.MXF");
  tree.File(kClips + "aa0001/aa0001.xml");
  const ProviderCanonXF provider;
  const ContentMap content = provider.GetContent(tree.Root(), kPaths, nullptr);
  EXPECT_EQ(ExtraPathsOf(content.at("aa000101"), tree.Path("CONTENTS/CLIPS001")),
            (Names{"INDEX.MIF", "aa0001", "aa0001/aa0001.xml"}));
  // Two clips whose folders differ only in case keep their own files.
  tree.File(kClips + "AA0001/AA000101.MXF");
  tree.File(kClips + "AA0001/AA0001.CIF");
  const ContentMap both = provider.GetContent(tree.Root(), kPaths, nullptr);
  EXPECT_EQ(ExtraPathsOf(both.at("aa000101"), tree.Path("CONTENTS/CLIPS001")),
            (Names{"INDEX.MIF", "aa0001", "aa0001/aa0001.xml"}));
  EXPECT_EQ(ExtraPathsOf(both.at("AA000101"), tree.Path("CONTENTS/CLIPS001")),
            (Names{"INDEX.MIF", "AA0001", "AA0001/AA0001.CIF"}));
}

// The operation for one entry accepts the keys of a listing, however their files are spelled.
TEST(CanonXF, AcceptsEveryListedKey) {
  const TempTree tree;
  tree.File(kClips + "INDEX.MIF");
  tree.File(kClips + "AA0001/AA000101.mxf");
  tree.File(kClips + "ab0002/AB000201.MXF");
  tree.File(kClips + "AC0003/AC000301.MXF");
  tree.File(kClips + "AC0003/._AC000301.MXF");  // written by a desktop
  ASSERT_EQ(mkfifo(tree.Path(kClips + "AA0001/AA000102.MXF").c_str(), 0600), 0);
  const ProviderCanonXF provider;
  const ContentMap content = provider.GetContent(tree.Root(), kPaths, nullptr);
  EXPECT_EQ(KeysOf(content), (Names{"AA000101", "AB000201", "AC000301"}));
  for (const auto& [key, fields] : content) {
    const ContentMap one = provider.GetContent(tree.Root(), key, kPaths);
    ASSERT_TRUE(one.contains(key)) << key;
    EXPECT_EQ(TextOf(one.at(key), kPathField), TextOf(fields, kPathField));
    EXPECT_EQ(ExtraPathsOf(one.at(key), tree.Root()), ExtraPathsOf(fields, tree.Root()));
  }
  for (const char* missing : {"ac000301", "AA000102", "", "..", "AA0001"}) {
    EXPECT_TRUE(provider.GetContent(tree.Root(), missing, kPaths).empty()) << missing;
  }
}

TEST(CanonXF, PrefersTheShotName) {
  const ProviderCanonXF provider;
  struct Case {
    const char* shotName;
    const char* title;
    const char* listed;
    const char* single;  // without the shot name, which isn't requested
  };
  for (const Case& c : {Case{"Shot", "Title", "Shot", "Title"}, Case{"", "Title", "Title", "Title"},
                        Case{"", "", "AA000101", "AA000101"}}) {
    const TempTree tree;
    MakeCard(tree);
    tree.File(kClips + "AA0001/AA000101.MXF.xmp", Packet(c.shotName, c.title));
    EXPECT_EQ(
        TextOf(provider.GetContent(tree.Root(), {kNameField}, nullptr).at("AA000101"), kNameField),
        c.listed);
    EXPECT_EQ(TextOf(provider.GetContent(tree.Root(), "AA000101", {kNameField}).at("AA000101"),
                     kNameField),
              c.single);
  }
}

TEST(CanonXF, ListsDurationAndTimecodeAsText) {
  const TempTree tree;
  MakeCard(tree);
  const ProviderCanonXF provider;
  const FieldNameSet fields{"duration", "startTimecode"};
  const FieldValueMap listed = provider.GetContent(tree.Root(), fields, nullptr).at("AA000101");
  EXPECT_EQ(TextOf(listed, "duration"), "");
  EXPECT_EQ(TextOf(listed, "startTimecode"), "");
  EXPECT_FALSE(listed.contains(kExtraPathField));
}

TEST(CanonXF, ReturnsTheIconOfTheFile) {
  const TempTree tree;
  MakeCard(tree);
  const ProviderCanonXF provider;
  for (const char* key : {"AA0001", "AA000101"}) {
    Bitplate** picture = provider.GetThumbnail(tree.Root(), key, 80, 60, nullptr);
    ASSERT_NE(picture, nullptr) << key;
    EXPECT_EQ(bitplateGetWidth(picture), 16);
    EXPECT_EQ(bitplateGetHeight(picture), 16);
    bitplateDispose(picture);
  }
  EXPECT_EQ(provider.GetThumbnail(tree.Root(), "AA00010", 80, 60, nullptr), nullptr);
}

}  // namespace
