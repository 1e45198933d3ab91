// SPDX-License-Identifier: MIT
// The playlist of a take on an XDCAM EX card, TAKR/<take>/<take>.SMI: the clips that it joins.
// Source of the format's facts: public writers and readers. Any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Sorvik::formats::sony {

struct TakePlaylist {
  std::vector<std::string> sources;  // UMIDs in playing order
  // False if a part has no end: the take continues in a part on another card.
  bool complete = true;

  // Return nullopt if the document isn't a playlist or can't be parsed.
  static std::optional<TakePlaylist> Read(const std::string& path);
  static std::optional<TakePlaylist> FromBytes(std::string_view bytes);
};

}  // namespace Sorvik::formats::sony
