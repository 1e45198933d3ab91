// SPDX-License-Identifier: MIT
// Items of GPMF telemetry, as in the user data of a movie and in samples of its track.
#include <cstdint>
#include <span>

#include "FuzzReader.h"
#include "xmp/readers/GpmfTelemetry.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Sorvik::xmp;
  TXMPMeta meta;
  SetGpmfFacts(Sorvik::foundation::ByteReader(std::as_bytes(std::span(data, size))), meta);
  // Times are in UTC.
  std::string time;
  if (meta.GetProperty(kNsEXIF, "GPSTimeStamp", &time)) sorvik_fuzz::Check(time.ends_with('Z'));
  return 0;
}
