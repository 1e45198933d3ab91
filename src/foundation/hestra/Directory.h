// SPDX-License-Identifier: MIT
// The contents of folders as lists of full paths, in order of 16-bit code units. A folder is read
// once within a call scope, however many lists are made of it. What can't be read gives an empty
// list. Items that are no regular file and no folder are left out: they are never opened. Any
// thread.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"
#include "foundation/platform/FileSystem.h"

namespace Hestra::Directory {

// How deep a recursive listing goes below its folder; links to folders are never followed there.
inline constexpr int kMaxListingDepth = 64;

bool IsDirectory(const UTF16String& path);

// The files of a folder; with an `extension` (its dot included) only those that have it, compared
// by FoldCase. `recursive` adds those of the folders below, depth first.
std::vector<UTF16String> GetContainedFilePaths(const UTF16String& folder,
                                               std::u16string_view extension = {},
                                               bool recursive = false);
// Files and folders in one list.
std::vector<UTF16String> GetContainedPaths(const UTF16String& folder);
void GetContainedFileAndDirectoryPaths(const UTF16String& folder, std::vector<UTF16String>& files,
                                       std::vector<UTF16String>& directories);

// The raw items, shared with the call scope; null if the folder can't be read. For callers that
// need no paths. `folder` is in UTF-8.
std::shared_ptr<const std::vector<Sorvik::platform::FolderItem>> GetItems(
    const std::string& folder);

// True if the current call scope has listed that folder already, so that asking for its items costs
// nothing. `folder` as for GetItems.
bool IsListed(const std::string& folder);

}  // namespace Hestra::Directory
