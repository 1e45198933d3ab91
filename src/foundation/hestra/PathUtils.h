// SPDX-License-Identifier: MIT
// Operations on absolute POSIX paths in UTF-16. Lexical, except IsDirectory and ExistsOnDisk. Any
// thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"

namespace Hestra::PathUtils {

inline constexpr char16_t kSeparator = u'/';

// "/".
UTF16String GetPathSeparator();

// True if the path is absolute, has no NUL and is shorter than the system's limit.
bool IsValidPath(std::u16string_view path);
// True if the UTF-8 path is valid as above and doesn't end in a separator unless it is "/".
bool IsLongFormFolderPath(std::string_view path);

// True if `name` (UTF-8) is a valid name of an item in a folder, so that joining it with the folder
// can't lead to another folder.
bool IsItemName(std::string_view name);

// Symbolic links are followed. A dangling link doesn't exist.
bool IsDirectory(const UTF16String& path);
bool ExistsOnDisk(const UTF16String& path);

// For "/a/b.c": "b.c", "b", ".c", "/a/" and "/a/". The extension begins with the last dot of the
// name, unless that is its first character.
UTF16String GetFullFilePart(std::u16string_view path);
UTF16String GetFilePart(std::u16string_view path);
UTF16String GetExtensionPart(std::u16string_view path);
UTF16String GetDirectoryPart(std::u16string_view path);
UTF16String GetFullDirectoryPart(std::u16string_view path);

// The drive (always empty here), the folder with its separator, the title and the extension.
void SplitPath(std::u16string_view path, UTF16String& drive, UTF16String& folder,
               UTF16String& title, UTF16String* extension = nullptr);
// The inverse of SplitPath. `extension` may have a dot or not.
UTF16String MakePath(std::u16string_view drive, std::u16string_view folder,
                     std::u16string_view title, std::u16string_view extension);

UTF16String AddTrailingSlash(std::u16string_view path);
// Removes one trailing separator; "/" stays.
UTF16String RemoveTrailingSlash(std::u16string_view path);
// Joins `folder` and `name` with one separator.
UTF16String CombinePaths(std::u16string_view folder, std::u16string_view name);

// See platform::NormalizePath.
UTF16String ToNormalizedPath(std::u16string_view path);

// Removes the paths whose file name begins with a dot.
void FilterHiddenFiles(std::vector<UTF16String>& paths);

// The display name of a path: its last component, or "/" for the root.
UTF16String GetLeafDisplayStringFromPath(std::u16string_view path);

namespace Win {

// Returns the argument: POSIX paths have no UNC prefix.
UTF16String StripUNC(std::u16string_view path);

}  // namespace Win
}  // namespace Hestra::PathUtils
