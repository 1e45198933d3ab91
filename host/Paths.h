// SPDX-License-Identifier: MIT
// Paths from the command line, and the program's own file system queries.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <string_view>

namespace host {

// Converts a PATH argument for the library: "volumes:" and the other roots of the browse tree stay
// unchanged; any other path becomes absolute, lexically normalised and without a trailing slash.
// Throws Failure for an empty argument.
std::string ResolvePath(std::string_view argument);

// Returns the text after the last slash, or all of `path` if that is empty or there is no slash.
std::string FileName(std::string_view path);

// Returns `path` relative to `folder`, or unchanged if it isn't below it.
std::string RelativePath(const std::string& path, const std::string& folder);

// These follow links.
bool IsRegularFile(const std::string& path);
bool IsFolder(const std::string& path);
bool Exists(const std::string& path);
// True if both paths refer to one file.
bool IsSameFile(const std::string& one, const std::string& other);

// Returns the error message for a path that gave no result, without the path: "No such file or
// directory", "dangling symbolic link", "cannot read (reason)", or `fallback`. Accesses the disk.
std::string DescribePathError(const std::string& path, const std::string& fallback);

// The same for a path that no provider claims.
std::string DescribeUnclaimedPath(const std::string& path);

// Returns the system's error message if the folder `path` can't be listed; empty if it can, or if
// `path` isn't a folder.
std::string ListingError(const std::string& path);

}  // namespace host
