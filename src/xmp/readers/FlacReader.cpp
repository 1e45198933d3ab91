// SPDX-License-Identifier: MIT
#include "xmp/readers/FlacReader.h"

#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/BitReader.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {
namespace {

bool Recognises(const ReaderInput& input) { return input.head.Matches(0, "fLaC"); }

// The type and length of the block; sizes of blocks and frames; 20 bits rate, 3 channels, 5 depth,
// 36 number of samples.
void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  if (!Recognises(input)) return;
  constexpr std::uint64_t kRateAt = 18;
  BitReader bits(input.head.Clip(kRateAt));
  const std::uint32_t rate = bits.Bits(20);
  const unsigned channels = bits.Bits(3) + 1;
  const unsigned depth = bits.Bits(5) + 1;
  const std::uint64_t high = bits.Bits(4);
  const std::uint64_t samples = high << 32 | bits.Bits(32);
  if (!bits.Good() || rate == 0) return;
  output.hasNative = true;
  TXMPMeta& meta = output.native;
  meta.SetProperty(kNsDM, "audioCompressor", "FLAC");
  SetAudioSampleRate(meta, rate);
  SetAudioChannels(meta, channels);
  SetAudioSampleBits(meta, depth);
  if (samples == 0) return;
  SetDuration(meta, samples, {rate, 1});
  SetFileDataRate(meta, input.file.Size(), samples, rate);
}

}  // namespace

const Reader kFlacReader = {"FLAC", Recognises, Read};

}  // namespace Sorvik::xmp
