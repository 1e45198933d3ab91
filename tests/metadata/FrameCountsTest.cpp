// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include "SorvikProvider/metadata/XMPSupport.h"
#include "metadata/FrameCounts.h"

namespace {

using Sorvik::XMPSupport::GetTimecodeFromDuration;
using Sorvik::XMPSupport::ParseFrameCount;

struct RateCase {
  const char* rate;
  std::int64_t frames;
  const char* timecode;
};

TEST(FrameCounts, GiveTimecodeForElevenRateTexts) {
  for (const RateCase& c : {
           RateCase{"1/24", 24 * 3600 + 25, "01:00:01:01"},
           RateCase{"1/25", 25 * 61 + 24, "00:01:01:24"},
           RateCase{"1001/24000", 24, "00:00:01:00"},
           RateCase{"100/2398", 24, "00:00:01:00"},
           RateCase{"1001/30000", 1800, "00:01:00:00"},
           RateCase{"100/2997", 1800, "00:01:00:00"},
           RateCase{"1/30", 29, "00:00:00:29"},
           RateCase{"1/50", 101, "00:00:02:01"},
           RateCase{"1001/60000", 3599, "00:00:59:59"},
           RateCase{"100/5994", 3599, "00:00:59:59"},
           RateCase{"1/60", 60 * 3600 * 100, "100:00:00:00"},
           RateCase{"1/24", 0, "00:00:00:00"},
           RateCase{"1/24", -25, "-00:00:01:01"},
           RateCase{"1/25", 0, "00:00:00:00"},
       }) {
    EXPECT_EQ(GetTimecodeFromDuration(c.frames, c.rate), c.timecode) << c.rate << " " << c.frames;
  }
  for (const char* unknown : {"", "1001/25000", "24/1", " 1/24", "1/24 ", "1/24.0", "1/48"}) {
    EXPECT_EQ(GetTimecodeFromDuration(48, unknown), "") << unknown;
  }
}

TEST(FrameCounts, WrapInsteadOfOverflowing) {
  for (const std::int64_t frames :
       {std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min(),
        std::int64_t{1} << 62}) {
    EXPECT_NE(GetTimecodeFromDuration(frames, "1001/24000"), "");
  }
  // One frame more than fits into 2^63 ticks: the product becomes negative.
  for (const auto& [rate, count] :
       {std::pair("1/24", 313720137308), std::pair("1001/24000", 313406730578),
        std::pair("1/25", 326791809696), std::pair("1001/30000", 391758413222),
        std::pair("1/30", 392150171635), std::pair("1/50", 653583619392),
        std::pair("1001/60000", 783516826444), std::pair("1/60", 784300343270)}) {
    EXPECT_NE(GetTimecodeFromDuration(count - 1, rate)[0], '-') << rate;
    EXPECT_EQ(GetTimecodeFromDuration(count, rate)[0], '-') << rate;
  }
}

TEST(FrameCounts, AreParsed) {
  struct Case {
    const char* text;
    bool taken;
    std::int64_t frames;
    const char* rate;
  };
  for (const Case& c : {
           Case{"1234 @ 1001/30000", true, 1234, "1001/30000"},
           Case{"-5 @ x", true, -5, "x"},
           Case{" \t+7x @ 1/24", true, 7, "1/24"},
           Case{"none @ 1/24", true, 0, "1/24"},
           Case{" @ 1/24", true, 0, "1/24"},
           Case{"1 @ 2 @ 3", true, 1, "2 @ 3"},
           Case{"1 @  ", true, 1, " "},
           Case{"99999999999999999999 @ 1/24", true, std::numeric_limits<std::int64_t>::max(),
                "1/24"},
           Case{"-99999999999999999999 @ 1/24", true, std::numeric_limits<std::int64_t>::min(),
                "1/24"},
           Case{" @ ", false, 0, ""},
           Case{"12 @ ", false, 0, ""},
           Case{"12@1/24", false, 0, ""},
           Case{"", false, 0, ""},
       }) {
    std::int64_t frames = 42;
    std::string rate = "kept";
    EXPECT_EQ(ParseFrameCount(c.text, frames, rate), c.taken) << c.text;
    EXPECT_EQ(frames, c.taken ? c.frames : 42) << c.text;
    EXPECT_EQ(rate, c.taken ? c.rate : "kept") << c.text;
  }
}

}  // namespace
