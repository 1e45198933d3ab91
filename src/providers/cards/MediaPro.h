// SPDX-License-Identifier: MIT
// The material list of an XDCAM EX card as the files that it names. Paths are resolved against the
// card; one that leads off the card is empty. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"
#include "formats/TextIndex.h"
#include "formats/sony/MediaProfile.h"

namespace Sorvik::xdcamex {

using Hestra::UTF16String;

struct MediaProEntry {
  static constexpr std::int32_t kClip = 0;
  static constexpr std::int32_t kTake = 1;
  static constexpr std::int32_t kNeither = 2;

  UTF16String umid;
  std::int32_t kind = kNeither;
  UTF16String essencePath;
  UTF16String xmlPath;
  UTF16String bimPath;
  UTF16String ppnPath;
  UTF16String materialPath;  // the material itself: the .SMI
  UTF16String xmpPath;       // where the clip's sidecar would lie
  std::uint32_t durationFrames = 0;
  UTF16String mediaProPath;                 // the list that this record came from
  std::vector<UTF16String> componentUmids;  // of a take, in document order
};

// The records of one list, found by umid (regardless of case) and by name.
class MediaProCard {
 public:
  // The list at `xmlPath`, made once within a call scope; without records if it can't be read.
  static std::shared_ptr<const MediaProCard> Of(const UTF16String& xmlPath);

  const std::vector<MediaProEntry>& Entries() const noexcept { return entries_; }
  // Places in Entries(), ascending; null if there is none. An empty umid is nobody's.
  const std::vector<std::size_t>* WithUmid(std::u16string_view umid) const;
  const std::vector<std::size_t>* TakesWith(std::u16string_view componentUmid) const;
  // The first record in whose essence path the file name occurs, regardless of case.
  std::optional<std::size_t> OfEssence(std::u16string_view fileName) const;

 private:
  using Places = std::unordered_map<UTF16String, std::vector<std::size_t>>;

  static MediaProCard Read(const UTF16String& xmlPath);
  void Add(MediaProEntry entry);

  std::vector<MediaProEntry> entries_;
  Places umids_;
  Places components_;
  std::shared_ptr<const formats::TextIndex> essences_;
};

}  // namespace Sorvik::xdcamex
