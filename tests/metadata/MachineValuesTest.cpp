// SPDX-License-Identifier: MIT
// Typed values: from properties, from the texts that providers set, and as JSON.
#include <gtest/gtest.h>

#include <string>

#include "SorvikProvider/foundation/JsonText.h"
#include "SorvikProvider/foundation/Localizer.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/metadata/MachineValues.h"
#include "support/AllCards.h"
#include "support/Cards.h"
#include "support/TempTree.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using sorvik_test::TempTree;

FieldNameSet AllFields() {
  FieldNameSet all;
  for (const auto& row : XMPSupport::kXMPCrossReference) all.insert(row.propertyName);
  return all;
}

// The typed values of a media file whose sidecar has these properties.
MachineFields ValuesOf(const TempTree& tree, const std::string& properties) {
  tree.File("a.xmp",
            "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#' "
            "xmlns:dc='http://purl.org/dc/elements/1.1/' "
            "xmlns:xmp='http://ns.adobe.com/xap/1.0/' xmlns:exif='http://ns.adobe.com/exif/1.0/' "
            "xmlns:dm='http://ns.adobe.com/xmp/1.0/DynamicMedia/' "
            "xmlns:d='http://ns.adobe.com/xap/1.0/sType/Dimensions#'><r:Description>" +
                properties + "</r:Description></r:RDF>");
  return ReadMachineValues(tree.File("a.mov"), XMPSupport::ParseFields(AllFields()));
}

std::string JsonOf(const std::string& properties) {
  const TempTree tree;
  return ToJson(ValuesOf(tree, properties));
}

std::string Simple(const std::string& name, const std::string& value) {
  return JsonOf("<" + name + ">" + value + "</" + name + ">");
}

TEST(MachineValues, AreTypedByField) {
  EXPECT_EQ(JsonOf(""), "{}");
  EXPECT_EQ(Simple("dm:good", "True"), R"({"good":true})");
  EXPECT_EQ(Simple("dm:takeNumber", "007"), R"({"takeNumber":7})");
  EXPECT_EQ(Simple("dm:videoFrameRate", "23.976"), R"({"videoFrameRate":"24000/1001"})");
  EXPECT_EQ(Simple("dm:videoFrameRate", "NTSC"), R"({"videoFrameRate":"30000/1001"})");
  EXPECT_EQ(Simple("dm:videoPixelAspectRatio", "10:11"), R"({"videoPixelAspectRatio":"10/11"})");
  EXPECT_EQ(Simple("dm:fileDataRate", "36/10"), R"({"fileDataRate":"18/5"})");
  EXPECT_EQ(Simple("exif:GPSLatitude", "51,30.3S"), R"({"GPSLatitude":-51.505})");
  EXPECT_EQ(Simple("exif:GPSAltitude", "250/100"), R"({"GPSAltitude":"5/2"})");
  EXPECT_EQ(JsonOf("<dm:startTimecode r:parseType='Resource'><dm:timeFormat>2997DropTimecode"
                   "</dm:timeFormat><dm:timeValue>10;00;00;02</dm:timeValue></dm:startTimecode>"),
            R"({"startTimecode":{"timecode":"10;00;00;02","rate":"30000/1001","dropFrame":true}})");
  EXPECT_EQ(JsonOf("<dm:duration r:parseType='Resource'><dm:value>250</dm:value>"
                   "<dm:scale>1001/48000</dm:scale></dm:duration>"),
            R"({"duration":{"count":250,"rate":"48000/1001"},"frameCount":250,)"
            R"("scale":"1001/48000"})")
      << "a rate without a display text has a value, too";
  EXPECT_EQ(JsonOf("<dm:videoFrameSize r:parseType='Resource'><d:w>1920</d:w><d:h>1080</d:h>"
                   "<d:unit>pixel</d:unit></dm:videoFrameSize>"),
            R"({"videoFrameSize":{"width":1920,"height":1080,"unit":"pixel"}})");
  EXPECT_EQ(JsonOf("<dc:relation><r:Bag><r:li>a;b</r:li><r:li>c</r:li></r:Bag></dc:relation>"),
            R"({"relation":["a;b","c"]})");
}

TEST(MachineValues, NormaliseTimesAndKeepTheirZone) {
  const auto time = [](const std::string& text) { return Simple("xmp:CreateDate", text); };
  EXPECT_EQ(time("2024-05-01T10:00:00.25+0230"),
            R"({"CreateDate":"2024-05-01T10:00:00.25+02:30"})");
  EXPECT_EQ(time("2024:05:01 10:00:00"), R"({"CreateDate":"2024-05-01T10:00:00"})");
  EXPECT_EQ(time("2024-05"), R"({"CreateDate":"2024-05"})");
  const TempTree tree;
  const auto zoned = ValuesOf(tree, "<xmp:CreateDate>2024-05-01T10:00Z</xmp:CreateDate>");
  EXPECT_EQ(std::get<IsoTime>(zoned.at("CreateDate")), (IsoTime{"2024-05-01T10:00Z", true}));
  const auto broken = ValuesOf(tree, "<xmp:CreateDate>2024-13-01T10:00Z</xmp:CreateDate>");
  EXPECT_EQ(std::get<std::string>(broken.at("CreateDate")), "2024-13-01T10:00Z");
}

