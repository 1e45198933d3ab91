// SPDX-License-Identifier: MIT
// Formats times as timecode.
#pragma once

#include "SorvikProvider/foundation/UTF16String.h"
#include "foundation/tarnwicktypes/MediaTypes.h"

namespace Hestra {

class Timecode {
 public:
  Timecode(const tarnwicktypes::TickTime& time, const tarnwicktypes::FrameRate& rate,
           tarnwicktypes::TimeDisplay display) noexcept
      : time_(time), rate_(rate), display_(display) {}

  // "HH:MM:SS:FF", non-drop-frame. Hours may exceed 99; negative times have a leading "-".
  UTF16String GetString() const;

 private:
  tarnwicktypes::TickTime time_;
  tarnwicktypes::FrameRate rate_;
  tarnwicktypes::TimeDisplay display_;
};

}  // namespace Hestra
