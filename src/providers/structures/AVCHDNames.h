// SPDX-License-Identifier: MIT
// The names of an AVCHD card. Paths and names are UTF-8.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Sorvik::avchd {

inline constexpr std::string_view kAVCHD = "AVCHD";
inline constexpr std::string_view kBDMV = "BDMV";
inline constexpr std::string_view kBackup = "BACKUP";
inline constexpr std::string_view kStream = "STREAM";
inline constexpr std::string_view kClipInfo = "CLIPINF";
inline constexpr std::string_view kPlaylist = "PLAYLIST";

// In the order in which they are tried. The comparison is exact.
using Extensions = std::span<const std::string_view>;
inline constexpr std::string_view kStreamExtensions[] = {".MTS", ".mts", ".M2TS", ".m2ts"};
inline constexpr std::string_view kClipInfoExtensions[] = {".clpi", ".CLP", ".CPI"};
inline constexpr std::string_view kPlaylistExtensions[] = {".mpls", ".MPL"};

// A clip is a number of five digits.
inline constexpr std::string_view kClipMask = "#####";

// The BDMV folder of the card at `path`: in it, or else in its folder AVCHD, which needn't exist.
std::string FindBDMVFolder(const std::string& path);

// The first of the names made of `title` and an extension that exists in the folder `subfolder` of
// a BDMV folder, as a path; nullopt if none does.
std::optional<std::string> FindPartFile(const std::string& bdmv, std::string_view subfolder,
                                        std::string_view title, Extensions extensions);

}  // namespace Sorvik::avchd
