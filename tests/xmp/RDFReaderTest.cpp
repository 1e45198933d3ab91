// SPDX-License-Identifier: MIT
// All forms of properties in RDF, read back through the operations that the conversion uses.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "xmp/Namespaces.h"
#include "xmp/XMPMeta.h"

namespace {

using namespace Sorvik::xmp;

// A packet with `inside` as the content of rdf:RDF; its prefixes deliberately aren't the usual
// ones.
std::string Packet(std::string_view inside) {
  return std::string(R"(<?xpacket begin="" id="W5M0MpCehiHzreSzNTczkc9d"?>
<x:xmpmeta xmlns:x="adobe:ns:meta/"><R:RDF xmlns:R="http://www.w3.org/1999/02/22-rdf-syntax-ns#"
 xmlns:d="http://purl.org/dc/elements/1.1/" xmlns:m="http://ns.adobe.com/xmp/1.0/DynamicMedia/"
 xmlns:u="http://ns.adobe.com/xap/1.0/" xmlns:s="http://ns.adobe.com/xap/1.0/sType/Dimensions#"
 xmlns:q="urn:qualifier">)")
      .append(inside)
      .append("</R:RDF></x:xmpmeta>\n   <?xpacket end='w'?>");
}

TXMPMeta Parse(std::string_view text) {
  TXMPMeta meta;
  meta.ParseFromBuffer(text.data(), static_cast<std::uint32_t>(text.size()));
  return meta;
}
TXMPMeta ParseInside(std::string_view inside) { return Parse(Packet(inside)); }
// Parses the properties of one rdf:Description.
TXMPMeta ParseProperties(std::string_view properties) {
  return ParseInside(
      std::string("<R:Description R:about=''>").append(properties).append("</R:Description>"));
}

std::string Simple(const TXMPMeta& meta, const char* schema, const char* name) {
  std::string value = "<none>";
  meta.GetProperty(schema, name, &value);
  return value;
}

std::string Items(const TXMPMeta& meta, const char* schema, const char* name) {
  std::string all;
  std::string item;
  for (int i = 1; meta.GetArrayItem(schema, name, i, &item); ++i) all += "[" + item + "]";
  return all;
}

std::string Field(const TXMPMeta& meta, const char* name, const char* field,
                  const char* fieldSchema = kNsDM) {
  std::string value = "<none>";
  meta.GetStructField(kNsDM, name, fieldSchema, field, &value);
  return value;
}

TEST(RDF, ReadsSimpleProperties) {
  const TXMPMeta meta = ParseInside(R"(
      <R:Description R:about="" about="old" u:Label="in an attribute" u:Rating="3">
        <m:scene> blanks stay </m:scene><m:shotName><![CDATA[a<b]]>&amp;c</m:shotName>
        <m:album/><m:artist></m:artist>
        <m:camera R:resource="urn:camera"/><m:genre R:datatype="urn:type">text</m:genre>
        <m:loop R:parseType="Literal">True</m:loop>
      </R:Description>
      <R:Description u:Nickname="in a second block" u:Label="too late"/>)");
  EXPECT_EQ(Simple(meta, kNsXMP, "Label"), "in an attribute");
  EXPECT_EQ(Simple(meta, kNsXMP, "Rating"), "3");
  EXPECT_EQ(Simple(meta, kNsDM, "scene"), " blanks stay ");
  EXPECT_EQ(Simple(meta, kNsDM, "shotName"), "a<b&c");
  EXPECT_EQ(Simple(meta, kNsDM, "album"), "");
  EXPECT_EQ(Simple(meta, kNsDM, "artist"), "");
  EXPECT_EQ(Simple(meta, kNsDM, "camera"), "urn:camera");
  EXPECT_EQ(Simple(meta, kNsDM, "genre"), "text");
  EXPECT_EQ(Simple(meta, kNsDM, "loop"), "True");
  EXPECT_EQ(Simple(meta, kNsXMP, "Nickname"), "in a second block");
  EXPECT_FALSE(meta.HasProperty("", "about"));
  EXPECT_FALSE(meta.HasProperty(kNsRDF, "about"));
}

TEST(RDF, ReadsStructuresInEveryForm) {
  for (
      const char* form : {
          R"(<m:duration m:value="48" m:scale="1/24"/>)",
          R"(<m:duration R:parseType="Resource"><m:value>48</m:value><m:scale>1/24</m:scale></m:duration>)",
          R"(<m:duration><R:Description m:value="48"><m:scale>1/24</m:scale></R:Description></m:duration>)",
          R"(<m:duration><R:Description><m:value>48</m:value><m:scale>1/24</m:scale></R:Description></m:duration>)",
          R"(<m:duration><q:Time m:value="48" m:scale="1/24"/></m:duration>)",
          R"(<m:duration><m:value>48</m:value><m:scale>1/24</m:scale></m:duration>)",
          R"(<m:duration>
                <!-- a comment --><R:Description><R:type R:resource="urn:Time"/>
                <m:value>48</m:value><m:scale>1/24</m:scale></R:Description></m:duration>)",
          R"(<m:duration R:nodeID="t"/></R:Description>
              <R:Description R:nodeID="t" m:value="48" m:scale="1/24">)",
      }) {
    const TXMPMeta meta = ParseProperties(form);
    EXPECT_EQ(Field(meta, "duration", "value"), "48") << form;
    EXPECT_EQ(Field(meta, "duration", "scale"), "1/24") << form;
  }
  const TXMPMeta size =
      ParseProperties(R"(<m:videoFrameSize s:w="720" s:h="576" s:unit="pixel"/>)");
  EXPECT_EQ(Field(size, "videoFrameSize", "h", kNsDimensions), "576");
  EXPECT_EQ(Field(size, "videoFrameSize", "h"), "<none>");
}

