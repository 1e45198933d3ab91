// SPDX-License-Identifier: MIT
// Material lists and playlists of Sony media, through the parser of card indexes.
#include <algorithm>
#include <cstdint>
#include <string_view>

#include "FuzzReader.h"
#include "formats/sony/MediaProfile.h"
#include "formats/sony/TakePlaylist.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Sorvik::formats::sony;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const MediaProfile list = MediaProfile::FromBytes(bytes);
  sorvik_fuzz::Check(list.IsReadable() || list.Materials().empty());
  for (const Material& material : list.Materials()) {
    for (const MaterialPart& part : material.parts) {
      if (part.kind != MaterialPart::Kind::kComponent || part.umid.empty()) continue;
      const Material* take = list.FindTake(part.umid);
      sorvik_fuzz::Check(!material.IsTake() || take != nullptr);
      sorvik_fuzz::Check(take == nullptr || take->IsTake());
    }
  }
  if (const auto playlist = TakePlaylist::FromBytes(bytes)) {
    sorvik_fuzz::Check(playlist->complete || !playlist->sources.empty());
  }
  return 0;
}
