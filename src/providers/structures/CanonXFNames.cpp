// SPDX-License-Identifier: MIT
#include "providers/structures/CanonXFNames.h"

#include <algorithm>

#include "SorvikProvider/foundation/UTF16String.h"
#include "foundation/Paths.h"
#include "foundation/tarnwick/Text.h"
#include "providers/common/NameMask.h"

namespace Sorvik::canonxf {
namespace {

bool IsAsciiLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

}  // namespace

bool IsClipFolderName(std::string_view name) {
  return name.size() == kClipIdLength && std::ranges::all_of(name.substr(0, 2), IsAsciiLetter) &&
         MatchesMask(name.substr(2), "####");
}

std::string ClipIdOf(std::string_view title) {
  return foundation::SubstrOfCodeUnits(title, 0, kClipIdLength);
}

int GetSpanNumber(std::string_view title) {
  const UTF16String units = Hestra::MakeString(title);
  int number = 0;
  if (units.size() != kSpanTitleLength) return 0;
  tarnwick::utility::StringToNumber(std::u16string_view(units).substr(kClipIdLength), number);
  return number;
}

std::map<int, std::string> NumberedFiles(const foundation::CardFolder& clip,
                                         std::string_view extension) {
  std::map<int, std::string> files;
  for (const std::string& name : clip.VisibleFiles(extension)) {
    const int number = GetSpanNumber(foundation::FileStem(name));
    if (number > 0) files.emplace(number, name);
  }
  return files;
}

std::string SpanName(std::string_view clipId, int number, std::string_view extension) {
  std::string name(clipId);
  name.append(number < 10 ? "0" : "").append(std::to_string(number));
  return name.append(extension);
}

std::string ClipRootOf(std::string_view path) {
  return foundation::JoinPath(foundation::JoinPath(path, kContents), kClipRoot);
}

}  // namespace Sorvik::canonxf
