// SPDX-License-Identifier: MIT
#include "xmp/readers/ClipInfo.h"

#include <string_view>

#include "foundation/CardFolder.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// The sequences precede the long index of entry points.
constexpr std::size_t kMaxClipInfoBytes = 16 * 1024;
constexpr std::string_view kStreamFolder = "/STREAM/";

}  // namespace

std::optional<std::uint64_t> ReadClipLength(ByteReader file) {
  // "HDMV", version 4, start of SequenceInfo 4. There: length 4, reserved 1, sequences of arrival
  // time 1; each with start 4, sequences of system time 1, id 1; each of these with PID 2, start 4,
  // presentation start 4 and end 4.
  if (!file.Matches(0, "HDMV")) return std::nullopt;
  const ByteReader info = file.Clip(file.U32BE(8).value_or(UINT32_MAX));
  const std::uint8_t outer = info.U8(5).value_or(0);
  std::uint64_t at = 6;
  std::uint64_t ticks = 0;
  for (std::uint8_t i = 0; i < outer; ++i) {
    const std::uint8_t inner = info.U8(at + 4).value_or(0);
    at += 6;
    for (std::uint8_t j = 0; j < inner; ++j, at += 14) {
      const auto start = info.U32BE(at + 6);
      const auto end = info.U32BE(at + 10);
      if (start && end && *end > *start) ticks += *end - *start;
    }
  }
  if (ticks == 0) return std::nullopt;
  return ticks;
}

bool IsCardStream(const std::string& path) {
  const auto slash = path.rfind('/');
  if (slash == std::string::npos || slash + 1 < kStreamFolder.size()) return false;
  return std::string_view(path).substr(0, slash + 1).ends_with(kStreamFolder);
}

std::optional<std::uint64_t> ClipLengthOfStream(const std::string& streamFile) {
  if (!IsCardStream(streamFile)) return std::nullopt;
  const auto slash = streamFile.rfind('/');
  const auto dot = streamFile.rfind('.');
  if (dot == std::string::npos || dot < slash) return std::nullopt;
  std::string path = streamFile.substr(0, slash + 1 - kStreamFolder.size()) + "/CLIPINF" +
                     streamFile.substr(slash, dot - slash);
  // Cameras write MTS with CPI, discs m2ts with clpi, some recorders use CLP.
  const bool camera = streamFile[dot + 1] == 'M';
  for (const char* extension : {camera ? ".CPI" : ".clpi", camera ? ".clpi" : ".CPI", ".CLP"}) {
    if (const auto bytes = foundation::ReadHeadOnCard(path + extension, kMaxClipInfoBytes)) {
      return ReadClipLength(ByteReader(*bytes));
    }
  }
  return std::nullopt;
}

}  // namespace Sorvik::xmp
