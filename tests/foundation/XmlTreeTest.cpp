// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "foundation/XmlEncoding.h"
#include "foundation/XmlTree.h"
#include "support/TempTree.h"

namespace {

using namespace Sorvik::foundation;

TEST(XmlTree, FindsByLocalNameInAnyNamespace) {
  const auto document = ParseXml(
      "<?xml version='1.0' encoding='UTF-16'?><!DOCTYPE P2Main><p:P2Main xmlns:p='urn:p' "
      "xmlns='urn:d'"
      " id='7'><ClipContent> <ClipName x='a' p:x='b'> 0037OO\r\n</ClipName><!-- c --><Empty/>"
      "<Text>a<b/>c</Text></ClipContent></p:P2Main>");
  ASSERT_TRUE(document);
  const XmlElement& root = document->Root();
  EXPECT_EQ(root.Name(), "P2Main");
  EXPECT_EQ(root.NameSpace(), "urn:p");
  EXPECT_EQ(root.Attribute("id"), "7");
  EXPECT_EQ(root.Attribute("none"), "");
  const XmlElement* clip = root.Child("ClipContent");
  ASSERT_NE(clip, nullptr);
  EXPECT_EQ(clip->TextOf("ClipName"), "0037OO");
  EXPECT_EQ(clip->TextOf("Empty"), "");
  EXPECT_EQ(clip->TextOf("Text"), "ac");
  EXPECT_EQ(clip->TextOf("Missing"), "");
  EXPECT_EQ(root.Find({"ClipContent", "ClipName"})->FindAttribute("urn:p", "x")->value, "b");
  EXPECT_EQ(root.Find({"None", "ClipName"}), nullptr);
  EXPECT_EQ(clip->Children().size(), 3u);
}

TEST(XmlTree, IgnoresContentAfterRootElement) {
  for (const char* rest : {"\n<b></c>", "<?xpacket end=\"w\"", "<?xpacket end=", "<!-- cut", "<"}) {
    const auto document = ParseXml(std::string("<a>1</a>") + rest);
    ASSERT_TRUE(document) << rest;
    EXPECT_EQ(document->Root().Text(), "1");
  }
  // A limit that is exceeded by an element without content, which ends at once.
  XmlLimits one;
  one.nodes = 0;
  EXPECT_FALSE(ParseXml("<a/>", one));
}

TEST(XmlTree, RejectsMalformedAndMaliciousDocuments) {
  for (const std::string bad : {"", "no xml", "<a>", "<a></b>", "<a x='1' x='2'/>",
                                "<!DOCTYPE a [<!ENTITY x 'y'>]><a>&x;</a>",
                                "<!DOCTYPE a [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><a>&x;</a>",
                                "<a>&undeclared;</a>"}) {
    EXPECT_FALSE(ParseXml(bad)) << bad;
  }
  std::string deep;
  for (int i = 0; i < 10'000; ++i) deep += "<a>";
  EXPECT_FALSE(ParseXml(deep));
  std::string many = "<a>";
  for (int i = 0; i < 2000; ++i) many += "<b/>";
  EXPECT_TRUE(ParseXml(many + "</a>"));
  EXPECT_FALSE(ParseXml(many + "</a>", {.nodes = 2000}));
  EXPECT_FALSE(ParseXml(many + "</a>", {.bytes = 100}));
  // Each element would have a copy of the namespace URI.
  many.replace(0, 3, "<a xmlns='" + std::string(1'000'000, 'n') + "'>");
  EXPECT_FALSE(ParseXml(many + "</a>"));
}

TEST(XmlTree, ReadsRegularFilesOnly) {
  const sorvik_test::TempTree tree;
  EXPECT_TRUE(ReadXmlFile(tree.File("a.xml", "<a/>")));
  EXPECT_FALSE(
      ReadXmlFile(tree.File("large.xml", "<a>" + std::string(100, ' ') + "</a>"), {.bytes = 100}));
  EXPECT_FALSE(ReadXmlFile(tree.Path("missing.xml")));
  ASSERT_EQ(mkfifo(tree.Path("fifo.xml").c_str(), 0600), 0);
  EXPECT_FALSE(ReadXmlFile(tree.Path("fifo.xml")));
}

TEST(XmlEncoding, IsDetectedByMarkOrFirstCharacter) {
  using namespace std::string_view_literals;
  for (const std::string_view bytes :
       {"<\xC3\xA9>"sv, "\xEF\xBB\xBF<\xC3\xA9>"sv, "<\xE9>"sv, "\xFF\xFE<\0\xE9\0>\0"sv,
        "\xFE\xFF\0<\0\xE9\0>"sv, "<\0\xE9\0>\0"sv, "\0<\0\xE9\0>"sv,
        "\xFF\xFE\0\0<\0\0\0\xE9\0\0\0>\0\0\0"sv, "\0\0\xFE\xFF\0\0\0<\0\0\0\xE9\0\0\0>"sv,
        "<\0\0\0\xE9\0\0\0>\0\0\0"sv, "\0\0\0<\0\0\0\xE9\0\0\0>"sv}) {
    EXPECT_EQ(ToUTF8(bytes), "<\xC3\xA9>");
  }
  EXPECT_EQ(ToUTF8("\xF0\x9F\x8E\xAC"), "\xF0\x9F\x8E\xAC");
  EXPECT_EQ(ToUTF8("\xFF\xFE\x3C\xD8\xAC\xDF\x00\xD8"sv), "\xF0\x9F\x8E\xAC\xEF\xBF\xBD");
  EXPECT_EQ(ToUTF8("\xFF\xFE\0\0\xAC\xF3\x01\0\0\0\x11\0"sv), "\xF0\x9F\x8E\xAC\xEF\xBF\xBD");
  EXPECT_EQ(ToUTF8("a&#x1F;b&#31;c&#9;&#x;&#\x01"), "a      b     c&#9;&#x;&# ");
}

}  // namespace
