// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <utility>

#include "Paths.h"
#include "Text.h"

namespace sorvik_test {
namespace {

TEST(HostText, EscapesControlCharactersAndInvalidUtf8) {
  const std::pair<const char*, const char*> cases[] = {
      {"plain \xc3\xa9 \xe6\xbc\xa2", "plain \xc3\xa9 \xe6\xbc\xa2"},
      {"\x1b]0;title\x07", "\\x1b]0;title\\x07"},
      {"tab\tdel\x7f", "tab\\x09del\\x7f"},
      {"c1 \xc2\x9b"
       "31m",
       "c1 \\xc2\\x9b31m"},
      {"\xff\xfe", "\\xff\\xfe"},
      {"cut \xe6\xbc", "cut \\xe6\\xbc"},
      {"surrogate \xed\xb2\x80", "surrogate \\xed\\xb2\\x80"},
      {"overlong \xc0\xaf", "overlong \\xc0\\xaf"}};
  for (const auto& [text, shown] : cases) EXPECT_EQ(host::EscapedForTerminal(text), shown);
}

TEST(HostText, WidthCountsCells) {
  EXPECT_EQ(host::CellWidth("abc"), 3U);
  EXPECT_EQ(host::CellWidth("\xc3\xa4"), 1U);
  EXPECT_EQ(host::CellWidth("\xe6\xbc\xa2\xe5\xad\x97"), 4U) << "wide characters";
  EXPECT_EQ(host::CellWidth("e\xcc\x81"), 1U) << "a combining mark";
  EXPECT_EQ(host::CellWidth("\xff"), 1U);
}

TEST(HostText, SizesRoundIntoTheNextUnit) {
  const std::pair<unsigned long long, const char*> cases[] = {
      {0, "0 B"},           {999, "999 B"},     {1000, "1.0 kB"},
      {999949, "999.9 kB"}, {999950, "1.0 MB"}, {64'000'000'000, "64.0 GB"},
      {~0ULL, "18.4 EB"}};
  for (const auto& [bytes, text] : cases) EXPECT_EQ(host::SizeText(bytes), text);
}

TEST(HostText, RemovesFractionOfTimesOnly) {
  EXPECT_EQ(host::WithoutFraction("2026-05-14 11:20:05.123"), "2026-05-14 11:20:05");
  EXPECT_EQ(host::WithoutFraction("2026-05-14T11:20:05.123"), "2026-05-14T11:20:05.123");
  EXPECT_EQ(host::WithoutFraction("clip 1.5"), "clip 1.5");
}

TEST(HostText, FileNameOfAKey) {
  EXPECT_EQ(host::FileName("/card/CLIP/A001.XML"), "A001.XML");
  EXPECT_EQ(host::FileName("A001"), "A001");
  EXPECT_EQ(host::FileName("/"), "/");
}

}  // namespace
}  // namespace sorvik_test
