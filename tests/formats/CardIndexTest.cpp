// SPDX-License-Identifier: MIT
// The parser of card indexes, the lists read with it, and the text index.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "formats/TextIndex.h"
#include "formats/XercesDocument.h"
#include "formats/sony/MediaProfile.h"
#include "formats/sony/TakePlaylist.h"
#include "foundation/CallScope.h"
#include "foundation/XmlTree.h"
#include "support/Bytes.h"
#include "support/TempTree.h"

namespace {

using namespace Sorvik::foundation;
using namespace Sorvik::formats;
using sony::MaterialPart;
using sony::MediaProfile;
using sony::TakePlaylist;
using sorvik_test::ReadSample;
using sorvik_test::TempTree;

std::string AttributeOf(XercesElement element, std::string_view name) {
  std::string text = "left over";
  GetElementAttribute(element, name, text);
  return text;
}

TEST(XercesDocument, WalksElements) {
  const auto document = XercesDocument::Parse(
      "\xEF\xBB\xBF<r xmlns=\"urn:x\">t<a n='1'/><!-- --><p:b xmlns:p='urn:y' n='2'/><a "
      "n='3'/></r>");
  ASSERT_TRUE(document);
  const XercesElement root = document->Root();
  EXPECT_EQ(root.Name(), "r");
  const XercesElement a = FindChildElement(root, "a");
  EXPECT_EQ(AttributeOf(a, "n"), "1");
  EXPECT_EQ(AttributeOf(a, "other"), "");
  EXPECT_EQ(AttributeOf(FindNextSiblingElement(a, "a"), "n"), "3");
  EXPECT_EQ(AttributeOf(NextSiblingElement(a), "n"), "2");
  EXPECT_TRUE(FindChildElement(root, "p:b"));  // the node name includes the prefix
  EXPECT_FALSE(FindChildElement(root, "b"));
  EXPECT_FALSE(FindChildElement(FindChildElement(root, "none"), "a"));
  EXPECT_FALSE(FindNextSiblingElement(FindNextSiblingElement(a, "a"), "a"));
  EXPECT_EQ(AttributeOf(XercesElement(), "n"), "");
}

TEST(XercesDocument, RejectsInvalidAndUnsafeDocuments) {
  const TempTree tree;
  const std::string secret = tree.File("secret", "secret");
  for (const std::string& text :
       {std::string(), std::string("x"), std::string("<a>"), std::string("<a></b>"),
        std::string("<!DOCTYPE a><a>t</a>"),
        "<!DOCTYPE a [<!ENTITY x SYSTEM \"file://" + secret + "\">]><a>&x;</a>",
        std::string("<!DOCTYPE a SYSTEM \"http://127.0.0.1:9/a.dtd\"><a>t</a>"),
        std::string("<a>&undeclared;</a>"), std::string("<a b='1' b='2'>t</a>"),
        std::string("<a>caf\xE9</b>"), std::string(512, '\0')}) {
    EXPECT_FALSE(XercesDocument::Parse(text)) << text;
  }
  std::string deep;
  for (int i = 0; i < 200'000; ++i) deep += "<a>";
  EXPECT_FALSE(XercesDocument::Parse(deep));
  EXPECT_FALSE(XercesDocument::Parse("<a><b/><b/><b/></a>", {.nodes = 3}));
  EXPECT_TRUE(XercesDocument::Parse("<a><b/><b/><b/></a>", {.depth = 2, .nodes = 4}));
  EXPECT_FALSE(XercesDocument::Parse("<a>text</a>", {.bytes = 10}));
  EXPECT_FALSE(XercesDocument::ReadFile(tree.Root()));
  EXPECT_FALSE(
      XercesDocument::Parse("<a/>")->Root());  // an element without children counts as missing
}

TEST(XercesDocument, ToleratesOtherEncodingsAndTextAroundTheRoot) {
  struct Case {
    std::string text;
    const char* value;
  };
  const std::string index = "<a><b c='d'/></a>";
  for (const Case& c : {
           Case{" \r\n<?xml version='1.0'?>" + index, "d"},
           Case{"<?xml version='1.0' encoding='x-unknown'?>" + index, "d"},
           Case{"<?xml version='1.0' encoding='UTF-16'?>" + index, "d"},
           Case{index + std::string("\0\0\0", 3), "d"},
           Case{index + "\n" + index, "d"},
           Case{index + "left over from an older file</a>", "d"},
           Case{"<a><b c='caf\xE9'/></a>", "caf\xC3\xA9"},
           Case{"<?xml version='1.0' encoding='UTF-8'?><a><b c='caf\xE9'/></a>", "caf\xC3\xA9"},
           Case{"\n<?xml version='1.0' encoding='Shift_JIS'?><a><b c='\x93\x8C'/></a>",
                "\xE6\x9D\xB1"},
           Case{"\n<?xml version='1.0' encoding='windows-1252'?><a><b c='\x80'/></a>",
                "\xE2\x82\xAC"},
       }) {
    const auto document = XercesDocument::Parse(c.text);
    ASSERT_TRUE(document) << c.text;
    EXPECT_EQ(AttributeOf(FindChildElement(document->Root(), "b"), "c"), c.value) << c.text;
  }
  const std::string entity = "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>junk";
  EXPECT_FALSE(XercesDocument::Parse("\n" + entity));
  EXPECT_EQ(NormalizeXml(entity), entity) << "isn't parsed after the declaration";
  EXPECT_FALSE(XercesDocument::Parse(index.substr(0, index.size() - 1))) << "truncated";
}

TEST(XercesDocument, ParsesOnSeveralThreads) {
  std::atomic<int> good{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&good] {
      for (int n = 0; n < 50; ++n) {
        const auto document = XercesDocument::Parse("<a><b c='d'/></a>");
        if (AttributeOf(FindChildElement(document->Root(), "b"), "c") == "d") ++good;
        if (!XercesDocument::Parse("<a><b></a>")) ++good;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(good, 400);
}

TEST(TextIndex, FindsTheFirstTextThatContainsOrIsContained) {
  const TextIndex index({"", "xabcx", "abc", "b", "abcd"});
  EXPECT_EQ(index.FirstContaining("abc"), 1u);
  EXPECT_EQ(index.FirstContaining("abcd"), 4u);
  EXPECT_EQ(index.FirstContaining("b"), 1u);
  EXPECT_EQ(index.FirstContaining("abcde"), std::nullopt);
  EXPECT_EQ(index.FirstContaining(""), std::nullopt);
  EXPECT_EQ(index.FirstContainedIn("/abcd/"), 2u);
  EXPECT_EQ(index.FirstContainedIn("b"), 3u);
  EXPECT_EQ(index.FirstContainedIn("a"), std::nullopt);
  // A stray byte of a file name is no part of a character.
  const TextIndex accented({"caf\xC3\xA9.MXF"});
  EXPECT_EQ(accented.FirstContaining("\xC3\xA9.MXF"), 0u);
  EXPECT_EQ(accented.FirstContaining("\xA9.MXF"), std::nullopt);
  // Without a cache (too many lengths, too much text) the answers are the same.
  for (std::size_t length = 1; length < 20; ++length) {
    EXPECT_EQ(index.FirstContaining(std::string(length, 'z')), std::nullopt);
  }
  const TextIndex large({std::string(600'000, 'y'), "yz"});
  EXPECT_EQ(large.FirstContaining("yz"), 1u);
  EXPECT_EQ(large.FirstContaining("yy"), 0u);
}

TEST(MediaProfile, ReadsTheListsOfCameras) {
  const auto camera = ReadSample("xdcam/sony-camera-analyzer-root/MEDIAPRO.XML");
  const auto professional = ReadSample("xdcam/fx6-mediapro-fixture/MEDIAPRO.XML");
  if (!camera || !professional) GTEST_SKIP() << "no samples";
  EXPECT_EQ(MediaProfile::FromBytes(*camera).Materials().size(), 20u);
  const MediaProfile list = MediaProfile::FromBytes(*professional);
  ASSERT_TRUE(list.IsReadable());
  const sony::Material* clip = list.FindMaterial("628_1299m01.xml");
  ASSERT_NE(clip, nullptr);
  EXPECT_EQ(clip->uri, "./Clip/628_1299.MXF");
  EXPECT_EQ(clip->frameRate, "29.97p");
  EXPECT_EQ(clip->channels, "8");
  EXPECT_EQ(clip->duration, "285");
  ASSERT_NE(clip->First(MaterialPart::Kind::kProxy), nullptr);
  EXPECT_EQ(clip->First(MaterialPart::Kind::kProxy)->uri, "./Sub/628_1299S03.MP4");
  EXPECT_EQ(clip->First(MaterialPart::Kind::kComponent), nullptr);
  EXPECT_EQ(list.FindMaterial("628_1299S03.MP4"), nullptr);  // proxies aren't indexed
  EXPECT_EQ(list.FindTake(clip->umid), nullptr);
}

TEST(MediaProfile, LimitsTheNumberOfRecords) {
  std::string materials;
  for (int i = 0; i < 60'000; ++i) materials += "<Material uri='a'/>";
  EXPECT_EQ(MediaProfile::FromBytes("<M><Contents>" + materials + "</Contents></M>").RecordCount(),
            sony::kMaxRecords);
  std::string parts;
  for (int i = 0; i < 60'000; ++i) parts += "<Proxy uri='a'/>";
  const MediaProfile list = MediaProfile::FromBytes("<M><Contents><Material>" + parts +
                                                    "</Material><Material/></Contents></M>");
  EXPECT_EQ(list.Materials().size(), 1u);
  EXPECT_LE(list.RecordCount(), sony::kMaxRecords + 1);
}

TEST(MediaProfile, IsReadOnceWithinACallScope) {
  const TempTree tree;
  const std::string path = tree.File("MEDIAPRO.XML", "<M><Contents>t</Contents></M>");
  const CallScope scope;
  EXPECT_TRUE(MediaProfile::Of(path)->IsReadable());
  tree.File("MEDIAPRO.XML", "");
  EXPECT_TRUE(MediaProfile::Of(path)->IsReadable());
  EXPECT_FALSE(MediaProfile::Of(tree.Path("other"))->IsReadable());
}

TEST(TakePlaylist, ListsItsSources) {
  const auto playlist = TakePlaylist::FromBytes(
      "<smil umid=\"T\"><head/><body><par><ref src=\"urn:smpte:umid:A\" clipEnd=\"x\"/><video/>"
      "<ref src=\"B\"/></par></body></smil>");
  ASSERT_TRUE(playlist);
  EXPECT_THAT(playlist->sources, testing::ElementsAre("A", "B"));
  EXPECT_FALSE(playlist->complete);
  EXPECT_TRUE(TakePlaylist::FromBytes("<smil><body/></smil>")->complete);
  EXPECT_FALSE(TakePlaylist::FromBytes("<other><body/></other>"));
  EXPECT_FALSE(TakePlaylist::FromBytes("<smil>"));
}

}  // namespace
