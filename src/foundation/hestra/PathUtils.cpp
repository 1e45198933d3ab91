// SPDX-License-Identifier: MIT
#include "foundation/hestra/PathUtils.h"

#include <algorithm>

#include "foundation/platform/FileSystem.h"
#include "foundation/platform/PathText.h"

namespace Hestra::PathUtils {
namespace {

std::u16string_view NamePart(std::u16string_view path) {
  const auto slash = path.rfind(kSeparator);
  return slash == path.npos ? path : path.substr(slash + 1);
}

std::u16string_view FolderPart(std::u16string_view path) {
  const auto slash = path.rfind(kSeparator);
  return slash == path.npos ? std::u16string_view() : path.substr(0, slash + 1);
}

// The offset of the extension in a file name; the size of the name if it has none.
std::size_t ExtensionStart(std::u16string_view name) {
  const auto dot = name.rfind(u'.');
  return dot == name.npos || dot == 0 ? name.size() : dot;
}

}  // namespace

UTF16String GetPathSeparator() { return UTF16String(1, kSeparator); }

bool IsValidPath(std::u16string_view path) {
  return !path.empty() && path.front() == kSeparator && path.find(u'\0') == path.npos &&
         path.size() < Sorvik::platform::kPathLimit &&
         MakeStdString(path).size() - 1 < Sorvik::platform::kPathLimit - 1;
}

bool IsLongFormFolderPath(std::string_view path) {
  return !path.empty() && path.front() == Sorvik::platform::kSeparator &&
         path.find('\0') == path.npos && path.size() < Sorvik::platform::kPathLimit &&
         (path.size() == 1 || path.back() != Sorvik::platform::kSeparator);
}

bool IsItemName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." &&
         name.find_first_of(std::string_view("/\0", 2)) == name.npos;
}

bool IsDirectory(const UTF16String& path) {
  return IsValidPath(path) &&
         Sorvik::platform::KindOf(MakeStdString(path)) == Sorvik::platform::FileKind::kDirectory;
}

bool ExistsOnDisk(const UTF16String& path) {
  return IsValidPath(path) && Sorvik::platform::KindOf(MakeStdString(path)).has_value();
}

UTF16String GetFullFilePart(std::u16string_view path) { return UTF16String(NamePart(path)); }

UTF16String GetFilePart(std::u16string_view path) {
  const auto name = NamePart(path);
  return UTF16String(name.substr(0, ExtensionStart(name)));
}

UTF16String GetExtensionPart(std::u16string_view path) {
  const auto name = NamePart(path);
  return UTF16String(name.substr(ExtensionStart(name)));
}

UTF16String GetDirectoryPart(std::u16string_view path) { return UTF16String(FolderPart(path)); }

UTF16String GetFullDirectoryPart(std::u16string_view path) { return UTF16String(FolderPart(path)); }

void SplitPath(std::u16string_view path, UTF16String& drive, UTF16String& folder,
               UTF16String& title, UTF16String* extension) {
  drive.clear();
  folder = GetDirectoryPart(path);
  title = GetFilePart(path);
  if (extension != nullptr) *extension = GetExtensionPart(path);
}

UTF16String MakePath(std::u16string_view drive, std::u16string_view folder,
                     std::u16string_view title, std::u16string_view extension) {
  UTF16String path(drive);
  path += folder;
  path += title;
  if (!extension.empty() && extension.front() != u'.') path += u'.';
  path += extension;
  return path;
}

UTF16String AddTrailingSlash(std::u16string_view path) {
  UTF16String result(path);
  if (result.empty() || result.back() != kSeparator) result += kSeparator;
  return result;
}

UTF16String RemoveTrailingSlash(std::u16string_view path) {
  if (path.size() > 1 && path.back() == kSeparator) path.remove_suffix(1);
  return UTF16String(path);
}

UTF16String CombinePaths(std::u16string_view folder, std::u16string_view name) {
  return AddTrailingSlash(folder).append(name);
}

UTF16String ToNormalizedPath(std::u16string_view path) {
  return Sorvik::platform::NormalizePath(path);
}

void FilterHiddenFiles(std::vector<UTF16String>& paths) {
  std::erase_if(paths, [](const UTF16String& path) { return NamePart(path).substr(0, 1) == u"."; });
}

UTF16String GetLeafDisplayStringFromPath(std::u16string_view path) {
  const UTF16String trimmed = RemoveTrailingSlash(path);
  return trimmed == u"/" ? trimmed : GetFullFilePart(trimmed);
}

namespace Win {

UTF16String StripUNC(std::u16string_view path) { return UTF16String(path); }

}  // namespace Win
}  // namespace Hestra::PathUtils
