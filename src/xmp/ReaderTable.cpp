// SPDX-License-Identifier: MIT
#include "xmp/ReaderTable.h"

#include <algorithm>
#include <iterator>

#include "xmp/readers/AriReader.h"
#include "xmp/readers/BmpReader.h"
#include "xmp/readers/BrawSidecarReader.h"
#include "xmp/readers/CanonXFReader.h"
#include "xmp/readers/CrwReader.h"
#include "xmp/readers/DVReader.h"
#include "xmp/readers/FlacReader.h"
#include "xmp/readers/GifReader.h"
#include "xmp/readers/Id3Reader.h"
#include "xmp/readers/IsoMediaReader.h"
#include "xmp/readers/JpegReader.h"
#include "xmp/readers/MXFReader.h"
#include "xmp/readers/MatroskaReader.h"
#include "xmp/readers/NonRealTimeMetaReader.h"
#include "xmp/readers/P2ClipReader.h"
#include "xmp/readers/PdfReader.h"
#include "xmp/readers/PlainXMPReader.h"
#include "xmp/readers/PngReader.h"
#include "xmp/readers/ProgramStreamReader.h"
#include "xmp/readers/PsdReader.h"
#include "xmp/readers/R3dReader.h"
#include "xmp/readers/RafReader.h"
#include "xmp/readers/RiffReader.h"
#include "xmp/readers/RmfReader.h"
#include "xmp/readers/ScanReader.h"
#include "xmp/readers/SubtitleTelemetryReader.h"
#include "xmp/readers/SvgReader.h"
#include "xmp/readers/TiffReader.h"
#include "xmp/readers/TransportStreamReader.h"

namespace Sorvik::xmp {
namespace {

constexpr const Reader* kReaders[] = {
    // XML formats, detected by path, name and root element.
    &kP2ClipReader,
    &kNonRealTimeMetaReader,
    &kPlainXMPReader,
    &kSvgReader,
    // Formats detected by their path on a card. They have a second file next to them.
    &kCanonXFReader,
    // Formats with a signature.
    &kMXFReader,
    &kJpegReader,
    &kTiffReader,
    &kCrwReader,
    &kRafReader,
    &kPngReader,
    &kGifReader,
    &kBmpReader,
    &kPsdReader,
    &kIsoMediaReader,
    &kRiffReader,
    &kMatroskaReader,
    &kProgramStreamReader,
    &kAriReader,
    &kR3dReader,
    &kRmfReader,
    &kId3Reader,
    &kFlacReader,
    // Detected by file name.
    &kRmdReader,
    &kSubtitleTelemetryReader,
    &kBrawSidecarReader,
    // Formats detected by byte patterns: after all formats with a signature.
    &kTransportStreamReader,
    &kDVReader,
    // The header may follow other data.
    &kPdfReader,
    // Fallback for all other files.
    &kScanReader,
};

}  // namespace

const Reader& ReaderFor(const ReaderInput& input) {
  const auto found = std::find_if(std::begin(kReaders), std::end(kReaders),
                                  [&](const Reader* reader) { return reader->recognises(input); });
  return found == std::end(kReaders) ? kScanReader : **found;
}

}  // namespace Sorvik::xmp
