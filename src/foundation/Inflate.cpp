// SPDX-License-Identifier: MIT
#include "foundation/Inflate.h"

#include <zlib.h>

#include <algorithm>
#include <climits>

namespace Sorvik::foundation {

std::string Inflate(std::string_view packed, std::size_t maxBytes) {
  if (packed.size() > UINT_MAX) return {};
  z_stream stream = {};
  if (inflateInit(&stream) != Z_OK) return {};
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));  // only read
  stream.avail_in = static_cast<uInt>(packed.size());

  std::string all;
  int state = Z_OK;
  while (state == Z_OK && all.size() < maxBytes) {
    constexpr std::size_t kStep = 64 * 1024;
    const std::size_t before = all.size();
    const std::size_t step = std::min(kStep, maxBytes - before);
    all.resize(before + step);
    stream.next_out = reinterpret_cast<Bytef*>(all.data() + before);
    stream.avail_out = static_cast<uInt>(step);
    state = inflate(&stream, Z_NO_FLUSH);
    all.resize(before + step - stream.avail_out);
    if (stream.avail_in == 0 && stream.avail_out != 0) break;
  }
  inflateEnd(&stream);
  return state == Z_STREAM_END ? all : std::string();
}

}  // namespace Sorvik::foundation
