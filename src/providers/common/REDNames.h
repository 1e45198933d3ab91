// SPDX-License-Identifier: MIT
// The names of RED clips. The comparison is case-sensitive.
#pragma once

#include <string_view>

#include "foundation/Paths.h"

namespace Sorvik::red {

inline constexpr std::string_view kSegmentExtension = ".R3D";
inline constexpr std::string_view kClipFolderExtension = ".RDC";

inline bool IsSegmentName(std::string_view name) {
  return foundation::FileExtension(name) == kSegmentExtension;
}

inline bool IsClipFolderName(std::string_view name) {
  return foundation::FileExtension(name) == kClipFolderExtension;
}

}  // namespace Sorvik::red
