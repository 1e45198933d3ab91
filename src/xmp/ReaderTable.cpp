// SPDX-License-Identifier: MIT
#include "xmp/ReaderTable.h"

#include <algorithm>
#include <iterator>

#include "xmp/readers/CanonXFReader.h"
#include "xmp/readers/DVReader.h"
#include "xmp/readers/MXFReader.h"
#include "xmp/readers/NonRealTimeMetaReader.h"
#include "xmp/readers/P2ClipReader.h"
#include "xmp/readers/PlainXMPReader.h"
#include "xmp/readers/ScanReader.h"
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
