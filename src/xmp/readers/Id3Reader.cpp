// SPDX-License-Identifier: MIT
#include "xmp/readers/Id3Reader.h"

#include "xmp/readers/Id3Tag.h"

namespace Sorvik::xmp {

namespace {

bool Recognises(const ReaderInput& input) { return IsId3Tag(input.head); }

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  FileWindow file(input);
  output.hasNative = SetId3Tag(file, 0, output.native, output.packet);
}

}  // namespace

const Reader kId3Reader = {"ID3", Recognises, Read};

}  // namespace Sorvik::xmp
