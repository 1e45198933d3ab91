// SPDX-License-Identifier: MIT
// The files of a clip on an XDCAM medium, in both layouts: its essence, its proxy and everything
// else that belongs to it. Paths from an index are reported only if they are on the medium. Any
// thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/CardFolder.h"

namespace Sorvik::xdcam {

inline constexpr std::string_view kClipFolder = "Clip";
inline constexpr std::string_view kProav = "PROAV";
inline constexpr std::string_view kClpr = "CLPR";
inline constexpr std::string_view kClipXmlEnd = "M01.XML";

// True if `root` has the clip folder of the disc layout. Asks the disk.
bool HasClipFolder(const std::string& root);

// True if the clip XML is in the disc layout, by the name of its folder.
bool IsInDiscLayout(std::string_view xmlPath);

// The essence of a clip XML, whether it exists or not: in the disc layout the file with the clip's
// name, else its video file, or its sound file if there is no video. Empty if the path isn't that
// of a clip XML.
std::string EssenceForClipXml(std::string_view xmlPath, foundation::Lookup lookup);

// The path of a uri in the material list. Returns nullopt if it isn't on the medium.
std::optional<std::string> PathOfUri(const std::string& root, std::string_view uri);

// The path of the clip's proxy, as listed in the material list of the disc layout. Returns nullopt
// if none is listed. The file needn't exist.
std::optional<std::string> ProxyPathOf(const std::string& root, const std::string& xmlPath);

struct ClipFiles {
  std::vector<std::string> extraPaths;
  std::string title;  // the clip's title in the material list; empty if it has none
};

// The files of a clip of the disc layout. Returns nullopt if the material list doesn't contain the
// clip.
std::optional<ClipFiles> DiscExtraPaths(const std::string& root, const std::string& xmlPath);
// The files of a clip of the PROAV layout.
std::vector<std::string> ProavExtraPaths(const std::string& root, const std::string& xmlPath);

}  // namespace Sorvik::xdcam
