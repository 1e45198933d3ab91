// SPDX-License-Identifier: MIT
#include "providers/structures/CanonXFNames.h"

#include <algorithm>

#include "foundation/hestra/PathUtils.h"
#include "foundation/tarnwick/Text.h"

namespace Sorvik::canonxf {
namespace {

namespace PathUtils = Hestra::PathUtils;

bool IsAsciiLetter(char16_t c) { return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z'); }

bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

}  // namespace

bool IsClipFolderName(std::u16string_view name) {
  return name.size() == kClipIdLength &&
         std::all_of(name.begin(), name.begin() + 2, IsAsciiLetter) &&
         std::all_of(name.begin() + 2, name.end(), IsDigit);
}

int GetSpanNumber(std::u16string_view title) {
  int number = 0;
  if (title.size() != kSpanTitleLength) return 0;
  tarnwick::utility::StringToNumber(title.substr(kClipIdLength), number);
  return number;
}

UTF16String ClipRootOf(const UTF16String& folder) {
  return PathUtils::CombinePaths(PathUtils::CombinePaths(folder, kContents), kClipRoot);
}

}  // namespace Sorvik::canonxf
