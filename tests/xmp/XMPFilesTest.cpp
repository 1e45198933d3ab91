// SPDX-License-Identifier: MIT
// The sources of a file's metadata and their precedence.
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <string>

#include "support/Cards.h"
#include "support/TempTree.h"
#include "xmp/FileBytes.h"
#include "xmp/Namespaces.h"
#include "xmp/Sidecars.h"
#include "xmp/XMPFiles.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::TempTree;

constexpr XMP_OptionBits kFlags = 0x4A1;

// A packet with attributes such as "x:Label='a'".
std::string Packet(const std::string& attributes) {
  return "<?xpacket begin=''?><r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
         "<r:Description xmlns:x='http://ns.adobe.com/xap/1.0/' xmlns:m='" +
         std::string(kNsDM) + "' xmlns:d='" + kNsDC + "' " + attributes +
         "/></r:RDF><?xpacket end='w'?>";
}

// Returns xmp:Label as read by GetXMP, or how the call ended.
std::string LabelOf(const std::string& path) {
  TXMPFiles files;
  if (!files.OpenFile(path, kXMP_UnknownFile, kFlags)) return "not opened";
  TXMPMeta meta;
  try {
    if (!files.GetXMP(&meta)) return "no metadata";
  } catch (const XMP_Error&) {
    return "raised";
  }
  std::string label;
  return meta.GetProperty(kNsXMP, "Label", &label) ? label : "no label";
}

std::string PropertyOf(const std::string& path, const char* schema, const char* name) {
  TXMPFiles files;
  TXMPMeta meta;
  std::string value = "<none>";
  if (files.OpenFile(path, kXMP_UnknownFile, kFlags) && files.GetXMP(&meta)) {
    meta.GetProperty(schema, name, &value);
  }
  return value;
}

TEST(XMPFiles, OpensRegularFilesOnly) {
  const TempTree tree;
  EXPECT_EQ(LabelOf(tree.Path("missing")), "not opened");
  EXPECT_EQ(LabelOf(tree.Folder("folder")), "not opened");
  EXPECT_EQ(LabelOf("/dev/null"), "not opened");
  EXPECT_EQ(LabelOf(tree.File("empty.mov")), "no metadata");
  EXPECT_EQ(LabelOf(tree.File("noise.mov", "noise")), "no metadata");
  TXMPFiles files;
  TXMPMeta meta;
  EXPECT_THROW(files.GetXMP(&meta), XMP_Error);
  EXPECT_TRUE(files.OpenFile(tree.Path("noise.mov"), kXMP_UnknownFile, kFlags));
  files.CloseFile();
  EXPECT_THROW(files.GetXMP(&meta), XMP_Error);
}

TEST(XMPFiles, MergesPropertiesByPrecedence) {
  const TempTree tree;
  const std::string clip = tree.File("a.bin", "noise" + Packet("x:Label='file' m:scene='file'"));
  EXPECT_EQ(LabelOf(clip), "file");
  tree.File("a.XMP", Packet("x:Label='stem in capitals'"));
  EXPECT_EQ(LabelOf(clip), "stem in capitals");
  tree.File("a.xmp", Packet("x:Label='stem' x:Nickname='stem'"));
  EXPECT_EQ(LabelOf(clip), "stem");
  tree.File("a.bin.xmp", Packet("x:Label='full name'"));
  EXPECT_EQ(LabelOf(clip), "full name");
  EXPECT_EQ(PropertyOf(clip, kNsXMP, "Nickname"), "stem");
  EXPECT_EQ(PropertyOf(clip, kNsDM, "scene"), "file");
  // Sidecars have no sidecars.
  EXPECT_EQ(LabelOf(tree.Path("a.XMP")), "stem in capitals");
}

TEST(XMPFiles, ThrowsOnlyWithoutOtherSources) {
  const TempTree tree;
  const std::string broken = "<?xpacket begin=''?><rdf:RDF><cut<?xpacket end='w'?>";
  EXPECT_EQ(LabelOf(tree.File("broken.bin", broken)), "raised");
  EXPECT_EQ(LabelOf(tree.File("broken.xmp", "no xml")), "raised");
  EXPECT_EQ(LabelOf(tree.File("empty.xmp")), "no metadata");
  // A broken sidecar of a file with XMP, and of one with native facts.
  tree.File("good.bin.xmp", broken);
  EXPECT_EQ(LabelOf(tree.File("good.bin", Packet("x:Label='file'"))), "file");
  sorvik_test::MakeP2Card(tree, "card");
  sorvik_test::AddP2Clip(tree, "card", {.id = "0001AB"});
  tree.File("card/CONTENTS/CLIP/0001AB.XMP", broken);
  EXPECT_EQ(LabelOf(tree.Path("card/CONTENTS/CLIP/0001AB.XML")), "no label");
}

