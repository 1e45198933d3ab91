// SPDX-License-Identifier: MIT
#include "foundation/tarnwick/FileSupport.h"

#include "foundation/hestra/PathUtils.h"

namespace tarnwick::filesupport {

namespace PathUtils = Hestra::PathUtils;

Dir File::Parent() const { return Dir(PathUtils::GetDirectoryPart(path_)); }

UTF16String File::GetName() const { return PathUtils::GetFullFilePart(path_); }

UTF16String File::GetTitle() const { return PathUtils::GetFilePart(path_); }

UTF16String File::GetExtension(bool lowerCase) const {
  const UTF16String extension = PathUtils::GetExtensionPart(path_);
  return lowerCase ? utility::LowerCase(extension) : extension;
}

bool File::Exists() const { return PathUtils::ExistsOnDisk(path_); }

Dir::Dir(UTF16String path) : path_(PathUtils::RemoveTrailingSlash(path)) {}

UTF16String Dir::GetName() const { return PathUtils::GetFullFilePart(path_); }

bool Dir::Exists() const { return PathUtils::IsDirectory(path_); }

bool Dir::IsTopLevelDir() const { return path_ == u"/"; }

Dir Dir::Parent() const {
  return IsTopLevelDir() ? Dir(UTF16String()) : Dir(PathUtils::GetDirectoryPart(path_));
}

int CompareFileNames(std::u16string_view a, std::u16string_view b) {
  return utility::FoldCase(a).compare(utility::FoldCase(b));
}

}  // namespace tarnwick::filesupport
