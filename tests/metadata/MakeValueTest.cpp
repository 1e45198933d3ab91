// SPDX-License-Identifier: MIT
// The display texts of the metadata fields, by conversion rule, and how failures are reported.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <fstream>
#include <locale>
#include <set>
#include <string>

#include "SorvikProvider/foundation/Localizer.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "support/Cards.h"
#include "support/MadeMedia.h"
#include "support/TempTree.h"
#include "support/Values.h"
#include "xmp/Namespaces.h"

namespace {

using namespace Sorvik;
using namespace Sorvik::XMPSupport;
using sorvik_test::TempTree;
using sorvik_test::TextOf;

std::string Packet(const std::string& properties) {
  return "<?xpacket begin=''?><r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#' "
         "xmlns:dc='http://purl.org/dc/elements/1.1/' xmlns:tiff='http://ns.adobe.com/tiff/1.0/' "
         "xmlns:xmp='http://ns.adobe.com/xap/1.0/' xmlns:exif='http://ns.adobe.com/exif/1.0/' "
         "xmlns:dm='http://ns.adobe.com/xmp/1.0/DynamicMedia/' "
         "xmlns:d='http://ns.adobe.com/xap/1.0/sType/Dimensions#'><r:Description>" +
         properties + "</r:Description></r:RDF><?xpacket end='w'?>";
}

// Returns one field of a packet; "<none>" if its key is missing.
std::string FieldOf(const std::string& properties, const char* field) {
  return TextOf(MakeValue(ParseFields({field}), Packet(properties)), field);
}
std::string DMField(const char* field, const std::string& value) {
  return FieldOf("<dm:" + std::string(field) + ">" + value + "</dm:" + field + ">", field);
}

class MakeValueRules : public testing::Test {
 protected:
  void SetUp() override { tarnwick::config::Localizer::Get().SetLanguage("en-US"); }
  void TearDown() override { tarnwick::config::Localizer::Get().SetLanguage(""); }
};

TEST_F(MakeValueRules, SelectRowsByName) {
  EXPECT_TRUE(ParseFields({}).none());
  EXPECT_TRUE(ParseFields({"name", "title", "private"}).none());
  const XMPFieldBits bits = ParseFields({"Name", "ProxyPath", "album", "unknown"});
  EXPECT_EQ(bits.count(), 3u);
  EXPECT_TRUE(bits.test(0) && bits.test(51) && bits.test(76));
  std::set<std::string> names;
  for (const XMPCrossReference& row : kXMPCrossReference) {
    names.insert(row.propertyName);
    EXPECT_TRUE(
        std::string(row.labelKey).starts_with("$$$/Ortlane/Provider/XMPFilesMetadata/Column/"))
        << row.labelKey;
  }
  EXPECT_EQ(names.size(), kFieldCount);
  EXPECT_TRUE(ParseFields(FieldNameSet(names.begin(), names.end())).all());
  // Rows whose label or schema differs from what their name suggests.
  const std::string column = "$$$/Ortlane/Provider/XMPFilesMetadata/Column/";
  EXPECT_EQ(kXMPCrossReference[1].labelKey, column + "FilePath=File Path");
  EXPECT_EQ(kXMPCrossReference[31].labelKey, column + "startTimeCode=Start Timecode");
  EXPECT_EQ(kXMPCrossReference[66].labelKey, column + "serialNumber=Serial Number");
  EXPECT_EQ(kXMPCrossReference[70].labelKey, column + "altitudeRef=Altitude Ref.");
  EXPECT_STREQ(kXMPCrossReference[74].propertyName, "software");
  EXPECT_STREQ(kXMPCrossReference[75].schemaNS, xmp::kNsCRS);
  EXPECT_STREQ(kXMPCrossReference[65].schemaNS, "");
}

TEST_F(MakeValueRules, ReturnKeysOfMissingProperties) {
  FieldNameSet all;
  for (const XMPCrossReference& row : kXMPCrossReference) all.insert(row.propertyName);
  const FieldValueMap values = MakeValue(ParseFields(all), Packet(""));
  EXPECT_EQ(values.size(), kFieldCount - 3);
  for (const auto& [field, value] : values) {
    EXPECT_EQ(TextOf(values, field), field == "frameCount" ? " @ " : "") << field;
  }
  for (const char* left : {"Path", "ExtraPath", "ProxyPath"}) EXPECT_FALSE(values.contains(left));
  EXPECT_TRUE(MakeValue(XMPFieldBits(), Packet("<xmp:Label>x</xmp:Label>")).empty());
  EXPECT_EQ(MakeValue(ParseFields({"Label"}), Packet("<dm:scene>x</dm:scene>")).size(), 1u);
}

TEST_F(MakeValueRules, ReadTitlesInTheUserLanguage) {
  const std::string title =
      "<dc:title><r:Alt><r:li xml:lang='x-default'>Plain</r:li><r:li xml:lang='de-DE'>Deutsch"
      "</r:li></r:Alt></dc:title>";
  EXPECT_EQ(FieldOf(title, "Name"), "Plain");
  tarnwick::config::Localizer::Get().SetLanguage("de-DE");
  EXPECT_EQ(FieldOf(title, "Name"), "Deutsch");
  EXPECT_EQ(FieldOf("<dc:title>simple</dc:title>", "Name"), "simple");
  EXPECT_EQ(FieldOf("<dc:title><r:Bag><r:li>a</r:li></r:Bag></dc:title>", "Name"), "");
  EXPECT_EQ(FieldOf("", "Name"), "");
  // A description has no such fallback.
  EXPECT_EQ(FieldOf("<dc:description><r:Alt><r:li xml:lang='de-DE'>lang</r:li></r:Alt>"
                    "</dc:description>",
                    "description"),
            "lang");
  EXPECT_EQ(FieldOf("<dc:description>simple</dc:description>", "description"), "");
}

TEST_F(MakeValueRules, ReadLists) {
  const auto list = [](const std::string& name, const std::string& items) {
    return FieldOf("<dc:" + name + "><r:Seq>" + items + "</r:Seq></dc:" + name + ">", name.c_str());
  };
  EXPECT_EQ(list("creator", "<r:li>first</r:li><r:li>second</r:li>"), "first");
  EXPECT_EQ(list("creator", ""), "");
  EXPECT_EQ(FieldOf("<dc:creator>simple</dc:creator>", "creator"), "");
  EXPECT_EQ(list("relation", "<r:li>a</r:li>"), "a");
  EXPECT_EQ(list("relation", "<r:li/><r:li>a</r:li><r:li/><r:li>b</r:li>"), "a;;b");
  EXPECT_EQ(list("relation", ""), "");
}

TEST_F(MakeValueRules, ShowStructuresOnOneLine) {
  const auto project = [](const std::string& attributes) {
    return FieldOf("<dm:projectRef " + attributes + "/>", "projectRef");
  };
  EXPECT_EQ(project("dm:path='/a/b' dm:type='movie'"), "Project path: /a/b Project type: Movie");
  EXPECT_EQ(project("dm:path='/a/b'"), "Project path: /a/b ");
  EXPECT_EQ(project("dm:type='still'"), "Project type: Still");
  EXPECT_EQ(project("dm:type='Movie'"), "Project type: Unknown");
  EXPECT_EQ(FieldOf("<dm:projectRef>simple</dm:projectRef>", "projectRef"), "");

  const auto size = [](const std::string& attributes) {
    return FieldOf("<dm:videoFrameSize " + attributes + "/>", "videoFrameSize");
  };
  EXPECT_EQ(size("d:w='1920' d:h='1080' d:unit='pixel'"), "1920 x 1080 pixel");
  EXPECT_EQ(size("d:w='1920' d:h='1080'"), "");
  EXPECT_EQ(size("d:h='1080' d:unit='pixel'"), "");
  EXPECT_EQ(FieldOf("<dm:startTimecode dm:timeFormat='25Timecode' dm:timeValue='01:02:03:04'/>",
                    "startTimecode"),
            "01:02:03:04");
}

TEST_F(MakeValueRules, ShowAspectRatios) {
  const auto aspect = [](const char* text) { return DMField("videoPixelAspectRatio", text); };
  for (const auto& [text, shown] :
       std::initializer_list<std::pair<const char*, const char*>>{{"10/11", "0.9091"},
                                                                  {"10:11", "0.9091"},
                                                                  {"1/1", "1.0"},
                                                                  {"4/3", "1.3333"},
                                                                  {" 3/ 2 pixels", "1.5"},
                                                                  {"0/5", "0.0"},
                                                                  {"-4:3", "1431655764.0"},
                                                                  {"-16/-9", "1.0"},
                                                                  {"+4/ -1", "0.0"},
                                                                  {"10:0", "10/0"},
                                                                  {"4:x", "4/x"},
                                                                  {"1:2:3", "0.5"},
                                                                  {"1 /2", "1 /2"},
                                                                  {"square", "square"},
                                                                  {"", ""},
                                                                  {":", "/"}}) {
    EXPECT_EQ(aspect(text), shown) << text;
  }
}

TEST_F(MakeValueRules, ShowBooleansAsYesAndNo) {
  for (const char* field : {"videoAlphaUnityIsTransparent", "good", "loop"}) {
    EXPECT_EQ(DMField(field, "True"), "Yes") << field;
    EXPECT_EQ(DMField(field, "False"), "No") << field;
    for (const char* other : {"true", "yes", "1", ""}) EXPECT_EQ(DMField(field, other), "");
  }
}

TEST_F(MakeValueRules, ShowFractionsInSinglePrecision) {
  const auto altitude = [](const std::string& text) {
    return FieldOf("<exif:GPSAltitude>" + text + "</exif:GPSAltitude>", "GPSAltitude");
  };
  for (const auto& [text, shown] :
       std::initializer_list<std::pair<const char*, const char*>>{{"1000/3", "333.3333"},
                                                                  {"1/3", "0.3333"},
                                                                  {"3000/100", "30.0000"},
                                                                  {"16777217/1", "16777216.0000"},
                                                                  {"0/1", "0/1"},
                                                                  {"100/0", "100/0"},
                                                                  {"abc/2", "abc/2"},
                                                                  {"2/abc", "2/abc"},
                                                                  {"25", "25"},
                                                                  {"", ""},
                                                                  {"/", "/"},
                                                                  {"1/2/3", "0.5000"},
                                                                  {" +1.5e1x/ -3", "-5.0000"},
                                                                  {"0x10/0x1p1", "8.0000"},
                                                                  {"1e-60/1", "1e-60/1"},
                                                                  {"1e999/1", "inf"},
                                                                  {"1,5/1", "1.0000"}}) {
    EXPECT_EQ(altitude(text), shown) << text;
  }
  EXPECT_EQ(altitude("1" + std::string(400, '0') + "/1"), "inf");
  const std::string tiny = "0." + std::string(400, '0') + "1/1";
  EXPECT_EQ(altitude(tiny), tiny);
  EXPECT_EQ(altitude("0xep-9999/1"), "0xep-9999/1");
  const auto rate = [](const char* text) { return DMField("fileDataRate", text); };
  EXPECT_EQ(rate("125/10"), "12.5000MB/sec");
  EXPECT_EQ(rate("25"), "25MB/sec");
  EXPECT_EQ(rate("0/1"), "0/1MB/sec");
  EXPECT_EQ(rate(""), "");
}

TEST_F(MakeValueRules, ShowDurations) {
  const auto fields = [](const std::string& duration) {
    const auto v = MakeValue(ParseFields({"duration", "scale", "frameCount"}), Packet(duration));
    return TextOf(v, "duration") + "|" + TextOf(v, "scale") + "|" + TextOf(v, "frameCount");
  };
  EXPECT_EQ(fields("<dm:duration dm:value='48' dm:scale='1/24'/>"), "00:00:02:00|1/24|48 @ 1/24");
  EXPECT_EQ(fields("<dm:duration dm:value='48' dm:scale='1/48000'/>"), "|1/48000|48 @ 1/48000");
  EXPECT_EQ(fields("<dm:duration dm:scale='1/25'/>"), "00:00:00:00|1/25| @ 1/25");
  EXPECT_EQ(fields("<dm:duration dm:value='x' dm:scale='1/25'/>"), "00:00:00:00|1/25|x @ 1/25");
  EXPECT_EQ(fields(""), "|| @ ");
  // A duration that isn't a structure can't be read: the scale's key is missing.
  EXPECT_EQ(fields("<dm:duration>48</dm:duration>"), "|<none>|");
  EXPECT_EQ(fields("<dm:duration><r:Seq/></dm:duration>"), "|<none>|");
}

TEST_F(MakeValueRules, ShowOtherPropertiesUnmodified) {
  EXPECT_EQ(DMField("videoFrameRate", "1001/24000"), "1001/24000");
  EXPECT_EQ(FieldOf("<xmp:CreateDate>2011-02-15T10:15:14+1:00</xmp:CreateDate>", "CreateDate"),
            "2011-02-15T10:15:14+1:00");
  EXPECT_EQ(FieldOf("<tiff:software>s</tiff:software><tiff:Software>S</tiff:Software>", "software"),
            "s");
  EXPECT_EQ(DMField("artist", "<r:Bag><r:li>a</r:li></r:Bag>"), "");
}

void ExpectPoints() {
  EXPECT_EQ(FieldOf("<exif:GPSAltitude>2.5/1</exif:GPSAltitude>", "GPSAltitude"), "2.5000");
  EXPECT_EQ(DMField("videoPixelAspectRatio", "4/3"), "1.3333");
  EXPECT_EQ(DMField("fileDataRate", "12345678/10"), "1234567.7500MB/sec");
}

struct Commas : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(MakeValue, IgnoresTheStreamLocale) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Commas));
  ExpectPoints();
  std::locale::global(before);
}

