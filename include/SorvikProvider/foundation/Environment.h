// SPDX-License-Identifier: MIT
// What a host may tell the library about its surroundings. All of it has working defaults; set it
// before the first request. Look-ups may happen on any thread.
#pragma once

#include <set>
#include <string>
#include <string_view>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/UTF16String.h"

namespace tarnwick::filesupport::commondirs {

using Hestra::UTF16String;

// The folder of icons, pictures and catalogues, without a trailing separator. Found from the
// library's own place on disk, in a build tree as when installed, unless a host set another.
SORVIK_EXPORT UTF16String ResourcesDir();
SORVIK_EXPORT void SetResourcesDir(std::u16string_view folder);

}  // namespace tarnwick::filesupport::commondirs

namespace Hestra::DirectoryRegistry {

// The folder registered under `name`, with a trailing separator; empty if there is none.
// "document.templates" is registered from the start: the templates folder of ResourcesDir.
SORVIK_EXPORT UTF16String FindDirectory(std::string_view name);
SORVIK_EXPORT void RegisterDirectory(std::string_view name, std::u16string_view folder);

}  // namespace Hestra::DirectoryRegistry

namespace Fenwold::ImportableFileTypeUtils {

// Which set of file types is meant; video is the only one that the library asks for.
inline constexpr int kVideoFileTypes = 6;

// Gives the extensions, without dot and in capitals, that the host can import. Until a host sets
// its own they are the usual ones of the field, "DV" among them.
SORVIK_EXPORT void GetImportableFileExtensions(int kind, std::set<Hestra::UTF16String>& extensions);
SORVIK_EXPORT void SetImportableFileExtensions(int kind, std::set<Hestra::UTF16String> extensions);

}  // namespace Fenwold::ImportableFileTypeUtils
