// SPDX-License-Identifier: MIT
// Facts about a clip from the sets of one header. Facts: SMPTE ST 377-1 and the operational
// patterns ST 378 (OP1a) and ST 390 (OP-Atom); dialects as found in files of cameras and editors.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "xmp/NativeValues.h"
#include "xmp/XMPMeta.h"
#include "xmp/readers/MXFSets.h"

namespace Sorvik::xmp::mxf {

class Facts {
 public:
  explicit Facts(const HeaderMetadata& header) : header_(header) {}

  // False if there is no material package: such a header contains no facts about a clip.
  bool HasMaterialPackage() const noexcept {
    return header_.First(SetKind::kMaterialPackage) != nullptr;
  }

  struct Duration {
    std::uint64_t frames;
    Rate rate;
  };
  // The duration of the video, otherwise of the audio. Returns nullopt if it isn't written yet.
  std::optional<Duration> GetDuration() const;

  // Stores all facts except the duration.
  void Store(const std::optional<Key>& container, TXMPMeta& meta) const;

 private:
  struct Track {
    const LocalSet* set = nullptr;
    const LocalSet* sequence = nullptr;
    Rate rate;
  };
  struct Clip {
    Key package;  // the first half of a UMID is the same for all files of a writer
    Key packageEnd;
    std::uint32_t track = 0;
    std::int64_t start = 0;
  };
  enum class Essence : std::uint8_t { kPicture = 1, kSound = 2, kTimecode = 0 };

  std::vector<Track> TracksOf(const LocalSet& package) const;
  std::optional<Track> FindTrack(const LocalSet& package, Essence essence) const;
  std::optional<Track> MainTrack() const;
  const LocalSet* FirstComponent(const Track& track) const;
  std::optional<Clip> SourceClipOf(const Track& track) const;
  const LocalSet* PackageOf(const Clip& clip) const;
  std::optional<std::uint64_t> LengthOf(const Track& track) const;
  // File descriptors of all source packages, including those inside multiple descriptors.
  std::vector<const LocalSet*> Descriptors() const;

  struct Start {
    std::uint64_t frames;
    unsigned base;
    bool drop;
    Rate rate;
  };
  std::optional<Start> PackageTimecode(const LocalSet& package) const;
  std::optional<Start> StartTimecode() const;

  void StoreDates(TXMPMeta& meta) const;
  void StoreWriter(TXMPMeta& meta) const;
  void StorePicture(const LocalSet& picture, const std::optional<Key>& container,
                    TXMPMeta& meta) const;
  void StoreSound(const std::vector<const LocalSet*>& descriptors, TXMPMeta& meta) const;
  void StoreComment(TXMPMeta& meta) const;
  void StoreTape(TXMPMeta& meta) const;

  const HeaderMetadata& header_;
};

}  // namespace Sorvik::xmp::mxf
