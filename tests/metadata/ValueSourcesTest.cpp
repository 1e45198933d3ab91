// SPDX-License-Identifier: MIT
// The source of each value, and what weaker sources contain.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "SorvikProvider/metadata/ValueSources.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "support/TempTree.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using namespace Sorvik::XMPSupport;
using sorvik_test::TempTree;
using sorvik_test::TextOf;

constexpr char kP2Clip[] =
    "<P2Main><ClipContent><ClipName>0001AB</ClipName><GlobalClipID>camera</GlobalClipID>"
    "<Duration>100</Duration><EditUnit>1/25</EditUnit>"
    "<ClipMetadata><Access><Creator>operator</Creator></Access></ClipMetadata></ClipContent>"
    "</P2Main>";

std::string Sidecar(const std::string& attributes, const std::string& elements) {
  return "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><r:Description "
         "xmlns:dc='http://purl.org/dc/elements/1.1/' xmlns:xmp='http://ns.adobe.com/xap/1.0/' "
         "xmlns:aux='http://ns.adobe.com/exif/1.0/aux/' xmlns:photoshop='http://ns.adobe.com/"
         "photoshop/1.0/' " +
         attributes + ">" + elements + "</r:Description></r:RDF>";
}

// "from:value|from:other|..."; empty if the value is missing.
std::string Sourced(const SourcedValueMap& sources, const std::string& name) {
  const auto found = sources.find(name);
  if (found == sources.end()) return {};
  std::string text = std::string(GetSourceName(found->second.from)) + ":" + found->second.value;
  for (const SourceValue& other : found->second.others) {
    text += std::string("|") + GetSourceName(other.from) + ":" + other.value;
  }
  return text;
}

TEST(ValueSources, NamesStrongestSourceAndDifferingOnes) {
  TempTree tree;
  const std::string path = tree.File("CARD/CONTENTS/CLIP/0001AB.XML", kP2Clip);
  tree.File("CARD/CONTENTS/CLIP/0001AB.XMP",
            Sidecar("dc:identifier='export' xmp:Label='Red'",
                    "<dc:title><r:Alt><r:li xml:lang='x-default'>Sunrise</r:li></r:Alt>"
                    "</dc:title>"));
  const SourcedValueMap sources = GetValueSources(path);
  EXPECT_EQ(Sourced(sources, "Name"), "sidecar:Sunrise|record:0001AB");
  EXPECT_EQ(Sourced(sources, "Label"), "sidecar:Red");
  // The identifier of the camera takes precedence, and is listed once.
  EXPECT_EQ(Sourced(sources, "identifier"), "record:camera|sidecar:export");
  EXPECT_EQ(Sourced(sources, "frameCount"), "record:100 @ 1/25");
  EXPECT_EQ(sources.count("videoCompressor"), 0u);
  const FieldValueMap fields = MakeValue(path, XMPFieldBits().set());
  for (const auto& [name, sourced] : sources) {
    EXPECT_EQ(sourced.value, TextOf(fields, name.c_str())) << name;
  }
}

TEST(ValueSources, IncludeFurtherPropertiesInAnyForm) {
  std::set<std::string> names;
  for (const XMPCrossReference& field : kXMPCrossReference) names.insert(field.propertyName);
  for (const FurtherProperty& property : kFurtherProperties) {
    EXPECT_TRUE(names.insert(property.name).second) << property.name << " is used twice";
  }
  TempTree tree;
  const std::string path = tree.File(
      "shot.dat.xmp", Sidecar("aux:Lens='24-70mm' photoshop:City='Wien'",
                              "<dc:subject><r:Bag><r:li>bird</r:li><r:li>tree</r:li></r:Bag>"
                              "</dc:subject><dc:rights><r:Alt><r:li xml:lang='x-default'>mine"
                              "</r:li></r:Alt></dc:rights><aux:OwnerName r:parseType='Resource'>"
                              "<aux:a>b</aux:a></aux:OwnerName>"));
  const SourcedValueMap own = GetValueSources(path);
  EXPECT_EQ(Sourced(own, "aux:Lens"), "xmp:24-70mm");
  tree.File("shot.dat", "no metadata");
  const SourcedValueMap sources = GetValueSources(tree.Path("shot.dat"));
  EXPECT_EQ(Sourced(sources, "aux:Lens"), "sidecar:24-70mm");
  EXPECT_EQ(Sourced(sources, "photoshop:City"), "sidecar:Wien");
  EXPECT_EQ(Sourced(sources, "dc:subject"), "sidecar:bird; tree");
  EXPECT_EQ(Sourced(sources, "dc:rights"), "sidecar:mine");
  EXPECT_EQ(Sourced(sources, "aux:OwnerName"), "");  // a structure
}

TEST(ValueSources, AreEmptyWithoutMetadata) {
  TempTree tree;
  EXPECT_TRUE(GetValueSources(tree.Path("missing.mov")).empty());
  EXPECT_TRUE(GetValueSources(tree.File("a.txt", "text")).empty());
  tree.File("a.txt.xmp", "<x:xmpmeta xmlns:x='adobe:ns:meta/'>");
  EXPECT_TRUE(GetValueSources(tree.Path("a.txt")).empty());
}

TEST(ValueSources, AddTheValuesOfTheProvider) {
  TempTree tree;
  SourcedValueMap sources = GetValueSources(tree.File("CONTENTS/CLIP/0001AB.XML", kP2Clip));
  AddProviderValues({{"Name", any_regular_t(std::string("Clip 1"))},
                     {"identifier", any_regular_t(std::string("camera"))},
                     {"good", any_regular_t(std::string("Yes"))},
                     {"frameCount", any_regular_t(std::string(" @ "))},
                     {"Path", any_regular_t(std::string("/x"))},
                     {"26", any_regular_t(std::string("size"))}},
                    sources);
  EXPECT_EQ(Sourced(sources, "Name"), "record:0001AB|provider:Clip 1");
  EXPECT_EQ(Sourced(sources, "identifier"), "record:camera");
  EXPECT_EQ(Sourced(sources, "good"), "provider:Yes");
  EXPECT_EQ(Sourced(sources, "frameCount"), "record:100 @ 1/25");
  EXPECT_FALSE(sources.contains("Path") || sources.contains("26"));
}

}  // namespace
