// SPDX-License-Identifier: MIT
// From a file to the entry that owns it.
#pragma once

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik {

// Finds the entry whose Path or ExtraPath holds the file at `path`, asking the structures of up to
// four folders above it, best provider first. Gives the entry's key, its folder and its provider's
// identification, and returns the entry's Name, Path and ExtraPath. A file that no structure claims
// is answered as a directory would. Blocks while providers list; between ProviderHost::Initialize
// and the last Shutdown only. What a provider throws goes to the caller.
SORVIK_EXPORT FieldValueMap GetRelatedFiles(const UTF16String& path, UTF16String& entryKey,
                                            UTF16String& folderPath, UTF16String& providerId);

// The same by Path alone, without ExtraPath. `providerId` is left as it was when no structure
// claims the file.
SORVIK_EXPORT FieldValueMap GetRelatedFilesWithoutExtraFiles(const UTF16String& path,
                                                             UTF16String& entryKey,
                                                             UTF16String& folderPath,
                                                             UTF16String& providerId);

}  // namespace Sorvik
