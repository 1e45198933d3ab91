// SPDX-License-Identifier: MIT
// Facts about a clip from the card that contains its XML: its entry in the material list, and the
// take that it belongs to. Lists are kept in the call scope.
#pragma once

#include <memory>
#include <string>

#include "formats/sony/MediaProfile.h"

namespace Sorvik::xmp {

// Returns the clip's material, which shares ownership of its list; null if the card's list doesn't
// contain it.
std::shared_ptr<const formats::sony::Material> MaterialOfClip(const std::string& xmlPath);

// True if the path is that of a clip's XML on an XDCAM EX card.
bool IsOnXDCAMEX(const std::string& xmlPath);

// Returns the UMID of the take that a clip of an XDCAM EX card belongs to by the material list;
// empty for a single clip. The clip's own XML doesn't contain it. A clip missing from the list
// belongs to no take, even if the take or its playlist names it: a listing groups the clips of a
// take, and finds the files of each, by the list alone.
std::string TakeOfClip(const std::string& xmlPath);

}  // namespace Sorvik::xmp
