// SPDX-License-Identifier: MIT
// The material list of an XDCAM EX card, with the paths of the files that it names. A path that
// isn't on the card is empty. Texts are UTF-8. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "formats/TextIndex.h"
#include "formats/sony/MediaProfile.h"

namespace Sorvik::xdcamex {

struct MediaProEntry {
  static constexpr std::int32_t kClip = 0;
  static constexpr std::int32_t kTake = 1;
  static constexpr std::int32_t kNeither = 2;

  std::string umid;
  std::int32_t kind = kNeither;
  std::string essencePath;
  std::string xmlPath;
  std::string bimPath;
  std::string ppnPath;
  std::string materialPath;  // the material itself: the .SMI
  std::string xmpPath;       // of the clip's sidecar, whether it exists or not
  std::uint32_t durationFrames = 0;
  std::string mediaProPath;                 // the list that contains this record
  std::vector<std::string> componentUmids;  // of a take, in document order
};

// The records of one list, with an index by UMID and by file name, both case-insensitive.
class MediaProCard {
 public:
  // The list at `xmlPath`, read once within a call scope; without records if it can't be read.
  static std::shared_ptr<const MediaProCard> Of(const std::string& xmlPath);

  const std::vector<MediaProEntry>& Entries() const noexcept { return entries_; }
  // Indexes of Entries(), ascending; null if there is none. An empty UMID never matches.
  const std::vector<std::size_t>* WithUmid(std::string_view umid) const;
  const std::vector<std::size_t>* TakesWith(std::string_view componentUmid) const;
  // The first record whose essence path contains the file name.
  std::optional<std::size_t> WithEssence(std::string_view fileName) const;

 private:
  using UmidIndex = std::unordered_map<std::string, std::vector<std::size_t>>;

  static MediaProCard Read(const std::string& xmlPath);
  void Add(MediaProEntry entry);

  std::vector<MediaProEntry> entries_;
  UmidIndex byUmid_;
  UmidIndex byComponentUmid_;
  std::shared_ptr<const formats::TextIndex> essences_;
};

}  // namespace Sorvik::xdcamex
