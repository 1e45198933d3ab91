// SPDX-License-Identifier: MIT
// Finds the entry that a file belongs to.
#pragma once

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik {

// Finds the entry whose Path or ExtraPath contains the file at `path`. Searches up to four parent
// folders, each with its best provider first. Sets `entryKey`, `folderPath` and `providerId` to
// those of the entry, and returns the entry's Name, Path and ExtraPath. For a file that no
// structure claims, the result is that of the directory provider. Blocks while providers list. Call
// it only between ProviderHost::Initialize and the last Shutdown, on any thread. Exceptions of
// providers propagate to the caller.
SORVIK_EXPORT FieldValueMap GetRelatedFiles(const UTF16String& path, UTF16String& entryKey,
                                            UTF16String& folderPath, UTF16String& providerId);

// Same, but searches and returns only Path, without ExtraPath. `providerId` is unchanged if no
// structure claims the file.
SORVIK_EXPORT FieldValueMap GetRelatedFilesWithoutExtraFiles(const UTF16String& path,
                                                             UTF16String& entryKey,
                                                             UTF16String& folderPath,
                                                             UTF16String& providerId);

}  // namespace Sorvik
