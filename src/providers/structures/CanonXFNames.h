// SPDX-License-Identifier: MIT
// The names of a Canon XF card. Names and paths are UTF-8; lengths count 16-bit code units.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "foundation/CardFolder.h"

namespace Sorvik::canonxf {

inline constexpr std::string_view kContents = "CONTENTS";
inline constexpr std::string_view kClipRoot = "CLIPS001";
inline constexpr std::string_view kIndexFile = "INDEX.MIF";
inline constexpr std::string_view kJournal = "JOURNAL";
inline constexpr std::string_view kSpanExtension = ".MXF";
inline constexpr std::string_view kSpanInfoExtension = ".SIF";
inline constexpr std::string_view kClipInfoExtension = ".CIF";
inline constexpr std::size_t kClipIdLength = 6;
inline constexpr std::size_t kSpanTitleLength = 8;  // the clip id and the two digits of the span

// Two ASCII letters of either case and four digits.
bool IsClipFolderName(std::string_view name);

// The first kClipIdLength code units of a span's title.
std::string ClipIdOf(std::string_view title);

// The number in the title of a span; 0 if the title has another length or no number.
int GetSpanNumber(std::string_view title);

// The names of files in a clip folder by the number of their span.
std::map<int, std::string> NumberedFiles(const foundation::CardFolder& clip,
                                         std::string_view extension);
// "AA000102.MXF" for span 2 of clip AA0001.
std::string SpanName(std::string_view clipId, int number, std::string_view extension);

// CONTENTS/CLIPS001 of the card at `path`.
std::string ClipRootOf(std::string_view path);

}  // namespace Sorvik::canonxf