TEST(MachineValues, KeepTextsThatAreNotOfTheType) {
  for (const char* text : {"9223372036854775808/3", "1/0", "--5", "1/-", "2..5", "0x10", "abc"}) {
    EXPECT_EQ(Simple("dm:videoFrameRate", text),
              R"({"videoFrameRate":")" + std::string(text) + R"("})");
  }
  EXPECT_EQ(Simple("dm:tempo", "nan"), R"({"tempo":"nan"})");
  EXPECT_EQ(Simple("exif:GPSLatitude", "95,0N"), R"({"GPSLatitude":"95,0N"})");
  EXPECT_EQ(Simple("dm:videoFrameSize", "1920 x 1080"), "{}") << "not a structure";
}

TEST(MachineValues, OfEntriesDoNotDependOnTheLanguage) {
  const TempTree tree;
  sorvik_test::MakeXDCAMDisc(tree, "disc", {{.name = "C0001"}});
  tree.File("disc/Clip/C0001M01.XMP",
            "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#' "
            "xmlns:dm='http://ns.adobe.com/xmp/1.0/DynamicMedia/'><r:Description dm:good='True' "
            "dm:fileDataRate='50/3'/></r:RDF>");
  ProviderHost::Initialize();
  const std::string path = tree.Path("disc");
  const ProviderWrapper* provider = ProviderHost::GetProviderList(path).front();
  for (const char* language : {"en-US", "de-DE", "ja-JP"}) {
    tarnwick::config::Localizer::Get().SetLanguage(language);
    const MachineValueScope scope;
    ContentMap content = provider->GetContent(path, AllFields(), nullptr);
    ASSERT_EQ(content.size(), 1u);
    const MachineFields values = TakeMachineValues(content.begin()->second);
    EXPECT_EQ(std::get<DurationValue>(values.at("duration")), (DurationValue{100, {25, 1}}));
    ASSERT_TRUE(values.contains("good"));
    EXPECT_EQ(values.at("good"), MachineValue(true)) << language;
    EXPECT_EQ(values.at("fileDataRate"), MachineValue(Fraction{50, 3}));
    EXPECT_TRUE(std::holds_alternative<std::vector<std::string>>(values.at(kExtraPathField)));
  }
  tarnwick::config::Localizer::Get().SetLanguage("");
  ProviderHost::Shutdown();
}

TEST(MachineValues, UseTheDurationThatAProviderHasSummedUp) {
  const TempTree tree;
  sorvik_test::MakeP2Card(tree, "p2");
  for (const auto& clip : sorvik_test::P2Shot({"0001AA", "0002AA"}, "shot")) {
    sorvik_test::AddP2Clip(tree, "p2", clip);
  }
  ProviderHost::Initialize();
  const ProviderWrapper* provider = ProviderHost::GetProviderList(tree.Path("p2")).front();
  const MachineValueScope scope;
  ContentMap content = provider->GetContent(tree.Path("p2"), AllFields(), nullptr);
  ASSERT_EQ(content.size(), 1u);
  const auto values = TakeMachineValues(content.begin()->second);
  EXPECT_EQ(std::get<DurationValue>(values.at("duration")), (DurationValue{200, {25, 1}}));
  ProviderHost::Shutdown();
}

TEST(MachineValues, LeaveEntriesUnchanged) {
  const TempTree tree;
  ProviderHost::Initialize();
  ProviderHost::RegisterAdditionalProviders();
  for (const sorvik_test::MadeCard& card : sorvik_test::MakeAllCards(tree)) {
    const ProviderWrapper* provider = ProviderHost::GetProviderList(card.root).front();
    const ContentMap plain = provider->GetContent(card.root, AllFields(), nullptr);
    EXPECT_FALSE(MachineValueScope::IsActive());
    const MachineValueScope scope;
    EXPECT_TRUE(MachineValueScope::IsActive());
    ContentMap typed = provider->GetContent(card.root, AllFields(), nullptr);
    for (auto& [key, entry] : typed) TakeMachineValues(entry);
    EXPECT_TRUE(plain == typed) << card.root;
  }
  ProviderHost::Shutdown();
}

TEST(JsonText, IsValidForAnyBytes) {
  std::string json;
  Hestra::AppendJsonString(json, "a\"\\\n\x01\xff\xe2\x82\xac\x7f");
  EXPECT_EQ(json, "\"a\\\"\\\\\\n\\u0001\\udcff\xe2\x82\xac\\u007f\"");
}

}  // namespace
