// SPDX-License-Identifier: MIT
// Shortcuts of both kinds: the first byte chooses.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "filesystem/ShellLink.h"
#include "foundation/ByteReader.h"
#include "foundation/platform/DesktopEntry.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Sorvik::foundation::ByteReader whole(std::as_bytes(std::span(data, size)));
  if (whole.U8(0) == '[') {
    const auto target = Sorvik::platform::LinkOfDesktopEntry(whole.Text());
    if (target && target->substr(0, 1) != "/") std::abort();
    return 0;
  }
  const auto link = Sorvik::ParseShellLink(whole);
  if (!link) return 0;
  // A unit of two bytes becomes three at most, and no text is longer than the file.
  for (const auto* text : {&link->relativePath, &link->networkName, &link->localBasePath,
                           &link->pathSuffix, &link->volumeLabel}) {
    if (text->size() > 2 * size) std::abort();
  }
  return 0;
}
