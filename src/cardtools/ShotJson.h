// SPDX-License-Identifier: MIT
// The parts of a shot in JSON: in the lines of a catalogue and in the list of joined files.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "SorvikProvider/cardtools/ShotParts.h"
#include "SorvikProvider/foundation/JsonWriter.h"
#include "foundation/JsonReader.h"

namespace Sorvik {

// "picture and sound", "picture" or "sound".
const char* NameOf(ShotTrack track);

// "30000/1001" for a known rate.
std::string FractionOf(const ShotRate& rate);

// Writes the members "rate", "complete" and "parts" of an open object.
void WriteShot(Hestra::JsonWriter& json, const ShotParts& shot);

// An object with these members on one line; "null" for a shot without parts.
std::string ToJson(const ShotParts& shot);

// The reverse. Returns nullopt if `json` isn't such an object.
std::optional<ShotParts> ShotOf(const foundation::JsonValue& json);

// "30000/1001"; an unknown rate for anything else.
ShotRate RateOfFraction(std::string_view text);

}  // namespace Sorvik
