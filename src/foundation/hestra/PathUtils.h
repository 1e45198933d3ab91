// SPDX-License-Identifier: MIT
// Paths as texts, and the two questions to the disk that go with them. Paths are absolute POSIX
// paths in UTF-16. Any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"

namespace Hestra::PathUtils {

inline constexpr char16_t kSeparator = u'/';

// "/" as a string, for joining.
UTF16String GetPathSeparator();

// Absolute, without NUL, and short enough for the system.
bool IsValidPath(std::u16string_view path);
// The narrower gate for a folder: as above, and not ending in a separator unless it is "/" itself.
// Taken on the bytes of the path as it came over the interface.
bool IsLongFormFolderPath(std::string_view path);

// Whether `name` (UTF-8) can be the name of an item in a folder: the key of an entry that is joined
// with a folder must not lead to what lies above or below it.
bool IsItemName(std::string_view name);

// A link counts as what it leads to; a dangling one as nothing.
bool IsDirectory(const UTF16String& path);
bool ExistsOnDisk(const UTF16String& path);

// For "/a/b.c": "b.c", "b", ".c", "/a/" and "/a/". The extension begins at the last dot of the name
// and holds it; a name without a dot has none, and a name's leading dot begins none.
UTF16String GetFullFilePart(std::u16string_view path);
UTF16String GetFilePart(std::u16string_view path);
UTF16String GetExtensionPart(std::u16string_view path);
UTF16String GetDirectoryPart(std::u16string_view path);
UTF16String GetFullDirectoryPart(std::u16string_view path);

// The drive (always empty here), the folder with its separator, the title and the extension.
void SplitPath(std::u16string_view path, UTF16String& drive, UTF16String& folder,
               UTF16String& title, UTF16String* extension = nullptr);
// The reverse; `extension` may come with or without its dot.
UTF16String MakePath(std::u16string_view drive, std::u16string_view folder,
                     std::u16string_view title, std::u16string_view extension);

UTF16String AddTrailingSlash(std::u16string_view path);
// Takes one trailing separator away; "/" stays.
UTF16String RemoveTrailingSlash(std::u16string_view path);
// `folder` with a separator and `name` behind it.
UTF16String CombinePaths(std::u16string_view folder, std::u16string_view name);

// By text alone: doubled separators and "." go, ".." takes its parent with it, a trailing separator
// goes unless the path is "/". Never touches the disk or follows links.
UTF16String ToNormalizedPath(std::u16string_view path);

// Drops the paths whose file name begins with a dot.
void FilterHiddenFiles(std::vector<UTF16String>& paths);

// The name that a user sees for the path: its last part, or "/" for the root.
UTF16String GetLeafDisplayStringFromPath(std::u16string_view path);

namespace Win {

// Paths have no prefix to take away here: gives the argument back.
UTF16String StripUNC(std::u16string_view path);

}  // namespace Win
}  // namespace Hestra::PathUtils
