// SPDX-License-Identifier: MIT
// The playlist of a take on an XDCAM EX card, TAKR/<take>/<take>.SMI: which clips it joins. Facts
// of the format: as public writers and readers of it agree. Any thread.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"

namespace Sorvik::formats::sony {

using Hestra::UTF16String;

struct TakePlaylist {
  std::vector<UTF16String> sources;  // umids in playing order
  // False if the last part has no end: the take goes on in a part that isn't on this card.
  bool complete = true;

  // Nothing if it can't be read as a playlist at all.
  static std::optional<TakePlaylist> Read(const UTF16String& path);
  static std::optional<TakePlaylist> FromBytes(std::string_view bytes);
};

}  // namespace Sorvik::formats::sony
