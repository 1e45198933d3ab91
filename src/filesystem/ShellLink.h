// SPDX-License-Identifier: MIT
// Parser of Windows shortcuts (".lnk"). Format: [MS-SHLLINK], sections 2.1 to 2.4. Works on bytes
// in memory; strings are UTF-8. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "foundation/ByteReader.h"

namespace Sorvik {

// Only this much of a shortcut is read; real ones are a few kilobytes.
inline constexpr std::size_t kMaxShortcutBytes = 64 << 10;

// The target as stored in a shortcut. Absent parts are empty. Paths have backslashes.
struct ShellLink {
  std::string relativePath;   // relative to the shortcut's folder
  std::string networkName;    // "\\server\share"
  std::string localBasePath;  // "D:\folder\file", or a prefix of it
  std::string pathSuffix;     // appended to networkName or localBasePath
  std::string volumeLabel;
  std::uint32_t volumeSerial = 0;
};

// Returns nullopt if the bytes don't begin with the header of a shortcut. Parsing stops at a
// damaged part; it and what follows stay empty.
std::optional<ShellLink> ParseShellLink(const foundation::ByteReader& file);

}  // namespace Sorvik
