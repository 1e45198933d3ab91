// SPDX-License-Identifier: MIT
// The listings of CardFolder as full paths in UTF-16, in order of code units. Within a call scope
// each folder is read once. Returns an empty list if a folder can't be read. Devices, FIFOs and
// sockets are omitted. Any thread.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"
#include "foundation/platform/FileSystem.h"

namespace Hestra::Directory {

// The maximum depth of a recursive listing. It doesn't follow links to folders.
inline constexpr int kMaxListingDepth = 64;

bool IsDirectory(const UTF16String& path);

// The files of a folder; with an `extension` (including its dot) only those with it, compared
// case-insensitively. `recursive` adds those of subfolders, depth first.
std::vector<UTF16String> GetContainedFilePaths(const UTF16String& folder,
                                               std::u16string_view extension = {},
                                               bool recursive = false);
// Files and folders in one list.
std::vector<UTF16String> GetContainedPaths(const UTF16String& folder);
void GetContainedFileAndDirectoryPaths(const UTF16String& folder, std::vector<UTF16String>& files,
                                       std::vector<UTF16String>& directories);

// The items of a folder without conversion to paths; nullptr if it can't be read. `folder` is
// UTF-8.
std::shared_ptr<const std::vector<Sorvik::platform::FolderItem>> GetItems(
    const std::string& folder);

// True if the current call scope has already listed the folder. `folder` is UTF-8.
bool IsListed(const std::string& folder);

}  // namespace Hestra::Directory
