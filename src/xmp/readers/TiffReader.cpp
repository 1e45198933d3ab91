// SPDX-License-Identifier: MIT
#include "xmp/readers/TiffReader.h"

#include "xmp/readers/DngTags.h"
#include "xmp/readers/ExifTags.h"
#include "xmp/readers/FileWindow.h"

namespace Sorvik::xmp {

namespace {

bool Recognises(const ReaderInput& input) { return TiffWalker::IsTiff(input.head); }

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  FileWindow file(input);
  auto walker = TiffWalker::Open(file);
  if (!walker) return;
  const TiffDirectory first = walker->First();
  output.packet = walker->Bytes(first, tiff::kXMPPacket, FileWindow::kMaxBytes);
  output.hasNative = SetExifTags(*walker, first, output.native);
  if (!IsDng(first)) return;
  SetDngTags(*walker, first, output.native);
  output.hasNative = true;
}

}  // namespace

const Reader kTiffReader = {"TIFF", Recognises, Read};

}  // namespace Sorvik::xmp
