// SPDX-License-Identifier: MIT
// Whether a recording was split over several cards, by the metadata of its file.
#pragma once

#include <optional>
#include <string>

namespace Sorvik {

struct RecordingVolume {
  unsigned number = 0;  // of this file, from 1
  unsigned count = 0;
};

// The values multicard_volume_number and multicard_volume_count of the Blackmagic RAW file at
// `path` (UTF-8). Returns nullopt if it can't be read or doesn't have both. Opens the file once.
// Any thread.
std::optional<RecordingVolume> ReadRecordingVolume(const std::string& path);

}  // namespace Sorvik
