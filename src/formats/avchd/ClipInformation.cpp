// SPDX-License-Identifier: MIT
#include "formats/avchd/ClipInformation.h"

#include "foundation/ByteReader.h"
#include "foundation/CardFolder.h"

namespace Sorvik::formats::avchd {

std::uint64_t StreamBytesOf(const std::string& path) {
  constexpr std::size_t kHeadBytes = 60;
  constexpr std::uint64_t kSourcePacketsAt = 56;  // in the block ClipInfo, which begins at 40
  constexpr std::uint64_t kSourcePacketBytes = 192;
  const auto head = foundation::ReadHeadOnCard(path, kHeadBytes);
  if (!head) return 0;
  const foundation::ByteReader reader{*head};
  if (!reader.Matches(0, "HDMV")) return 0;
  return kSourcePacketBytes * reader.U32BE(kSourcePacketsAt).value_or(0);
}

}  // namespace Sorvik::formats::avchd
