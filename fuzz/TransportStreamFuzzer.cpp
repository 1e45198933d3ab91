// SPDX-License-Identifier: MIT
// Transport streams of AVCHD and HDV with their video, audio and recording blocks; the same bytes
// are also read as clip information.
#include "FuzzReader.h"
#include "xmp/readers/ClipInfo.h"
#include "xmp/readers/RecordingBlock.h"
#include "xmp/readers/TransportStreamReader.h"
#include "xmp/readers/VideoStream.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Sorvik;
  sorvik_fuzz::Fuzz(xmp::kTransportStreamReader, {data, size}, "clip.mts");
  const foundation::ByteReader bytes(std::as_bytes(std::span(data, size)));
  xmp::ReadClipLength(bytes);
  // Call parsers directly that are hard to reach through packets.
  xmp::ReadAVC(bytes);
  xmp::ReadMPEG2(bytes);
  xmp::TXMPMeta meta;
  xmp::ReadRecordingBlock(bytes, meta);
  return 0;
}
