// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "xmp/NativeValues.h"

namespace {

using namespace Sorvik::xmp;

TEST(NativeValues, NormalisesStandardRates) {
  const Rate ntsc{30000, 1001};
  for (const Rate& rate : {Rate{30000, 1001}, Rate{2997, 100}, Rate{90000, 3003}}) {
    EXPECT_EQ(Normalise(rate), ntsc);
  }
  EXPECT_EQ(Normalise({23976, 1000}), (Rate{24000, 1001}));
  EXPECT_EQ(Normalise({48, 2}), (Rate{24, 1}));
  EXPECT_EQ(Normalise({96, 2}), (Rate{48, 1}));
  EXPECT_FALSE(Normalise({25, 0}).Known());
  EXPECT_FALSE(Normalise({UINT64_MAX, 1}).Known());
}

TEST(NativeValues, CountsTimecode) {
  const auto text = [](std::uint64_t frames, unsigned base, bool drop) {
    return TimecodeText(TimecodeOfFrames(frames, base, drop));
  };
  EXPECT_EQ(text(111582, 30, true), "01;02;03;04");
  EXPECT_EQ(text(215782, 60, true), "00;59;59;58");
  EXPECT_EQ(text(107894, 30, true), "01;00;00;02");
  EXPECT_EQ(text(1799, 30, true), "00;00;59;29");
  EXPECT_EQ(text(1800, 30, true), "00;01;00;02");
  EXPECT_EQ(text(17982, 30, true), "00;10;00;00");
  EXPECT_EQ(text(916813, 25, false), "10:11:12:13");
  EXPECT_EQ(text(2160000, 25, false), "00:00:00:00") << "24 hours";
  EXPECT_EQ(text(UINT64_MAX, 0, true), "00:00:00:00");
  EXPECT_EQ(text(100, 25, true), "00:00:04:00") << "no drop frame at 25";
}

TEST(NativeValues, RejectsInvalidTimes) {
  using B = std::byte;
  EXPECT_EQ(TimecodeFromBCD({B{0x60}, B{0x82}, B{0x80}, B{0xC0}}), (Timecode{0, 0, 2, 20, true}));
  EXPECT_FALSE(TimecodeFromBCD({B{0xFF}, B{0xFF}, B{0xFF}, B{0xFF}}));
  EXPECT_FALSE(TimecodeFromBCD({B{0x00}, B{0x60}, B{0x00}, B{0x00}})) << "second 60";
  EXPECT_EQ(DateText({2024, 2, 29, 1, 2, 3, 40}), "2024-02-29T01:02:03.040");
  EXPECT_EQ(DateText({2024, 13, 1, 0, 0, 0, 0}), "");
  EXPECT_EQ(DateText({2024, 4, 31, 0, 0, 0, 0}), "");
  EXPECT_TRUE(ParseDate("2014-01-31 10:15:30"));
  EXPECT_FALSE(ParseDate("2014-01-31 10:15:3"));
  EXPECT_FALSE(ParseDate("0000-00-00 00:00:00"));
}

}  // namespace
