// SPDX-License-Identifier: MIT
// Mount tables, and GVFS share names.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "foundation/platform/GvfsShares.h"
#include "foundation/platform/MountTable.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto table = Sorvik::platform::MountTable::Parse(text);
  for (const auto& mount : table.Mounts()) {
    if (table.At(mount.mountPoint) != &mount) std::abort();
    if (mount.isNetwork && !table.LeadsToNetwork(mount.mountPoint)) std::abort();
  }
  Sorvik::platform::UrlOfGvfsShare(text);
  return 0;
}
