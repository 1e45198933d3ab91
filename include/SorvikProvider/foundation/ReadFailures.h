// SPDX-License-Identifier: MIT
// Reports of files and folders that exist but can't be read. A provider answers from what it can
// read, and an index, clip record or folder that it can't read counts as missing; this is the only
// report of it apart from CheckCard.
#pragma once

#include <functional>
#include <string>

#include "SorvikProvider/foundation/Export.h"

namespace Sorvik {

struct ReadFailure {
  std::string path;    // UTF-8
  std::string reason;  // in English: "Permission denied", "not well-formed XML"
};

// Called on the thread that reads, at the same time on several threads, once or more per file. Must
// not throw, and must not call a provider.
using ReadFailureHandler = std::function<void(const ReadFailure&)>;

// Sets the handler for all providers; an empty function removes it. A read that has started may
// still call the previous handler. Any thread.
SORVIK_EXPORT void SetReadFailureHandler(ReadFailureHandler handler);

}  // namespace Sorvik
