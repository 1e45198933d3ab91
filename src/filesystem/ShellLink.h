// SPDX-License-Identifier: MIT
// Reader of Windows shortcuts (".lnk"). Facts of the format: the published [MS-SHLLINK], sections
// 2.1 to 2.4. Works on bytes alone; texts come out in UTF-8. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "foundation/ByteReader.h"

namespace Sorvik {

// As much of a shortcut as is read; real ones are a few kilobytes.
inline constexpr std::size_t kMaxShortcutBytes = 64 << 10;

// Where a shortcut says that its target is. What it doesn't say is empty. Paths have backslashes.
struct ShellLink {
  std::string relativePath;   // from the shortcut's own folder
  std::string networkName;    // "\\server\share"
  std::string localBasePath;  // "D:\folder\file", or its beginning
  std::string pathSuffix;     // what follows the network name or the local base path
  std::string volumeLabel;
  std::uint32_t volumeSerial = 0;
};

// Nothing if the bytes don't begin with the header of a shortcut. A damaged part is left out, and
// ends the reading of what would follow it.
std::optional<ShellLink> ParseShellLink(const foundation::ByteReader& file);

}  // namespace Sorvik
