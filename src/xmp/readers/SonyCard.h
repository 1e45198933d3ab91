// SPDX-License-Identifier: MIT
// What the card around a clip's XML tells of the clip: its row in the material list, and the take
// that it belongs to. What is read here is kept in the call scope.
#pragma once

#include <memory>
#include <string>

#include "formats/sony/MediaProfile.h"

namespace Sorvik::xmp {

// The clip's material, with the list that owns it; null where the card has none for it.
std::shared_ptr<const formats::sony::Material> MaterialOfClip(const std::string& xmlPath);

// True for the XML of a clip of an XDCAM EX card, by its path.
bool IsOnXDCAMEX(const std::string& xmlPath);

// The umid of the take that the clip of an XDCAM EX card belongs to by the material list; empty for
// a single clip. Nothing in the clip's own XML is known to tell. A clip that the list doesn't have
// is no part of any take, even if the take or its playlist names it: a listing folds the clips of a
// take, and finds the files of each by the list alone.
std::string TakeOfClip(const std::string& xmlPath);

}  // namespace Sorvik::xmp