TEST(XMPFiles, PrefersCameraXmlForShots) {
  const TempTree tree;
  sorvik_test::MakeP2Card(tree, "card");
  sorvik_test::AddP2Clip(tree, "card", {.id = "0001AB", .globalId = "camera", .frames = 75});
  const std::string clip = tree.Path("card/CONTENTS/CLIP/0001AB.XML");
  const std::string frames = PropertyOf(clip, kNsDM, "videoFrameRate");
  tree.File("card/CONTENTS/CLIP/0001AB.XMP",
            Packet("x:Label='user' d:identifier='user' m:videoFrameRate='user'"));
  EXPECT_EQ(PropertyOf(clip, kNsXMP, "Label"), "user");
  EXPECT_EQ(PropertyOf(clip, kNsDC, "identifier"), "camera");
  EXPECT_EQ(PropertyOf(clip, kNsDM, "videoFrameRate"), "user");
  EXPECT_NE(frames, "user");
}

TEST(XMPFiles, FindsSidecarsOfCards) {
  struct Case {
    const char* clip;
    const char* sidecar;
  };
  for (const Case& c : {
           Case{"CONTENTS/CLIP/0001AB.XML", "CONTENTS/CLIP/0001AB.XMP"},
           Case{"CONTENTS/VIDEO/0001AB.MXF", "CONTENTS/CLIP/0001AB.XMP"},
           Case{"CONTENTS/AUDIO/0001AB00.MXF", "CONTENTS/CLIP/0001AB.XMP"},
           Case{"Clip/C0001M01.XML", "Clip/C0001M01.XMP"},
           Case{"Clip/C0001M01.XML", "Clip/C0001.MXF.XMP"},
           Case{"Clip/C0001.MXF", "Clip/C0001M01.XMP"},
           Case{"PROAV/CLPR/C0001/C0001M01.XML", "PROAV/CLPR/C0001/C0001M01.XMP"},
           Case{"PROAV/CLPR/C0001/C0001M01.XML", "PROAV/CLPR/C0001/C0001A01.MXF.XMP"},
           Case{"PROAV/CLPR/C0001/C0001V01.MXF", "PROAV/CLPR/C0001/C0001M01.XMP"},
           Case{"BPAV/CLPR/700_01/700_01.MP4", "BPAV/CLPR/700_01/700_01M01.XMP"},
           Case{"CONTENTS/CLIPS001/AA0001/AA000102.MXF", "CONTENTS/CLIPS001/AA0001/aa0001.xmp"},
           Case{"BDMV/STREAM/00001.MTS", "BDMV/STREAM/00001.xmp"},
           Case{"VIDEO/HVR/00_0001.M2T", "VIDEO/HVR/00_0001.XMP"},
           Case{"frames/A001.ARI", "frames/A001.ARI.xmp"},
       }) {
    const TempTree tree;
    const std::string clip = tree.File(c.clip, "noise");
    tree.File(c.sidecar, Packet("x:Label='found'"));
    EXPECT_EQ(LabelOf(clip), "found") << c.clip << " " << c.sidecar;
  }
}

TEST(XMPFiles, ReadsNoSidecarTwice) {
  for (const char* clip : {"/a/CONTENTS/CLIP/0001AB.XML", "/a/Clip/C0001M01.XML",
                           "/a/BPAV/CLPR/C0001/C0001M01.XML", "/a/b.MTS"}) {
    std::set<std::string> seen;
    for (const auto& spellings : SidecarCandidates(clip)) {
      for (const std::string& path : spellings) EXPECT_TRUE(seen.insert(path).second) << path;
    }
    EXPECT_GE(seen.size(), 3u);
  }
}

TEST(XMPFiles, ReadsPlainXMPWithOtherExtensions) {
  const TempTree tree;
  const std::string open = "<?xml version='1.0'?><!-- bare --><x:xmpmeta xmlns:x='adobe:ns:meta/'>";
  EXPECT_EQ(LabelOf(tree.File("bare.xml", open + "<r:RDF "
                                                 "xmlns:r='http://www.w3.org/1999/02/"
                                                 "22-rdf-syntax-ns#'><r:Description "
                                                 "xmlns:x='http://ns.adobe.com/xap/1.0/' "
                                                 "x:Label='bare'/></r:RDF></x:xmpmeta>")),
            "bare");
  EXPECT_EQ(LabelOf(tree.File("cut.xml", open)), "raised");
  EXPECT_EQ(LabelOf(tree.File("other.xml", "<xmp><x:xmpmeta/></xmp>")), "no metadata");
}

TEST(XMPFiles, ReadsASmallFileOnce) {
  const TempTree tree;
  const std::string path = tree.File("a.bin", "all of it");
  const auto file = FileOnDisk::Open(path);
  ASSERT_TRUE(file);
  std::ofstream(path, std::ios::trunc) << "otherwise";  // in place, under the open file
  const auto bytes = file->Read(4, 1u << 20);
  EXPECT_EQ(Sorvik::foundation::ByteReader(bytes).Text(), "of it");
  EXPECT_TRUE(file->Read(9, 1).empty());
}

}  // namespace
