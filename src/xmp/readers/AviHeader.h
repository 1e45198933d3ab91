// SPDX-License-Identifier: MIT
// The header list of AVI files, and the first frame of DV in AVI.
// Facts: Microsoft's AVI RIFF reference; OpenDML AVI extensions 1.02.
#pragma once

#include "xmp/NativeValues.h"
#include "xmp/readers/RiffChunks.h"

namespace Sorvik::xmp {

class AviHeader {
 public:
  AviHeader(FileWindow& file, const RiffChunk& hdrl);

  void Store(std::uint64_t fileBytes, TXMPMeta& meta) const;
  bool HoldsDV() const;

 private:
  struct Stream {
    std::uint32_t kind = 0;
    std::string handler;
    Rate rate;
    std::uint64_t length = 0;
    std::string format;
    std::uint32_t aspect = 0;  // of the frame: width in the upper 16 bits
  };

  static std::string Codec(const Stream& picture);
  static unsigned DepthOf(const Stream& picture);
  void ReadStream(FileWindow& file, const RiffChunk& strl);
  void StorePicture(TXMPMeta& meta) const;

  std::uint32_t microsecondsPerFrame_ = 0;
  std::uint64_t frames_ = 0;  // of the main header, or of the extended one if present
  std::uint32_t width_ = 0;
  std::uint32_t height_ = 0;
  std::string date_;
  std::optional<Stream> picture_;
  std::optional<Stream> sound_;
};

// Stores the facts of the first DV frame of a 'movi' list in `meta`, replacing what it holds: the
// frame was written by the camera, the header by the program that wrote the file.
void SetFirstDVFrame(FileWindow& file, const RiffChunk& movi, TXMPMeta& meta);

}  // namespace Sorvik::xmp
