// SPDX-License-Identifier: MIT
// What a provider implements, as a second base, if its entries can consist of several media files.
// The provider only lists the files; GetShotParts adds frame counts, timecodes and time stamps.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "SorvikProvider/cardtools/ShotParts.h"

namespace Sorvik {

// The range of a stream that is played, in time stamps of its pictures.
struct PlayedRange {
  std::uint32_t in = 0;  // 1/45000 s
  std::uint32_t out = 0;
};

struct ListedPart {
  // Where the essence is. If it doesn't exist, where it should be, or empty.
  std::string path;
  // Empty: the title of the file. Required if `path` is empty.
  std::string name = {};
  ShotTrack track = ShotTrack::kPictureAndSound;
  unsigned channel = 0;  // as in ShotPart
  bool isPresent = true;
  bool isInferred = false;
  // The file with the metadata of the part, if that isn't the essence.
  std::string record = {};
  // From an index; otherwise read from the record or the essence.
  std::optional<std::uint64_t> frames = {};
  std::optional<PlayedRange> range = {};
  std::optional<ImageSequence> images = {};  // `path` is then the first frame
};

class PartLister {
 public:
  virtual ~PartLister() = default;
  // Returns the parts of an entry, tracks one after the other, each in playing order. Parts that
  // an index or a record of the card names and that are missing are included. Empty for an entry
  // that consists of its Path only, and if there is no such entry. Runs in a call scope of the
  // caller. Any thread.
  virtual std::vector<ListedPart> ListParts(const std::string& path,
                                            const std::string& key) const = 0;
};

}  // namespace Sorvik
