// SPDX-License-Identifier: MIT
#include "xmp/readers/Id3Reader.h"

#include "foundation/Paths.h"
#include "xmp/readers/Id3Tag.h"
#include "xmp/readers/MpegAudio.h"

namespace Sorvik::xmp {

namespace {

// Files without a tag are recognised by their name, too: a frame has a short signature.
bool Recognises(const ReaderInput& input) {
  return IsId3Tag(input.head) ||
         (foundation::HasExtension(input.path, ".mp3") && IsMpegAudioFrame(input.head));
}

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  if (!Recognises(input)) return;
  FileWindow file(input);
  const bool hasTexts = SetId3Tag(file, 0, output.native, output.packet);
  const bool hasFrames = SetMpegAudio(file, EndOfId3Tag(input.head), output.native);
  output.hasNative = hasTexts || hasFrames;
}

}  // namespace

const Reader kId3Reader = {"ID3", Recognises, Read};

}  // namespace Sorvik::xmp
