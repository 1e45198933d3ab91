// SPDX-License-Identifier: MIT
// The probes that detect truncated media. The first byte selects the probe, the rest is the file.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>

#include "formats/probe/Probes.h"

namespace {

using namespace Sorvik::formats;
using Sorvik::platform::RegularFile;

constexpr MediaProbe (*kProbes[])(const RegularFile& file) = {
    probe::ProbeMxf, probe::ProbeIsoMedia,   probe::ProbeRiff, probe::ProbeTransportStream,
    probe::ProbeDV,  probe::ProbeAri,        probe::ProbeRmf,  probe::ProbeDng,
    probe::ProbeR3d, probe::ProbeAvchdIndex, probe::ProbeBmp};

void Check(bool holds) {
  if (!holds) std::abort();
}

// A file in memory that probes can open.
int MemoryFile() {
  static const int descriptor = memfd_create("input", MFD_CLOEXEC);
  Check(descriptor >= 0);
  return descriptor;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const int memory = MemoryFile();
  Check(ftruncate(memory, 0) == 0);
  Check(pwrite(memory, data + 1, size - 1, 0) == static_cast<ssize_t>(size - 1));
  const auto file = RegularFile::Open("/proc/self/fd/" + std::to_string(memory));
  Check(file.has_value() && file->Size() == size - 1);
  const MediaProbe result = kProbes[data[0] % std::size(kProbes)](*file);
  Check((result.result == MediaProbe::Result::kPassed) == result.detail.empty());
  return 0;
}
