// SPDX-License-Identifier: MIT
// IPTC-IIM records of pictures as properties.
// Facts: IPTC-NAA Information Interchange Model 4.2, chapters 1.6, 5 and 6; the properties are
// those of the IPTC Photo Metadata Standard.
#pragma once

#include "foundation/ByteReader.h"
#include "xmp/XMPMeta.h"

namespace Sorvik::xmp {

// Stores the datasets of the application record (2) that `meta` lacks. Returns true if there were
// any. Text is UTF-8 or Latin-1.
bool SetIptcRecords(foundation::ByteReader records, TXMPMeta& meta);

}  // namespace Sorvik::xmp
