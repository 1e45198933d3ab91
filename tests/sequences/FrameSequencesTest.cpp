// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "SorvikProvider/foundation/Environment.h"
#include "SorvikProvider/frame/ProviderRequest.h"
#include "providers/sequences/ProviderARRIRAW.h"
#include "providers/sequences/ProviderCanonRAW.h"
#include "providers/sequences/ProviderCinemaDNG.h"
#include "support/TempTree.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using sorvik_test::ExtraPathsOf;
using sorvik_test::KeysOf;
using sorvik_test::TempTree;
using sorvik_test::TextOf;
using Names = std::vector<std::string>;

const FieldNameSet kAllPaths{kNameField, kPathField, kExtraPathField};

Names ExtrasOfHead(const Provider& provider, const TempTree& tree) {
  const ContentMap content = provider.GetContent(tree.Root(), kAllPaths, nullptr);
  if (content.size() != 1) return {"expected one entry"};
  const FieldValueMap& listed = content.begin()->second;
  const ContentMap one = provider.GetContent(tree.Root(), content.begin()->first, kAllPaths);
  EXPECT_EQ(ExtraPathsOf(one.begin()->second, tree.Root()), ExtraPathsOf(listed, tree.Root()));
  return ExtraPathsOf(listed, tree.Root());
}

TEST(FrameSequences, AreRecognizedByCaseInsensitiveExtension) {
  const ProviderARRIRAW arri;
  const ProviderCanonRAW canon;
  const ProviderCinemaDNG dng;
  struct Case {
    const char* file;
    int arri, canon, dng;
  };
  for (const Case& c :
       {Case{"frame.ari", 100, 0, 0}, Case{"FRAME.ARI", 100, 0, 0}, Case{"frame.arx", 0, 0, 0},
        Case{"a.rmf", 0, 100, 0}, Case{"a.DnG", 0, 0, 100}, Case{".hidden.ari", 0, 0, 0},
        Case{"ARI", 0, 0, 0}, Case{"sub/frame.ari", 0, 0, 0}}) {
    const TempTree tree;
    tree.File(c.file);
    EXPECT_EQ(arri.CanProvideFor(tree.Root()), c.arri) << c.file;
    EXPECT_EQ(canon.CanProvideFor(tree.Root()), c.canon) << c.file;
    EXPECT_EQ(dng.CanProvideFor(tree.Root()), c.dng) << c.file;
  }
  const TempTree tree;
  const std::string file = tree.File("frame.ari");
  for (const std::string& bad : {std::string(), std::string("relative"), file, tree.Path("missing"),
                                 std::string("/a\0b", 4)}) {
    EXPECT_EQ(arri.CanProvideFor(bad), 0) << bad;
  }
}

TEST(FrameSequences, AcceptOnlyRegularFilesAsFrames) {
  const TempTree tree;
  tree.Folder("a.ari");
  ASSERT_EQ(mkfifo(tree.Path("b.ari").c_str(), 0600), 0);
  std::filesystem::create_symlink("c.ari", tree.Path("c.ari"));
  const ProviderARRIRAW arri;
  EXPECT_EQ(arri.CanProvideFor(tree.Root()), 0);
  EXPECT_TRUE(arri.GetContent(tree.Root(), kAllPaths, nullptr).empty());
  tree.File("d.ari");
  EXPECT_EQ(ExtrasOfHead(arri, tree), Names{"d.ari"});
}

TEST(FrameSequences, UseTheFirstFrameInCodeUnitOrderAsKey) {
  const TempTree tree;
  for (const char* name : {"A_9.ari", "A_10.ari", ".A_0.ari", "A_11.ARI", "other.txt"}) {
    tree.File(name);
  }
  const ProviderARRIRAW arri;
  const ContentMap content = arri.GetContent(tree.Root(), kAllPaths, nullptr);
  EXPECT_EQ(KeysOf(content), Names{tree.Path("A_10.ari")});
  const FieldValueMap& fields = content.begin()->second;
  EXPECT_EQ(TextOf(fields, kNameField), "A_10.ari");
  EXPECT_EQ(TextOf(fields, kPathField), tree.Path("A_10.ari"));
  // A hidden frame isn't used as the key, but is listed with the others.
  EXPECT_EQ(ExtraPathsOf(fields, tree.Root()),
            (Names{".A_0.ari", "A_10.ari", "A_11.ARI", "A_9.ari"}));
  EXPECT_EQ(ExtraPathsOf(arri.GetContent(tree.Root(), {kNameField}, nullptr).begin()->second, ""),
            Names{"<none>"});
  std::vector<UTF16String> paths{u"of another folder"}, names;
  arri.GetSequence(Hestra::MakeString(tree.Root()), paths, names);
  EXPECT_EQ(paths.size(), 1u);
}

