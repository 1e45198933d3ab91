// SPDX-License-Identifier: MIT
// Times, frame rates and pixel aspect ratios.
#pragma once

#include <cstdint>

#include "SorvikProvider/foundation/UTF16String.h"

namespace tarnwicktypes {

// Ticks per second: a frame of each of the eight rates below is an integral number of ticks.
inline constexpr std::int64_t kTicksPerSecond = 705'600'000;

struct TickTime {
  std::int64_t ticks = 0;
};

// The duration of a frame in ticks.
struct FrameRate {
  std::int64_t ticks = 0;
};

inline constexpr FrameRate kFrameRate_Film24{kTicksPerSecond / 24};
inline constexpr FrameRate kFrameRate_VideoPAL{kTicksPerSecond / 25};
inline constexpr FrameRate kFrameRate_23976{kTicksPerSecond / 24000 * 1001};
inline constexpr FrameRate kFrameRate_VideoNTSC{kTicksPerSecond / 30000 * 1001};
inline constexpr FrameRate kFrameRate_Video30{kTicksPerSecond / 30};
inline constexpr FrameRate kFrameRate_VideoPAL_HD{kTicksPerSecond / 50};
inline constexpr FrameRate kFrameRate_VideoNTSC_HD{kTicksPerSecond / 60000 * 1001};
inline constexpr FrameRate kFrameRate_Video60{kTicksPerSecond / 60};

// Timecode display modes.
enum class TimeDisplay {
  k24 = 100,
  k25 = 101,
  k2997NonDrop = 103,
  k30 = 104,
  k50 = 105,
  k5994NonDrop = 107,
  k60 = 108,
  k23976 = 110,
};

class PixelAspectRatio {
 public:
  // Uses only the low 32 bits of both. The denominator must not be 0.
  PixelAspectRatio(unsigned long numerator, unsigned long denominator) noexcept
      : numerator_(static_cast<std::uint32_t>(numerator)),
        denominator_(static_cast<std::uint32_t>(denominator)) {}

  // The quotient with one to four decimals, without trailing zeros after the first: "1.0",
  // "0.9091".
  Hestra::UTF16String GetDisplayString() const;

 private:
  std::uint32_t numerator_;
  std::uint32_t denominator_;
};

}  // namespace tarnwicktypes
