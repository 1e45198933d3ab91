// SPDX-License-Identifier: MIT
#include <string>
#include <string_view>
#include <vector>

#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "frame/FieldValues.h"
#include "providers/cards/ProviderXDCAM.h"
#include "providers/cards/XDCAMFiles.h"

namespace Sorvik {

using foundation::CardFolder;
using foundation::Lookup;

// In the PROAV layout, picture and each sound channel are files of their own: V01, A01, A02, ...
std::vector<ListedPart> ProviderXDCAM::ListParts(const std::string& path,
                                                 const std::string& key) const {
  constexpr unsigned kMaxChannels = 16;
  constexpr std::string_view kVideoEnd = "V01.MXF";
  const ContentMap content = GetContent(path, key, {kPathField});
  if (content.empty()) return {};
  const std::string essence = TextOf(content.begin()->second, kPathField);
  std::vector<ListedPart> parts;
  if (essence.empty()) return parts;
  const bool exists = foundation::ExistsOnCard(essence, Lookup::kListing);
  if (xdcam::IsInDiscLayout(key) || essence.size() <= kVideoEnd.size()) {
    return {{.path = essence, .isPresent = exists, .record = key}};
  }
  if (essence.ends_with(kVideoEnd)) {
    parts.push_back(
        {.path = essence, .track = ShotTrack::kPicture, .isPresent = exists, .record = key});
  }
  const std::string stem = essence.substr(0, essence.size() - kVideoEnd.size());
  for (unsigned channel = 1; channel <= kMaxChannels; ++channel) {
    std::string sound = stem + (channel < 10 ? "A0" : "A") + std::to_string(channel) + ".MXF";
    if (!foundation::ExistsOnCard(sound, Lookup::kListing)) continue;
    parts.push_back(
        {.path = std::move(sound), .track = ShotTrack::kSound, .channel = channel, .record = key});
  }
  return parts;
}

}  // namespace Sorvik
