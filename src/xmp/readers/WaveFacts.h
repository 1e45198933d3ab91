// SPDX-License-Identifier: MIT
// Facts about audio in RIFF files: wave format, broadcast extension, iXML.
// Facts: Microsoft's WAVEFORMATEX; EBU Tech 3285; EBU Tech 3306 (RF64); iXML 2.0.
#pragma once

#include "formats/sound/RecorderFile.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/RiffChunks.h"

namespace Sorvik::xmp {

struct WaveFormat {
  std::uint16_t tag = 0;  // the tag of the sub-format if there is one
  unsigned channels = 0;
  std::uint32_t rate = 0;
  unsigned blockBytes = 0;  // bytes of one sample of all channels, for PCM
  unsigned bits = 0;
};
WaveFormat ReadWaveFormat(foundation::ByteReader bytes);
void SetWaveFormat(const WaveFormat& format, TXMPMeta& meta);

// Collects the chunks of a WAV file, which may be in any order.
class WaveFacts {
 public:
  void Take(FileWindow& file, const RiffChunk& chunk);
  std::uint64_t DataBytes() const noexcept { return dataBytes_; }
  // Stores the facts of all chunks of a file of that size. Returns true if there were any.
  bool Store(std::uint64_t fileBytes, TXMPMeta& meta) const;

 private:
  void StoreBroadcast(TXMPMeta& meta) const;
  void StoreIXML(TXMPMeta& meta) const;
  void StoreStart(TXMPMeta& meta) const;

  std::optional<WaveFormat> format_;
  std::uint64_t dataBytes_ = 0;
  std::uint64_t samples_ = 0;  // from 'fact' and 'ds64'
  std::optional<formats::sound::BroadcastExtension> broadcast_;
  bool hasIXML_ = false;
  std::optional<formats::sound::IXml> ixml_;
};

}  // namespace Sorvik::xmp
