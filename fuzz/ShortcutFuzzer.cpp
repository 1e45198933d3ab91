// SPDX-License-Identifier: MIT
// Shell links and desktop entries, selected by the first byte.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "filesystem/ShellLink.h"
#include "foundation/ByteReader.h"
#include "foundation/platform/DesktopEntry.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Sorvik::foundation::ByteReader file(std::as_bytes(std::span(data, size)));
  if (file.U8(0) == '[') {
    const auto target = Sorvik::platform::LinkOfDesktopEntry(file.Text());
    if (target && target->substr(0, 1) != "/") std::abort();
    return 0;
  }
  const auto link = Sorvik::ParseShellLink(file);
  if (!link) return 0;
  // A two-byte unit becomes at most three bytes, so texts are limited by the file size.
  for (const auto* text : {&link->relativePath, &link->networkName, &link->localBasePath,
                           &link->pathSuffix, &link->volumeLabel}) {
    if (text->size() > 2 * size) std::abort();
  }
  return 0;
}
