// SPDX-License-Identifier: MIT
// Pictures that the helper program sorvik-frame decodes in processes of their own: frames of video
// files and developments of raw pictures. At most one process per processor core runs at a time; it
// stays for further pictures and ends after a while without any. Any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "thumbnails/FrameProtocol.h"

namespace Sorvik {

// Rows from the top, red, green and blue bytes without padding.
struct FramePicture {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> pixels;
};

// Returns a picture of the file at `path`, scaled down to fit `maxWidth` by `maxHeight` (0: no
// limit) with its aspect ratio. Takes 5 seconds at most, plus the time until a process is free, and
// returns nullopt after that, if the helper program isn't installed, if it crashes or finds no
// picture, if the file is on a share of another operation, or once `isStopped` returns true.
std::optional<FramePicture> DecodeInHelper(const std::string& path, frames::Kind kind, int maxWidth,
                                           int maxHeight, const std::function<bool()>& isStopped);

// True if the helper program is installed.
bool HasFrameHelper();

// For tests: uses another program as the helper; empty for the one that is installed. Ends idle
// processes.
void SetFrameHelperProgram(const std::string& path);
// For tests: the ids of the processes that are idle.
std::vector<int> IdleFrameHelpers();

}  // namespace Sorvik