TEST(RDF, ReadsArrays) {
  const TXMPMeta meta = ParseProperties(R"(
      <d:creator><R:Seq><R:li>one</R:li><R:li/><R:li R:parseType="Resource">
        <R:value>three</R:value><q:role>x</q:role></R:li></R:Seq></d:creator>
      <d:relation><R:Bag><R:_1>a:1</R:_1><R:_2 R:resource="urn:2"/></R:Bag></d:relation>
      <d:subject R:nodeID="list"/><d:publisher><R:Bag/></d:publisher>
      </R:Description><R:Bag R:nodeID="list"><R:li>referred</R:li></R:Bag><R:Description>)");
  EXPECT_EQ(Items(meta, kNsDC, "creator"), "[one][][three]");
  EXPECT_EQ(Items(meta, kNsDC, "relation"), "[a:1][urn:2]");
  EXPECT_EQ(Items(meta, kNsDC, "subject"), "[referred]");
  EXPECT_TRUE(meta.HasProperty(kNsDC, "publisher"));
  EXPECT_EQ(Items(meta, kNsDC, "publisher"), "");
  // An array exists as a property, although it has no text.
  EXPECT_EQ(Simple(meta, kNsDC, "creator"), "");
}

TEST(RDF, SeparatesValuesFromQualifiers) {
  for (
      const char* form : {
          R"(<d:identifier><R:Description><R:value>id</R:value><q:by>x</q:by></R:Description></d:identifier>)",
          R"(<d:identifier R:parseType="Resource"><q:by>x</q:by><R:value>id</R:value></d:identifier>)",
          R"(<d:identifier R:value="id" q:by="x"/>)",
          R"(<d:identifier><R:Description R:value="id" q:by="x"/></d:identifier>)",
          R"(<d:identifier xml:lang="en" R:resource="id" q:by="x"/>)",
          R"(<d:identifier q:by="x">id</d:identifier>)",
      }) {
    const TXMPMeta meta = ParseProperties(form);
    EXPECT_EQ(Simple(meta, kNsDC, "identifier"), "id") << form;
  }
  const TXMPMeta list = ParseProperties(R"(<d:creator R:parseType="Resource">
      <R:value><R:Seq><R:li>in a qualified list</R:li></R:Seq></R:value><q:by>x</q:by></d:creator>)");
  EXPECT_EQ(Items(list, kNsDC, "creator"), "[in a qualified list]");
}

