// SPDX-License-Identifier: MIT
// The parser of card indexes, the lists read through it, and the search in them.
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
#include "support/Bytes.h"
#include "support/TempTree.h"

namespace {

using namespace Sorvik::foundation;
using namespace Sorvik::formats;
using Hestra::MakeString;
using Hestra::UTF16String;
using sony::MaterialPart;
using sony::MediaProfile;
using sony::TakePlaylist;
using sorvik_test::ReadSample;
using sorvik_test::TempTree;

std::string AttributeOf(XercesElement element, const UTF16String& name) {
  UTF16String text = u"left over";
  GetElementAttribute(element, name, text);
  return Hestra::MakeStdString(text);
}

TEST(XercesDocument, WalksElements) {
  const auto document = XercesDocument::Parse(
      "\xEF\xBB\xBF<r xmlns=\"urn:x\">t<a n='1'/><!-- --><p:b xmlns:p='urn:y' n='2'/><a "
      "n='3'/></r>");
  ASSERT_TRUE(document);
  const XercesElement root = document->Root();
  EXPECT_EQ(root.Name(), u"r");
  const XercesElement a = FindChildElement(root, u"a");
  EXPECT_EQ(AttributeOf(a, u"n"), "1");
  EXPECT_EQ(AttributeOf(a, u"other"), "");
  EXPECT_EQ(AttributeOf(FindNextSiblingElement(a, u"a"), u"n"), "3");
  EXPECT_EQ(AttributeOf(NextSiblingElement(a), u"n"), "2");
  EXPECT_TRUE(FindChildElement(root, u"p:b"));  // names stand with their prefix
  EXPECT_FALSE(FindChildElement(root, u"b"));
  EXPECT_FALSE(FindChildElement(FindChildElement(root, u"none"), u"a"));
  EXPECT_FALSE(FindNextSiblingElement(FindNextSiblingElement(a, u"a"), u"a"));
  EXPECT_EQ(AttributeOf(XercesElement(), u"n"), "");
}

TEST(XercesDocument, RefusesWhatCouldDoHarm) {
  const TempTree tree;
  const std::string secret = tree.File("secret", "secret");
  for (const std::string& text :
       {std::string(), std::string("x"), std::string("<a>"), std::string("<a></b>"),
        std::string("<!DOCTYPE a><a>t</a>"),
        "<!DOCTYPE a [<!ENTITY x SYSTEM \"file://" + secret + "\">]><a>&x;</a>",
        std::string("<!DOCTYPE a SYSTEM \"http://127.0.0.1:9/a.dtd\"><a>t</a>"),
        std::string("<a>&undeclared;</a>"), std::string("<a b='1' b='2'>t</a>"),
        std::string("<a>\xFF\xFE</a>"), std::string(512, '\0')}) {
    EXPECT_FALSE(XercesDocument::Parse(text)) << text;
  }
  std::string deep;
  for (int i = 0; i < 200'000; ++i) deep += "<a>";
  EXPECT_FALSE(XercesDocument::Parse(deep));
  EXPECT_FALSE(XercesDocument::Parse("<a><b/><b/><b/></a>", {.nodes = 3}));
  EXPECT_TRUE(XercesDocument::Parse("<a><b/><b/><b/></a>", {.depth = 2, .nodes = 4}));
  EXPECT_FALSE(XercesDocument::Parse("<a>text</a>", {.bytes = 10}));
  EXPECT_FALSE(XercesDocument::ReadFile(MakeString(tree.Root())));
  EXPECT_FALSE(XercesDocument::Parse("<a/>")->Root());  // without content it says nothing
}

TEST(XercesDocument, ServesManyThreads) {
  std::atomic<int> good{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&good] {
      for (int n = 0; n < 50; ++n) {
        const auto document = XercesDocument::Parse("<a><b c='d'/></a>");
        if (AttributeOf(FindChildElement(document->Root(), u"b"), u"c") == "d") ++good;
        if (!XercesDocument::Parse("<a><b></a>")) ++good;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(good, 400);
}

TEST(TextIndex, FindsTheFirstTextThatHoldsOrIsHeld) {
  const TextIndex index({u"", u"xabcx", u"abc", u"b", u"abcd"});
  EXPECT_EQ(index.FirstHolding(u"abc"), 1u);
  EXPECT_EQ(index.FirstHolding(u"abcd"), 4u);
  EXPECT_EQ(index.FirstHolding(u"b"), 1u);
  EXPECT_EQ(index.FirstHolding(u"abcde"), std::nullopt);
  EXPECT_EQ(index.FirstHolding(u""), std::nullopt);
  EXPECT_EQ(index.FirstHeldBy(u"/abcd/"), 2u);
  EXPECT_EQ(index.FirstHeldBy(u"b"), 3u);
  EXPECT_EQ(index.FirstHeldBy(u"a"), std::nullopt);
  // More lengths than are kept, and more text than is kept, give the same answers.
  for (std::size_t length = 1; length < 20; ++length) {
    EXPECT_EQ(index.FirstHolding(UTF16String(length, u'z')), std::nullopt);
  }
  const TextIndex large({UTF16String(600'000, u'y'), u"yz"});
  EXPECT_EQ(large.FirstHolding(u"yz"), 1u);
  EXPECT_EQ(large.FirstHolding(u"yy"), 0u);
}

TEST(MediaProfile, ReadsTheListsOfCameras) {
  const auto camera = ReadSample("xdcam/sony-camera-analyzer-root/MEDIAPRO.XML");
  const auto professional = ReadSample("xdcam/fx6-mediapro-fixture/MEDIAPRO.XML");
  if (!camera || !professional) GTEST_SKIP() << "the samples aren't here";
  EXPECT_EQ(MediaProfile::FromBytes(*camera).Materials().size(), 20u);
  const MediaProfile list = MediaProfile::FromBytes(*professional);
  ASSERT_TRUE(list.IsReadable());
  const sony::Material* clip = list.OfFile(u"628_1299m01.xml");
  ASSERT_NE(clip, nullptr);
  EXPECT_EQ(clip->uri, u"./Clip/628_1299.MXF");
  EXPECT_EQ(clip->frameRate, u"29.97p");
  EXPECT_EQ(clip->channels, u"8");
  EXPECT_EQ(clip->duration, u"285");
  ASSERT_NE(clip->First(MaterialPart::Kind::kProxy), nullptr);
  EXPECT_EQ(clip->First(MaterialPart::Kind::kProxy)->uri, u"./Sub/628_1299S03.MP4");
  EXPECT_EQ(clip->First(MaterialPart::Kind::kComponent), nullptr);
  EXPECT_EQ(list.OfFile(u"628_1299S03.MP4"), nullptr);  // a proxy is another clip's picture
  EXPECT_EQ(list.TakeWith(clip->umid), nullptr);
}

TEST(MediaProfile, EndsLongLists) {
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
  const UTF16String path = MakeString(tree.File("MEDIAPRO.XML", "<M><Contents>t</Contents></M>"));
  const CallScope scope;
  EXPECT_TRUE(MediaProfile::Of(path)->IsReadable());
  tree.File("MEDIAPRO.XML", "");
  EXPECT_TRUE(MediaProfile::Of(path)->IsReadable());
  EXPECT_FALSE(MediaProfile::Of(MakeString(tree.Path("other")))->IsReadable());
}

TEST(TakePlaylist, NamesItsParts) {
  const auto playlist = TakePlaylist::FromBytes(
      "<smil umid=\"T\"><head/><body><par><ref src=\"urn:smpte:umid:A\" clipEnd=\"x\"/><video/>"
      "<ref src=\"B\"/></par></body></smil>");
  ASSERT_TRUE(playlist);
  EXPECT_THAT(playlist->sources, testing::ElementsAre(u"A", u"B"));
  EXPECT_FALSE(playlist->complete);
  EXPECT_TRUE(TakePlaylist::FromBytes("<smil><body/></smil>")->complete);
  EXPECT_FALSE(TakePlaylist::FromBytes("<other><body/></other>"));
  EXPECT_FALSE(TakePlaylist::FromBytes("<smil>"));
}

}  // namespace
