// SPDX-License-Identifier: MIT
#include "foundation/hestra/Timecode.h"

#include <string>

namespace Hestra {
namespace {

using tarnwicktypes::TimeDisplay;

// The number of frames per second of timecode.
std::uint64_t FramesPerSecond(TimeDisplay display) {
  switch (display) {
    case TimeDisplay::k24:
    case TimeDisplay::k23976:
      return 24;
    case TimeDisplay::k25:
      return 25;
    case TimeDisplay::k2997NonDrop:
    case TimeDisplay::k30:
      return 30;
    case TimeDisplay::k50:
      return 50;
    case TimeDisplay::k5994NonDrop:
    case TimeDisplay::k60:
      return 60;
  }
  return 30;
}

std::string TwoDigits(std::uint64_t number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

}  // namespace

UTF16String Timecode::GetString() const {
  const bool negative = time_.ticks < 0;
  // Unsigned, since the minimum has no positive counterpart.
  const auto magnitude = negative ? 0 - static_cast<std::uint64_t>(time_.ticks)
                                  : static_cast<std::uint64_t>(time_.ticks);
  const std::uint64_t frames = magnitude / static_cast<std::uint64_t>(rate_.ticks);
  const std::uint64_t perSecond = FramesPerSecond(display_);
  const std::uint64_t seconds = frames / perSecond;
  const std::string text = TwoDigits(seconds / 3600) + ":" + TwoDigits(seconds / 60 % 60) + ":" +
                           TwoDigits(seconds % 60) + ":" + TwoDigits(frames % perSecond);
  return tarnwick::utility::AsciiToUTF16((negative && frames > 0 ? "-" : "") + text);
}

}  // namespace Hestra
