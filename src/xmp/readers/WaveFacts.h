// SPDX-License-Identifier: MIT
// What sound in RIFF files tells about itself: wave format, broadcast extension, iXML.
// Facts: Microsoft's WAVEFORMATEX; EBU Tech 3285; EBU Tech 3306 (RF64); iXML 2.0.
#pragma once

#include "xmp/NativeValues.h"
#include "xmp/readers/RiffChunks.h"

namespace Sorvik::xmp {

struct WaveFormat {
  std::uint16_t tag = 0;  // that of the sub-format where there is one
  unsigned channels = 0;
  std::uint32_t rate = 0;
  unsigned blockBytes = 0;  // of one sample of all channels, where the sound is plain
  unsigned bits = 0;
};
WaveFormat ReadWaveFormat(foundation::ByteReader bytes);
void SetWaveFormat(const WaveFormat& format, TXMPMeta& meta);

// Gathers the chunks of a WAV file, which come in any order.
class WaveFacts {
 public:
  void Take(FileWindow& file, const RiffChunk& chunk);
  std::uint64_t DataBytes() const noexcept { return dataBytes_; }
  // Stores what the chunks told together; true if any did.
  bool Store(TXMPMeta& meta) const;

 private:
  void StoreBroadcast(TXMPMeta& meta) const;
  void StoreIXML(TXMPMeta& meta) const;

  std::optional<WaveFormat> format_;
  std::uint64_t dataBytes_ = 0;
  std::uint64_t samples_ = 0;  // as 'fact' and 'ds64' tell
  std::string broadcast_;
  std::string ixml_;
};

}  // namespace Sorvik::xmp
