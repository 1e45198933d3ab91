// SPDX-License-Identifier: MIT
// Identities of clips and cards, which stay the same in copies and after files are renamed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/metadata/MachineValues.h"

namespace Sorvik {

struct ClipIdentity {
  std::string value;  // empty if the clip can't be read
  // "umid" (SMPTE ST 330, 64 hexadecimal digits), "globalClipId" (the same of a P2 clip), "uuid",
  // or "digest".
  std::string_view source;
};

// The identifier that the camera has written into the clip, else a digest of the start timecode,
// duration, size and first 64 KiB of the media file at `path`, which is then opened.
ClipIdentity IdentityOf(const MachineFields& fields, std::string_view provider,
                        const std::string& path);

// A digest of the identities of the clips, in any order. Empty if there are none.
std::string CardIdentity(std::vector<std::string> clipIdentities);

// A short id of a card at a path, as a reference between lines of a catalogue.
std::string CardId(std::string_view path, std::string_view provider);

}  // namespace Sorvik
