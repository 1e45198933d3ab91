// SPDX-License-Identifier: MIT
// Paths from the command line, and looks at the disk that a host makes on its own.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <string_view>

namespace host {

// The path that the library is given for an argument: the roots of the browse tree as they stand,
// anything else absolute, normalised by its text and without a trailing slash.
std::string PlacePath(std::string_view argument);

// What stands behind the last slash; the whole text where there is none, or nothing behind it.
std::string FileName(std::string_view path);

// What `path` is, links followed.
bool IsRegularFile(const std::string& path);
bool IsFolder(const std::string& path);
bool Exists(const std::string& path);
// Two paths to one file.
bool IsSameFile(const std::string& one, const std::string& other);

// Why nothing can be had from `path`, as far as a look at the disk tells; `otherwise` and the path
// if that doesn't.
std::string WhyNothing(const std::string& path, const std::string& otherwise);

// The same for a path that no provider claims.
std::string WhyNoPlace(const std::string& path);

// What the system says where the folder `path` can't be listed; empty if it can, or isn't one.
std::string WhyUnreadable(const std::string& path);

// Calls `visit` with every regular file below `folder`, names in byte order. Links to folders are
// not followed and nothing deeper than 64 folders is visited. Ends early once `stop` is set.
void WalkFiles(const std::string& folder, const std::atomic<bool>& stop,
               const std::function<void(const std::string&)>& visit);

}  // namespace host
