// SPDX-License-Identifier: MIT
#include "xmp/readers/MpegAudio.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {
namespace {

using foundation::ByteReader;

struct Frame {
  std::uint32_t rate = 0;     // samples per second
  std::uint32_t bitRate = 0;  // bits per second; 0: free
  std::uint32_t samples = 0;
  unsigned channels = 0;
  std::uint64_t encoderAt = 0;  // offset of the encoder's header in the frame
};

// Kilobits per second, by code, of MPEG-1 layers I to III and MPEG-2 layers I, II and III.
constexpr std::uint16_t kBitRates[5][15] = {
    {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
    {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
    {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},
};

// 11 bits sync, 2 version, 2 layer, no checksum 1, 4 bit rate, 2 rate, padding 1, private 1, 2
// mode.
std::optional<Frame> FrameAt(ByteReader bytes) {
  constexpr std::uint32_t kRates[] = {44100, 48000, 32000};
  constexpr std::uint32_t kSamples[] = {384, 1152, 1152};
  const std::uint32_t word = bytes.U32BE(0).value_or(0);
  const unsigned version = word >> 19 & 3;  // 3 MPEG-1, 2 MPEG-2, 0 MPEG-2.5
  const unsigned layer = 4 - (word >> 17 & 3);
  const unsigned bitRate = word >> 12 & 0x0F;
  const unsigned rate = word >> 10 & 3;
  if (word >> 21 != 0x7FF || version == 1 || layer == 4) return std::nullopt;
  if (bitRate >= std::size(kBitRates[0]) || rate >= std::size(kRates)) return std::nullopt;
  const bool isFirst = version == 3;
  const bool isMono = (word >> 6 & 3) == 3;
  Frame frame;
  frame.rate = kRates[rate] >> (isFirst ? 0 : version == 2 ? 1 : 2);
  const unsigned row = isFirst ? layer - 1 : layer == 1 ? 3 : 4;
  frame.bitRate = kBitRates[row][bitRate] * 1000U;
  frame.samples = !isFirst && layer == 3 ? kSamples[2] / 2 : kSamples[layer - 1];
  frame.channels = isMono ? 1 : 2;
  constexpr std::uint64_t kHead = 4;
  frame.encoderAt = kHead + (isFirst ? (isMono ? 17 : 32) : (isMono ? 9 : 17));
  return frame;
}

// The number of frames by the encoder's header: "Xing" or "Info", flags, frames.
std::optional<std::uint32_t> EncodedFrames(ByteReader frame, std::uint64_t at) {
  if (!frame.Matches(at, "Xing") && !frame.Matches(at, "Info")) return std::nullopt;
  if ((frame.U32BE(at + 4).value_or(0) & 1U) == 0) return std::nullopt;
  return frame.U32BE(at + 8);
}

// The number of samples in a file of equally long frames.
std::uint64_t SamplesOf(const Frame& frame, std::uint64_t bytes) {
  return frame.bitRate == 0 ? 0 : bytes * 8 * frame.rate / frame.bitRate;
}

}  // namespace

bool IsMpegAudioFrame(ByteReader bytes) { return FrameAt(bytes).has_value(); }

bool SetMpegAudio(FileWindow& file, std::uint64_t at, TXMPMeta& meta) {
  constexpr std::uint64_t kFirstBytes = 64;
  const ByteReader first = file.At(at, kFirstBytes);
  const auto frame = FrameAt(first);
  if (!frame) return false;
  meta.SetProperty(kNsDM, "audioCompressor", "MPEG");
  meta.SetProperty(kNsDM, "audioSampleType", "Compressed");
  SetAudioSampleRate(meta, frame->rate);
  SetAudioChannels(meta, frame->channels);
  const std::uint64_t bytes = file.Size() - std::min(at, file.Size());
  const auto frames = EncodedFrames(first, frame->encoderAt);
  const std::uint64_t samples =
      frames ? std::uint64_t{*frames} * frame->samples : SamplesOf(*frame, bytes);
  if (samples == 0) return true;
  SetDuration(meta, samples, {frame->rate, 1});
  SetFileDataRate(meta, file.Size(), samples, frame->rate);
  return true;
}

}  // namespace Sorvik::xmp
