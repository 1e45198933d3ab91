// SPDX-License-Identifier: MIT
#include "xmp/readers/ScanReader.h"

#include "xmp/PacketScan.h"

namespace Sorvik::xmp {
namespace {

bool Recognises(const ReaderInput&) { return true; }

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  output.packet = ScanForPacket(input.file);
}

}  // namespace

const Reader kScanReader = {"packet scan", Recognises, Read};

}  // namespace Sorvik::xmp
