// SPDX-License-Identifier: MIT
#include "foundation/Presence.h"

#include <optional>

#include "foundation/FolderNames.h"
#include "foundation/hestra/PathUtils.h"

namespace Sorvik::foundation {
namespace {

namespace PathUtils = Hestra::PathUtils;

std::optional<platform::FileKind> KindByListing(const std::string& path) {
  const auto slash = path.rfind(platform::kSeparator);
  if (slash == 0 || slash + 1 == path.size()) return platform::KindOf(path);
  return FolderNames::Of(path.substr(0, slash))->KindOf(path.substr(slash + 1));
}

}  // namespace

bool IsPresent(const UTF16String& path, Lookup lookup) {
  if (!PathUtils::IsValidPath(path)) return false;
  const std::string bytes = Hestra::MakeStdString(path);
  const auto kind = lookup == Lookup::kDisk ? platform::KindOf(bytes) : KindByListing(bytes);
  return kind == platform::FileKind::kRegular || kind == platform::FileKind::kDirectory;
}

bool IsWithin(std::u16string_view path, std::u16string_view folder) {
  const UTF16String whole = PathUtils::ToNormalizedPath(path);
  const UTF16String top = PathUtils::AddTrailingSlash(PathUtils::ToNormalizedPath(folder));
  return whole.size() > top.size() && whole.starts_with(top);
}

}  // namespace Sorvik::foundation
