// SPDX-License-Identifier: MIT
// Times as text in the machine's own time zone.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "foundation/platform/FolderView.h"

namespace Sorvik::platform {

// Writes the times of one listing. Belongs to one thread: it keeps the zone's offset by day, since
// the files of a folder come from few days.
class LocalTimeText {
 public:
  // "YYYY-MM-DD HH:MM:SS.mmm", milliseconds cut; empty for no time and for one whose year doesn't
  // fit.
  std::string Of(const std::optional<FileTime>& time);

 private:
  struct Day {
    std::int64_t number;  // since 1970, UTC
    std::int64_t offset;  // seconds that local time is ahead
    bool steady = false;  // the offset holds all day
  };

  std::optional<std::int64_t> OffsetAt(std::int64_t seconds);

  std::array<Day, 512> days_{};
};

}  // namespace Sorvik::platform
