// SPDX-License-Identifier: MIT
// The parts of a shot in a line of a catalogue.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "SorvikProvider/cardtools/ShotParts.h"
#include "foundation/JsonReader.h"

namespace Sorvik {

// An object as docs/catalogue.md describes it; "null" for a shot without parts.
std::string ToJson(const ShotParts& shot);

// The reverse. Returns nullopt if `json` isn't such an object.
std::optional<ShotParts> ShotOf(const foundation::JsonValue& json);

// "30000/1001"; an unknown rate for anything else.
ShotRate RateOfFraction(std::string_view text);

}  // namespace Sorvik