TEST(RDF, AcceptsWrappersPaddingAndEncodings) {
  const std::string rdf =
      R"(<rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#"><rdf:Description
      xmlns:xmp="http://ns.adobe.com/xap/1.0/" xmp:Label="x"/></rdf:RDF>)";
  const std::string xml = R"(<?xml version="1.0" encoding="UTF-8"?>)";
  for (const std::string& text : {
           rdf,
           xml + rdf,
           "\n \t" + xml + "<!-- no packet -->" + rdf,
           "<?xpacket begin='\xEF\xBB\xBF'?>" + rdf + std::string(200, ' ') +
               "<?xpacket end=\"w\"?>",
           "<?xpacket begin='\xC3\xAF\xC2\xBB\xC2\xBF'?>" + rdf + "<?xpacket end='r'?>",
           rdf + "<?xpacket end='w'?>" + std::string(4, '\0') + "<trailing",
           "<?other pi?><x:xapmeta xmlns:x='adobe:ns:meta/'>" + rdf + "</x:xapmeta>" +
               std::string(9, '\0'),
           "<svg><metadata>" + rdf + "</metadata></svg>",
           "<!DOCTYPE svg PUBLIC 'a' 'http://localhost/none.dtd'>" + rdf,
       }) {
    EXPECT_EQ(Simple(Parse(text), kNsXMP, "Label"), "x") << text;
  }
  const TXMPMeta old = Parse(R"(<rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#">
      <rdf:Description xmlns:d="http://purl.org/dc/1.1/" d:identifier="old"/></rdf:RDF>)");
  EXPECT_EQ(Simple(old, kNsDC, "identifier"), "old");
}

TEST(RDF, ThrowsWithoutRDF) {
  const auto idOf = [](std::string_view text) {
    try {
      Parse(text);
    } catch (const XMP_Error& failure) {
      return failure.GetID();
    }
    return 0;
  };
  EXPECT_EQ(idOf(""), kXMPErr_BadXML);
  EXPECT_EQ(idOf("no xml"), kXMPErr_BadXML);
  EXPECT_EQ(idOf(Packet("<R:Description><m:scene>cut")), kXMPErr_BadXML);
  EXPECT_EQ(idOf(Packet("<R:Description p:unbound='x'/>")), kXMPErr_BadXML);
  EXPECT_EQ(idOf("<!DOCTYPE r [<!ENTITY e 'x'>]>" + Packet("")), kXMPErr_BadXML);
  EXPECT_EQ(idOf("<x:xmpmeta xmlns:x='adobe:ns:meta/'/>"), kXMPErr_BadRDF);
  EXPECT_EQ(idOf(Packet("")), 0);
}

TEST(RDF, LimitsExpandedReferences) {
  // Each node refers to the next twice: expanded, the last would occur 2^40 times.
  std::string nodes = "<R:Description><d:relation R:nodeID='n0'/></R:Description>";
  for (int i = 0; i < 40; ++i) {
    const std::string next = "R:nodeID='n" + std::to_string(i + 1) + "'/>";
    nodes += "<R:Description R:nodeID='n" + std::to_string(i) + "'><m:x " + next + "<m:y " + next +
             "</R:Description>";
  }
  nodes +=
      "<R:Description R:nodeID='self'><m:x R:nodeID='self'/><m:y R:nodeID='self'/>"
      "</R:Description><R:Description><m:z R:nodeID='self'/></R:Description>";
  // Many references to one large text.
  nodes += "<R:Description R:nodeID='big'><m:t>" + std::string(100'000, 'a') +
           "</m:t></R:Description><R:Description><m:list><R:Bag>";
  for (int i = 0; i < 20'000; ++i) nodes += "<R:li R:nodeID='big'/>";
  nodes += "</R:Bag></m:list></R:Description>";
  EXPECT_TRUE(ParseInside(nodes).HasProperty(kNsDM, "list"));
}

}  // namespace
