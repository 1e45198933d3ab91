// SPDX-License-Identifier: MIT
// A time as timecode text.
#pragma once

#include "SorvikProvider/foundation/UTF16String.h"
#include "foundation/tarnwicktypes/MediaTypes.h"

namespace Hestra {

class Timecode {
 public:
  Timecode(const tarnwicktypes::TickTime& time, const tarnwicktypes::FrameRate& rate,
           tarnwicktypes::TimeDisplay display) noexcept
      : time_(time), rate_(rate), display_(display) {}

  // "HH:MM:SS:FF", counted without dropping frames; hours run on past 99 and a negative time has a
  // "-" in front.
  UTF16String GetString() const;

 private:
  tarnwicktypes::TickTime time_;
  tarnwicktypes::FrameRate rate_;
  tarnwicktypes::TimeDisplay display_;
};

}  // namespace Hestra
