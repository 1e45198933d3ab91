// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "SorvikProvider/foundation/JsonText.h"
#include "foundation/JsonReader.h"

namespace {

using Sorvik::foundation::JsonValue;
using Sorvik::foundation::ParseJson;

TEST(JsonReader, ReadsValuesOfEachKind) {
  const auto json = ParseJson(R"( {"a":[1,-2.5e3,"x"],"b":{"c":true,"d":null},"e":""} )");
  ASSERT_TRUE(json);
  EXPECT_EQ((*json)["a"].items.size(), 3u);
  EXPECT_EQ((*json)["a"].items[0].Integer(), 1);
  EXPECT_EQ((*json)["a"].items[1].text, "-2.5e3");
  EXPECT_EQ((*json)["a"].Texts(), std::vector<std::string>{"x"});
  EXPECT_TRUE((*json)["b"]["c"].boolean);
  EXPECT_EQ((*json)["b"]["d"].kind, JsonValue::Kind::kNull);
  EXPECT_EQ((*json)["missing"]["member"].text, "");
  EXPECT_EQ(ParseJson("[]")->kind, JsonValue::Kind::kArray);
  EXPECT_EQ(ParseJson("{}")->kind, JsonValue::Kind::kObject);
}

TEST(JsonReader, ReversesTheEscapesOfTheWriter) {
  const std::string text = "\"\\/\b\f\n\r\t\x01\x7f \xc3\xa4 \xf0\x9f\x8e\xac \xff\xfe\xe2\x82";
  std::string json;
  Hestra::AppendJsonString(json, text);
  ASSERT_TRUE(ParseJson(json)) << json;
  EXPECT_EQ(ParseJson(json)->text, text);
  EXPECT_EQ(ParseJson(R"("\ud83c\udfac\u00e4\/")")->text, "\xf0\x9f\x8e\xac\xc3\xa4/");
}

TEST(JsonReader, RejectsInvalidDocuments) {
  for (const char* text :
       {"",        " ",       "{",        "[",     "\"",   "\"\\",  "\"\\u12",    "\"\\u12g4\"",
        "\"\\x\"", "{\"a\"}", "{\"a\":}", "{a:1}", "[1,]", "[1 2]", "{\"a\":1,}", "tru",
        "nul",     "1 2",     "{}}",      "'a'"}) {
    EXPECT_FALSE(ParseJson(text)) << text;
  }
  EXPECT_FALSE(ParseJson(std::string(100'000, '['))) << "nested too deep";
  EXPECT_TRUE(ParseJson(std::string(50, '[') + std::string(50, ']')));
}

}  // namespace
