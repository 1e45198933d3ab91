// SPDX-License-Identifier: MIT
// What is missing from P2, XDCAM and XDCAM EX media, told by the records and lists of the card.
#pragma once

#include <cstddef>
#include <string>

#include "SorvikProvider/frame/StructureCheck.h"

namespace Sorvik {

// Records of clips are some 10 kB; larger ones count as unreadable.
inline constexpr std::size_t kMaxClipXmlBytes = std::size_t{4} << 20;

// Each clip XML names its video, sound channels, proxy, icon and the clips before and after it in
// its shot; those of a shot may lie on cards beside this one.
StructureFindings CheckP2Card(const std::string& path);

// The material list, or the clip table, names each clip's files.
StructureFindings CheckXDCAMMedium(const std::string& path);

// The material list names each clip's files, and each take the clips that it joins, which may lie
// on cards beside this one.
StructureFindings CheckXDCAMEXCard(const std::string& path);

}  // namespace Sorvik
