// SPDX-License-Identifier: MIT
// The times of pictures. The first byte selects the container and the rate, the rest is the file.
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "formats/MediaTiming.h"

namespace {

void Check(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Sorvik::formats;
  if (size == 0) return 0;
  static const int kMemory = memfd_create("input", MFD_CLOEXEC);
  Check(kMemory >= 0 && ftruncate(kMemory, 0) == 0);
  Check(pwrite(kMemory, data + 1, size - 1, 0) == static_cast<ssize_t>(size - 1));
  const auto file = Sorvik::platform::RegularFile::Open("/proc/self/fd/" + std::to_string(kMemory));
  Check(file.has_value());
  const auto timing =
      data[0] < 128 ? ReadIsoTiming(*file) : ReadTransportTiming(*file, data[0] - 127);
  if (timing) {
    Check(std::isfinite(timing->firstStamp) && std::isfinite(timing->firstPicture));
  }
  return 0;
}
