// SPDX-License-Identifier: MIT
#include "xmp/ReaderTable.h"

#include <algorithm>
#include <iterator>

#include "xmp/readers/AriReader.h"
#include "xmp/readers/CanonXFReader.h"
#include "xmp/readers/DVReader.h"
#include "xmp/readers/GifReader.h"
#include "xmp/readers/IsoMediaReader.h"
#include "xmp/readers/JpegReader.h"
#include "xmp/readers/MXFReader.h"
#include "xmp/readers/NonRealTimeMetaReader.h"
#include "xmp/readers/P2ClipReader.h"
#include "xmp/readers/PlainXMPReader.h"
#include "xmp/readers/PngReader.h"
#include "xmp/readers/R3dReader.h"
#include "xmp/readers/RiffReader.h"
#include "xmp/readers/RmfReader.h"
#include "xmp/readers/ScanReader.h"
#include "xmp/readers/TiffReader.h"
#include "xmp/readers/TransportStreamReader.h"

namespace Sorvik::xmp {
namespace {

constexpr const Reader* kReaders[] = {
    // XML, which only place, name and root element tell apart.
    &kP2ClipReader,
    &kNonRealTimeMetaReader,
    &kPlainXMPReader,
    // Kinds that their place in a card tells: they have a second file beside them.
    &kCanonXFReader,
    // Kinds that their first bytes tell for certain.
    &kMXFReader,
    &kJpegReader,
    &kTiffReader,
    &kPngReader,
    &kGifReader,
    &kIsoMediaReader,
    &kRiffReader,
    &kAriReader,
    &kR3dReader,
    &kRmfReader,
    // A kind that its name tells.
    &kRmdReader,
    // Kinds that are told by patterns in their bytes: after all that have a signature.
    &kTransportStreamReader,
    &kDVReader,
    // Everything else.
    &kScanReader,
};

}  // namespace

const Reader& ReaderFor(const ReaderInput& input) {
  const auto found = std::find_if(std::begin(kReaders), std::end(kReaders),
                                  [&](const Reader* reader) { return reader->recognises(input); });
  return found == std::end(kReaders) ? kScanReader : **found;
}

}  // namespace Sorvik::xmp
