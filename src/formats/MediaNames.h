// SPDX-License-Identifier: MIT
// Names of media files, in any case.
#pragma once

#include <string_view>

namespace Sorvik::formats {

// True if the file has the extension of video or sound that cameras record into one file. Frames of
// a sequence don't count.
bool HasMediaExtension(std::string_view path);

}  // namespace Sorvik::formats