TEST(FrameSequences, UseTheFolderNameForASingleEntry) {
  const TempTree tree;
  const std::string head = tree.File("CLIP.x/f1.dng");
  const ProviderCinemaDNG dng;
  FieldValueMap fields = dng.GetContent(tree.Path("CLIP.x"), head, kAllPaths).at(head);
  EXPECT_EQ(TextOf(fields, kNameField), "CLIP");
  EXPECT_EQ(TextOf(fields, kPathField), head);
  fields = dng.GetContent(tree.Path("missing"), head, kAllPaths).at(head);
  EXPECT_EQ(TextOf(fields, kPathField), "<none>");
  EXPECT_EQ(ExtraPathsOf(fields, tree.Root()), Names{"CLIP.x/f1.dng"});
}

TEST(FrameSequences, ListFilesWithTheExtensionOfTheKey) {
  const TempTree tree;
  const std::string key = tree.File("a.\xC3\xA9");  // two bytes, one code unit
  tree.File("b.\xC3\xA9");
  tree.File("c.x");
  tree.File("d\xC3\xA9");
  const FieldValueMap fields = ProviderCinemaDNG().GetContent(tree.Root(), key, kAllPaths).at(key);
  EXPECT_EQ(ExtraPathsOf(fields, tree.Root()), (Names{"a.\xC3\xA9", "b.\xC3\xA9"}));
}

TEST(FrameSequences, ReturnNothingWhenAborted) {
  const TempTree tree;
  tree.File("f.dng");
  const Hestra::InterfaceRef<ProviderListRequest, Hestra::IThreadedQueueRequest> request(
      new ProviderListRequest("", ""));
  request->Abort();
  EXPECT_TRUE(ProviderCinemaDNG().GetContent(tree.Root(), kAllPaths, request.Get()).empty());
}

TEST(FrameSequences, ListTheirSidecars) {
  {
    const TempTree tree;
    for (const char* name : {"A001.ARI", "A001.ARI.xmp", "A001.xmp", "A002.ARI"}) tree.File(name);
    EXPECT_EQ(ExtrasOfHead(ProviderARRIRAW(), tree),
              (Names{"A001.ARI", "A002.ARI", "A001.ARI.xmp"}));
  }
  {
    const TempTree tree;
    for (const char* name : {"C1_01.RMF", "C1_02.rmf", "C1_01.WAV", "C1.WAV", "C1_01.RMF.xmp",
                             "CLIPINFO.XML", "HrClip.inf"}) {
      tree.File(name);
    }
    EXPECT_EQ(ExtrasOfHead(ProviderCanonRAW(), tree),
              (Names{"C1_01.RMF", "C1_02.rmf", "C1_01.WAV", "C1_01.RMF.xmp", "CLIPINFO.XML",
                     "HrClip.inf"}));
  }
  struct Sound {
    const char* head;
    const char* sound;
  };
  for (const Sound& s : {Sound{"clip_000001.dng", "clip.WAV"}, Sound{"a_b_000001.DNG", "a_b.WAV"},
                         Sound{"000001.DNG", "000001.WAV"}}) {
    const TempTree tree;
    tree.File(s.head);
    tree.File(s.sound);
    tree.File(std::string(s.head) + ".xmp");
    EXPECT_EQ(ExtrasOfHead(ProviderCinemaDNG(), tree), (Names{s.head, s.sound}));
  }
}

TEST(FrameSequences, ReturnThumbnails) {
  for (const auto& [width, height] : {std::pair{64, 8}, std::pair{16, 200}}) {
    for (const bool dng : {false, true}) {
      const ProviderARRIRAW arri;
      const ProviderCinemaDNG cinema;
      const Provider& provider = dng ? static_cast<const Provider&>(cinema) : arri;
      Bitplate** picture = provider.GetThumbnail("", "", width, height, nullptr);
      ASSERT_NE(picture, nullptr);
      EXPECT_EQ(bitplateGetWidth(picture), width);
      EXPECT_EQ(bitplateGetHeight(picture), std::min(height, 16));
      bitplateDispose(picture);
    }
  }
  // The icon of Canon RAW has the requested height.
  Bitplate** icon = ProviderCanonRAW().GetThumbnail("", "", 48, 48, nullptr);
  ASSERT_NE(icon, nullptr);
  EXPECT_EQ(bitplateGetHeight(icon), 48);
  bitplateDispose(icon);
  Hestra::DirectoryRegistry::RegisterDirectory("document.templates", u"/nowhere");
  EXPECT_EQ(ProviderARRIRAW().GetThumbnail("", "", 16, 16, nullptr), nullptr);
  EXPECT_EQ(ProviderCinemaDNG().GetThumbnail("", "", 16, 16, nullptr), nullptr);
  Hestra::DirectoryRegistry::RegisterDirectory(
      "document.templates", tarnwick::filesupport::commondirs::ResourcesDir() + u"/templates");
}

}  // namespace
