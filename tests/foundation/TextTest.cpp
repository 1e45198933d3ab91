// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "foundation/platform/NameOrder.h"
#include "foundation/tarnwick/Text.h"

namespace {

using namespace tarnwick::utility;

TEST(Text, EscapesInvalidUTF8) {
  EXPECT_EQ(UTF8to16("a\xC3\xA9\xF0\x9F\x8E\xAC"), u"a\u00e9\xD83C\xDFAC");
  EXPECT_EQ(UTF8to16("\xE9t"), (UTF16String{0xDCE9, u't'}));                   // Latin-1
  EXPECT_EQ(UTF8to16("\xC0\xAF"), (UTF16String{0xDCC0, 0xDCAF}));              // over-long
  EXPECT_EQ(UTF8to16("\xED\xA0\x80"), (UTF16String{0xDCED, 0xDCA0, 0xDC80}));  // a surrogate
  EXPECT_EQ(UTF8to16("\xF0\x9F\x8E"), (UTF16String{0xDCF0, 0xDC9F, 0xDC8E}));  // cut off
}

TEST(Text, RoundTripsAnyBytes) {
  std::mt19937 random(7);
  for (int round = 0; round < 2000; ++round) {
    std::string bytes(random() % 12, '\0');
    for (char& c : bytes)
      c = static_cast<char>(random() % 2 == 0 ? random() : 0xC0 + random() % 64);
    EXPECT_EQ(UTF16to8(UTF8to16(bytes)), bytes);
  }
}

TEST(Text, RejectsOtherUnpairedSurrogates) {
  EXPECT_EQ(UTF16to8(UTF16String{u'a', 0xD800}), "");
  EXPECT_EQ(UTF16to8(UTF16String{0xD800, u'a'}), "");
  EXPECT_EQ(UTF16to8(UTF16String{0xDC00}), "");
  EXPECT_EQ(UTF16to8(UTF16String{0xDFFF, u'a'}), "");
}

TEST(Text, FoldsOneToOne) {
  EXPECT_EQ(FoldCase(u".ARI"), u".ari");
  EXPECT_EQ(FoldCase(u"ÄΣς"), u"äσσ");
  EXPECT_EQ(FoldCase(u"ß").size(), 1u);
  EXPECT_EQ(LowerCase(u"İI").size(), 2u);
  EXPECT_EQ(UpperCase(u"aß1"), u"Aß1");
  const UTF16String unpaired{0xDCE9, u'A', 0xD800};
  EXPECT_EQ(FoldCase(unpaired), (UTF16String{0xDCE9, u'a', 0xD800}));
}

TEST(Text, OrdersByCodeUnitsRatherThanBytes) {
  using Sorvik::platform::LessByCodeUnits;
  const std::string high = "\xEF\xBC\xA1";        // U+FF21
  const std::string beyond = "\xF0\x9F\x8E\xAC";  // U+1F3AC, as a surrogate pair below U+FF21
  EXPECT_LT(high, beyond);
  EXPECT_TRUE(LessByCodeUnits(beyond, high));
  EXPECT_FALSE(LessByCodeUnits(high, beyond));
  EXPECT_TRUE(LessByCodeUnits("A_10", "A_9"));
  EXPECT_TRUE(LessByCodeUnits("A", "AB") && !LessByCodeUnits("AB", "A"));
  EXPECT_FALSE(LessByCodeUnits("A", "A"));
  EXPECT_TRUE(LessByCodeUnits("\xC3\xA9", "\xE9"));  // U+00E9 before the escape U+DCE9
}

TEST(Text, ParsesOnlyCompleteNumbers) {
  int number = -1;
  EXPECT_TRUE(StringToNumber(u"00042", number));
  EXPECT_EQ(number, 42);
  EXPECT_TRUE(StringToNumber(u"-7", number));
  for (const auto* bad : {u"", u" 1", u"1 ", u"12a", u"99999999999", u"+-1", u"\u0661"}) {
    EXPECT_FALSE(StringToNumber(bad, number));
    EXPECT_EQ(number, -7);
  }
}

}  // namespace
