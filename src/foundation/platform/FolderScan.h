// SPDX-License-Identifier: MIT
// A folder's names as the kernel lists them: the cheapest way to look for something in many
// folders. No link is followed and no file is looked at. Any thread.
#pragma once

#include <dirent.h>

#include <functional>
#include <string>
#include <string_view>

namespace Sorvik::platform {

enum class ScannedType {
  kFolder,
  kLink,   // to anything
  kOther,  // a file, or anything else
};

// Called for each name except "." and "..", in the file system's order; false ends the scan. The
// name is valid during the call.
using NameVisitor = std::function<bool(std::string_view name, ScannedType type)>;

// Called for each entry except "." and "..", in the file system's order; false ends the reading.
using EntryVisitor = std::function<bool(const dirent64& entry)>;

// Reads the entries of an open folder with getdents64 only; opendir would add three system calls.
// Returns false if the folder can't be read to its end.
bool ReadEntries(int folder, const EntryVisitor& visit);

// Returns false if `path` can't be opened as a folder, or not read to its end. A link at the end of
// `path` is followed.
bool ScanFolder(const std::string& path, const NameVisitor& visit);

// `path` without links, "." and ".."; empty if it doesn't exist or can't be resolved.
std::string ResolveLinks(const std::string& path);

}  // namespace Sorvik::platform
