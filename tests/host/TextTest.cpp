// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <utility>
#include <vector>

#include "Paths.h"
#include "Progress.h"
#include "Table.h"
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

TEST(HostText, ShortensInTheMiddle) {
  EXPECT_EQ(host::ShortenedMiddle("/media/card/clip.mxf", 20), "/media/card/clip.mxf");
  EXPECT_EQ(host::ShortenedMiddle("/media/card/clip.mxf", 12), "/medi\xE2\x80\xA6ip.mxf");
  for (std::size_t width = 1; width < 9; ++width) {
    const std::string wide =
        host::ShortenedMiddle("\xe6\xbc\xa2\xe5\xad\x97\xe6\xbc\xa2\xe5\xad\x97\xff", width);
    EXPECT_LE(host::CellWidth(wide), width) << wide;
  }
}

TEST(HostText, WrapsAtBlanksAndItems) {
  EXPECT_EQ(host::WrappedWords("a day at sea", 6), (std::vector<std::string>{"a day", "at sea"}));
  EXPECT_EQ(host::WrappedWords("an /unbroken/path x", 5),
            (std::vector<std::string>{"an", "/unbroken/path", "x"}));
  EXPECT_EQ(host::WrappedWords("a:1;b:2; c", 6), (std::vector<std::string>{"a:1;", "b:2; c"}));
}

TEST(HostText, DatesBecomeShortAndLocal) {
  setenv("TZ", "XYZ-3", 1);  // three hours east of UTC
  EXPECT_EQ(host::ShortLocalDate("2026-05-14T11:20:05+02:00"), "2026-05-14 12:20");
  EXPECT_EQ(host::ShortLocalDate("2026-12-31T23:30:05Z"), "2027-01-01 02:30");
  EXPECT_EQ(host::ShortLocalDate("2026-05-14 11:20:05"), "2026-05-14 11:20");
  EXPECT_EQ(host::ShortLocalDate("2026-05-14"), "2026-05-14");
  unsetenv("TZ");
}

TEST(HostText, FrameSizesLoseTheirUnit) {
  EXPECT_EQ(host::WithoutUnit("1920 x 1080 pixel"), "1920 x 1080");
  EXPECT_EQ(host::WithoutUnit("1920 x 1080"), "1920 x 1080");
  EXPECT_EQ(host::WithoutUnit("unknown"), "unknown");
}

TEST(HostTable, FitsColumnsIntoALine) {
  using Widths = std::vector<std::size_t>;
  EXPECT_EQ(host::FitWidths({6, 30, 10}, {true, false, false}, 60), (Widths{6, 30, 10}));
  EXPECT_EQ(host::FitWidths({6, 30, 10}, {true, false, false}, 40), (Widths{6, 20, 10}));
  EXPECT_EQ(host::FitWidths({6, 30, 10}, {true, false, false}, 20), (Widths{6, 12}));
  EXPECT_EQ(host::FitWidths({90, 30}, {true, false}, 20), (Widths{90}));
}

TEST(HostProgress, NamesTheItemThatIsWaitedFor) {
  using std::chrono::seconds;
  host::Progress progress;
  progress.Begin("drawing", 3);
  for (const char* name : {"A001", "A002", "A003"}) progress.AddItem(name);
  const auto now = host::Progress::Clock::now();
  EXPECT_EQ(progress.Line(now, 0), "drawing 0 of 3: A001");
  EXPECT_EQ(progress.Line(now + seconds(5), 0), "drawing 0 of 3: waiting for A001 (5 s)");
  progress.FinishItem("A002");
  EXPECT_EQ(progress.Line(now + seconds(5), 0), "drawing 1 of 3: waiting for A001 (5 s)");
  progress.FinishItem("A001");
  EXPECT_EQ(progress.Line(now, 0), "drawing 2 of 3: A003");
  EXPECT_LE(host::CellWidth(progress.Line(now, 12)), 12U);
  progress.Begin("looking");
  EXPECT_TRUE(progress.Line(now + seconds(9), 0).starts_with("looking "));
}

}  // namespace
}  // namespace sorvik_test
