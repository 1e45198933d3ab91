// SPDX-License-Identifier: MIT
// Formats times in the local time zone.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "foundation/platform/FolderView.h"

namespace Sorvik::platform {

// Formats the times of one listing. Caches the UTC offset by day, since the files of a folder are
// usually from few days. Not thread-safe.
class LocalTimeText {
 public:
  // "YYYY-MM-DD HH:MM:SS.mmm", milliseconds truncated. Empty for nullopt and for years that don't
  // have four digits.
  std::string Of(const std::optional<FileTime>& time);

 private:
  struct Day {
    std::int64_t number;   // days since 1970, UTC
    std::int64_t offset;   // of local time from UTC, in seconds
    bool isValid = false;  // the offset is the same all day
  };

  std::optional<std::int64_t> OffsetAt(std::int64_t seconds);

  std::array<Day, 512> days_{};
};

}  // namespace Sorvik::platform
