// SPDX-License-Identifier: MIT
// Whether a media file is as long as its own structure requires. Reads the head and the tail only:
// one open, a few reads of some kilobytes. A container without such information always passes.
// Never decodes essence, so that damage inside of it isn't found. Any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Sorvik::formats {

struct MediaProbe {
  enum class Result {
    kPassed,      // nothing contradicts that it is complete
    kTruncated,   // shorter than its structure requires
    kUnreadable,  // can't be opened, or isn't a file of the container that its name indicates
    kUnknown,     // no container that can be probed
  };

  Result result = Result::kUnknown;
  std::string detail;  // of kTruncated and kUnreadable, in English
};

// The container is recognised by the extension of `path` (UTF-8, case-insensitive): MXF; MP4, MOV,
// CRM, BRAW; MTS, M2TS, M2T, TS; WAV, AVI; DV; ARI; DNG; RMF; R3D; BMP, JPG, THM.
MediaProbe ProbeMedia(const std::string& path);

// True if ProbeMedia supports the extension, except those of pictures and AVCHD indexes.
bool IsMediaName(std::string_view path);

}  // namespace Sorvik::formats
