// SPDX-License-Identifier: MIT
// The files among the paths of entries that exist. Entries can name files that are missing,
// folders, and files on a network share that a link leads to.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "SorvikProvider/foundation/Export.h"

namespace Sorvik {

struct EntryFile {
  std::string path;
  std::uint64_t bytes = 0;
};

struct EntryFiles {
  std::vector<EntryFile> files;
  // Paths on a share that doesn't answer: whether the files exist is unknown.
  std::vector<std::string> unreachable;
};

// Returns the regular files among `paths` (full paths in UTF-8), in that order and each once.
// `path` is the folder that was listed: a share other than its own is asked once, and after 100 ms
// without an answer its files are unreachable. Opens no file. `isStopped`, if set, is called before
// each file; once it returns true the result is incomplete. Any thread.
SORVIK_EXPORT EntryFiles FindEntryFiles(const std::string& path,
                                        const std::vector<std::string>& paths,
                                        const std::function<bool()>& isStopped = {});

}  // namespace Sorvik