TEST(MakeValue, IgnoresTheCLocale) {
  const TempTree tree;
  const std::string compile = "localedef -i de_DE -f UTF-8 " + tree.Path("de_DE.UTF-8");
  if (std::system(compile.c_str()) != 0)
    GTEST_SKIP() << "can't compile a locale with decimal commas";
  setenv("LOCPATH", tree.Root().c_str(), 1);
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
  EXPECT_STREQ(std::localeconv()->decimal_point, ",");
  ExpectPoints();
  std::setlocale(LC_ALL, "C");
  unsetenv("LOCPATH");
}

TEST(MakeValue, DistinguishesFailures) {
  const XMPFieldBits bits = ParseFields({"Label", "frameCount"});
  const TempTree tree;
  EXPECT_TRUE(MakeValue(tree.Path("missing.xmp"), bits).empty());
  EXPECT_TRUE(MakeValue(tree.Folder("folder.xmp"), bits).empty());
  EXPECT_TRUE(MakeValue(tree.File("without.bin", "no metadata"), bits).empty());
  // Malformed XMP: every key, and no value.
  const FieldValueMap broken = MakeValue(tree.File("broken.xmp", "<rdf:RDF>"), bits);
  EXPECT_EQ(broken.size(), 2u);
  EXPECT_EQ(TextOf(broken, "Label"), "");
  EXPECT_EQ(TextOf(broken, "frameCount"), " @ ");

  const std::string good = tree.File("good.xmp", Packet("<xmp:Label>x</xmp:Label>"));
  EXPECT_EQ(TextOf(MakeValue(good, bits), "Label"), "x");
  EXPECT_TRUE(MakeValue(good, XMPFieldBits()).empty());
  EXPECT_TRUE(MakeValue(good + std::string("\0x", 2), bits).empty()) << "a path with a NUL";
  EXPECT_TRUE(MakeValue(bits, "<rdf:RDF>").empty());
  EXPECT_TRUE(MakeValue(bits, "").empty());
}

