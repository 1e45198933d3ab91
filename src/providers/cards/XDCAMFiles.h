// SPDX-License-Identifier: MIT
// The files of a clip on an XDCAM medium, in both layouts: its essence, its proxy and what else
// belongs to it. No path that an index names is reported unless it lies on the medium. Any thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "SorvikProvider/frame/FieldModel.h"
#include "foundation/Presence.h"

namespace Sorvik::xdcam {

inline constexpr char16_t kClipFolder[] = u"Clip";
inline constexpr char16_t kProav[] = u"PROAV";
inline constexpr char16_t kClpr[] = u"CLPR";
inline constexpr char16_t kClipXmlEnd[] = u"M01.XML";

// True if the clip XML lies in the disc layout, by the name of its folder.
bool IsInDiscLayout(std::u16string_view xmlPath);

// The essence that belongs to a clip XML, whether it exists or not: in the disc layout the file of
// the clip's name, else its video file, or its sound file where there is no video. Empty if the
// path isn't that of a clip XML.
UTF16String EssenceForClipXml(const UTF16String& xmlPath, foundation::Lookup lookup);

// The place on the medium that a uri of the material list names; nothing for one that leads off it.
std::optional<UTF16String> PathOfUri(const UTF16String& root, std::u16string_view uri);

// Where the proxy of the clip should lie by the material list of the disc layout.
std::optional<UTF16String> ProxyPathOf(const UTF16String& root, const UTF16String& xmlPath);

struct ClipFiles {
  std::vector<UTF16String> extraPaths;
  UTF16String title;  // the clip's name in the material list; empty if it has none
};

// What belongs to a clip of the disc layout. Nothing if the material list doesn't know the clip.
std::optional<ClipFiles> DiscExtraPaths(const UTF16String& root, const UTF16String& xmlPath);
// What belongs to a clip of the PROAV layout.
std::vector<UTF16String> ProavExtraPaths(const UTF16String& root, const UTF16String& xmlPath);

}  // namespace Sorvik::xdcam
