// SPDX-License-Identifier: MIT
// The files that belong together in a folder of loose clips, such as one that was filled from
// several cards. Names decide, by the same tables as those of the card providers.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "SorvikProvider/foundation/Export.h"

namespace Sorvik {

struct FileGroup {
  std::string name;                 // of the recording: the stem of its first file
  std::vector<std::string> parts;   // the originals in order; empty if only other files are left
  std::string proxy;                // empty if there is none
  std::vector<std::string> others;  // proxies, thumbnails, records, sidecars and further originals
  std::string identification;       // of the provider whose names these are

  // Parts, then others.
  std::vector<std::string> AllFiles() const {
    std::vector<std::string> files = parts;
    files.insert(files.end(), others.begin(), others.end());
    return files;
  }
};

// Returns the group of the file at `path` (full, in UTF-8) among the files of its folder, itself
// included. Returns nullopt if the file doesn't exist in its folder, or if no provider recognises
// its name. For folders that no provider supports: on a card, the entries define what belongs
// together.
// Lists the folder and opens no file. Any thread, between ProviderHost::Initialize and the last
// Shutdown.
SORVIK_EXPORT std::optional<FileGroup> GetFileGroup(const std::string& path);

}  // namespace Sorvik
