// SPDX-License-Identifier: MIT
// The clip information of an AVCHD stream (.CPI, .clpi), as far as it describes the stream's
// length. Facts: layout as public readers agree on it. Any thread.
#pragma once

#include <cstdint>
#include <string>

namespace Sorvik::formats::avchd {

// The size of the stream file by the number of its source packets; 0 if the file at `path` can't be
// read or doesn't contain the number.
std::uint64_t StreamBytesOf(const std::string& path);

}  // namespace Sorvik::formats::avchd
