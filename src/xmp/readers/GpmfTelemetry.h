// SPDX-License-Identifier: MIT
// Telemetry of action cameras in the key-length-value format GPMF: model, serial number, firmware,
// and the first position and time of the GPS receiver.
// Facts: the published description of GPMF and recordings of several camera generations.
#pragma once

#include "foundation/ByteReader.h"
#include "xmp/Reader.h"
#include "xmp/readers/FileWindow.h"
#include "xmp/readers/IsoTracks.h"

namespace Sorvik::xmp {

// The items in `bytes`: those of the user data of a movie, or a sample of a telemetry track. What
// `meta` has already is kept, except for the model that the user data gives. Positions without a
// fix are ignored.
void SetGpmfFacts(foundation::ByteReader bytes, TXMPMeta& meta);

// The first sample of the telemetry track, which takes a read. Returns without one if no property
// is wanted that the sample can have.
void SetTelemetryTrack(FileWindow& file, const IsoMovie& movie, const WantedProperties& wanted,
                       TXMPMeta& meta);

}  // namespace Sorvik::xmp
