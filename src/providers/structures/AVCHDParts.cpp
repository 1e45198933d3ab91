// SPDX-License-Identifier: MIT
#include <string>
#include <vector>

#include "formats/avchd/Playlist.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/hestra/PathUtils.h"
#include "providers/structures/AVCHDNames.h"
#include "providers/structures/ProviderAVCHD.h"

namespace Sorvik {

using foundation::JoinPath;

// The play items of the shot. Their times are those of the pictures, so that no stream has to be
// read for the length of a part.
std::vector<ListedPart> ProviderAVCHD::ListParts(const std::string& path,
                                                 const std::string& key) const {
  std::vector<ListedPart> parts;
  if (!Hestra::PathUtils::IsItemName(key)) return parts;
  const std::string bdmv = avchd::FindBDMVFolder(path);
  const std::string streams = JoinPath(bdmv, avchd::kStream);
  const auto shot = formats::avchd::FindShotOfStream(JoinPath(streams, key));
  if (!shot) return parts;
  for (std::size_t i = shot->first; i < shot->end; ++i) {
    const auto& item = shot->playlist->items[i];
    const std::string clip(item.ClipName());
    const auto file = avchd::FindPartFile(bdmv, avchd::kStream, clip, avchd::kStreamExtensions);
    const bool isClip = clip.find_first_not_of("0123456789") == clip.npos;
    const std::string usual(foundation::FileExtension(key));
    ListedPart part;
    part.name = clip;
    part.isPresent = file.has_value();
    if (isClip) part.path = file.value_or(JoinPath(streams, clip + usual));
    if (item.outTime > item.inTime) part.range = PlayedRange{item.inTime, item.outTime};
    parts.push_back(std::move(part));
  }
  return parts;
}

}  // namespace Sorvik
