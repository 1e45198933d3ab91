// SPDX-License-Identifier: MIT
#include "xmp/readers/RmfReader.h"

#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// Facts: public decoders of the format. Little-endian; the rest of the header is undocumented.
constexpr std::string_view kMagic = "XPDS";
constexpr std::uint64_t kMake = 0x800;
constexpr std::uint64_t kMakeLength = 41;
constexpr std::uint64_t kHeight = 0x829;
constexpr std::uint64_t kWidth = 0x82B;
constexpr std::uint64_t kModel = 0x865;
constexpr std::uint64_t kModelLength = 30;
constexpr unsigned kBitsOfSample = 10;

bool Recognises(const ReaderInput& input) { return input.head.Matches(0, kMagic); }

// A single frame has no duration: the length of a clip is its number of files.
void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  if (!Recognises(input)) return;
  const ByteReader head = input.head;
  output.hasNative = true;
  output.native.SetProperty(kNsDM, "videoCompressor", "Canon RAW");
  SetPixelDepth(output.native, kBitsOfSample);
  SetFrameSize(output.native, head.U16LE(kWidth).value_or(0), head.U16LE(kHeight).value_or(0));

  const std::string make = NativeText(head.CStringAt(kMake, kMakeLength));
  std::string model = NativeText(head.CStringAt(kModel, kModelLength));
  if (!make.empty() && model.starts_with(make + " ")) model.erase(0, make.size() + 1);
  output.native.SetProperty(kNsTIFF, "Make", make);
  output.native.SetProperty(kNsTIFF, "Model", model);
}

}  // namespace

const Reader kRmfReader = {"Canon RAW", Recognises, Read};

}  // namespace Sorvik::xmp