// Bytes that the process has read so far.
std::size_t BytesRead() {
  std::ifstream counters("/proc/self/io");
  std::string name;
  std::size_t count = 0;
  return counters >> name >> count && name == "rchar:" ? count : 0;
}

TEST(MakeValue, ReadsTheMaterialListOnce) {
  if (BytesRead() == 0) GTEST_SKIP() << "no I/O statistics on this system";
  constexpr std::size_t kPadding = 1'000'000;
  const TempTree tree;
  tree.File("BPAV/MEDIAPRO.XML",
            "<MediaProfile><Contents/><!--" + std::string(kPadding, 'x') + "--></MediaProfile>");
  const std::string clip =
      tree.File("BPAV/CLPR/C1/C1M01.XML",
                "<NonRealTimeMeta><TargetMaterial umidRef='AB'/></NonRealTimeMeta>");
  const std::size_t before = BytesRead();
  EXPECT_EQ(
      TextOf(MakeValue(clip, ParseFields({"duration", "relation", "identifier"})), "identifier"),
      "AB");
  EXPECT_LT(BytesRead() - before, kPadding * 3 / 2);
}

TEST(MakeValueOfCards, MediaHasTheFactsOfItsClipRecord) {
  const TempTree tree;
  sorvik_test::MakeXDCAMDisc(tree, "disc", {{.name = "C0001"}});
  sorvik_test::MakeXDCAMProav(tree, "proav", {{.name = "C0001"}});
  sorvik_test::MakeP2Card(tree, "p2");
  sorvik_test::AddP2Clip(tree, "p2", {.id = "0001AA", .essence = "AUDIO"});
  const auto field = [&tree](const char* file, const char* name) {
    return TextOf(MakeValue(tree.Path(file), ParseFields({name})), name);
  };
  for (const char* file : {"disc/Clip/C0001.MXF", "proav/PROAV/CLPR/C0001/C0001V01.MXF",
                           "proav/PROAV/CLPR/C0001/C0001A01.MXF"}) {
    EXPECT_EQ(field(file, "SerialNumber"), "123") << file;
  }
  EXPECT_EQ(field("p2/CONTENTS/AUDIO/0001AA00.MXF", "identifier"),
            sorvik_test::P2GlobalId("0001AA"));
  tree.File("p2/CONTENTS/other/0001AA00.MXF", sorvik_test::MadeMedia(".MXF"));
  EXPECT_EQ(field("p2/CONTENTS/other/0001AA00.MXF", "identifier"), "<none>");
}

}  // namespace
