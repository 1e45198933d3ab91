// SPDX-License-Identifier: MIT
// The names of a Sony HDV card. Names and paths are UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "foundation/Paths.h"

namespace Sorvik::sonyhdv {

inline constexpr std::string_view kVideo = "VIDEO";
inline constexpr std::string_view kClipFolder = "HVR";
inline constexpr std::string_view kTracksFile = "TRACKS.DAT";
inline constexpr std::string_view kIndexExtension = ".IDX";

inline std::string ClipFolderOf(std::string_view path) {
  return foundation::JoinPath(foundation::JoinPath(path, kVideo), kClipFolder);
}

// The four digits after the first three characters of "00_0012_2014-01-31_101530.M2T". Also for
// other names; empty if they are too short.
inline std::string ClipNumberOf(std::string_view fileName) {
  constexpr std::size_t kStart = 3;
  constexpr std::size_t kLength = 4;
  return foundation::SubstrOfCodeUnits(fileName, kStart, kLength);
}

}  // namespace Sorvik::sonyhdv
