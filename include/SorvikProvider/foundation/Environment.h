// SPDX-License-Identifier: MIT
// Settings that a host may change. All have working defaults; set them before the first request.
// Look-ups on any thread, without a lock; each setter keeps the replaced settings in memory.
#pragma once

#include <set>
#include <string>
#include <string_view>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/UTF16String.h"

namespace tarnwick::filesupport::commondirs {

using Hestra::UTF16String;

// The folder of icons, pictures and catalogues, without a trailing separator. Defaults to the
// folder that belongs to the library's file, in a build tree or an installation.
SORVIK_EXPORT UTF16String ResourcesDir();
SORVIK_EXPORT void SetResourcesDir(std::u16string_view folder);

}  // namespace tarnwick::filesupport::commondirs

namespace Hestra::DirectoryRegistry {

// The folder registered under `name`, with a trailing separator; empty if there is none.
// "document.templates" is registered by default: the folder "templates" in ResourcesDir.
SORVIK_EXPORT UTF16String FindDirectory(std::string_view name);
SORVIK_EXPORT void RegisterDirectory(std::string_view name, std::u16string_view folder);

}  // namespace Hestra::DirectoryRegistry

namespace Fenwold::ImportableFileTypeUtils {

// A kind of file types. The library uses only this one.
inline constexpr int kVideoFileTypes = 6;

// Gets the extensions that the host can import, in upper case without the dot. The default is a
// list of common video files, including "DV".
SORVIK_EXPORT void GetImportableFileExtensions(int kind, std::set<Hestra::UTF16String>& extensions);
SORVIK_EXPORT void SetImportableFileExtensions(int kind, std::set<Hestra::UTF16String> extensions);

}  // namespace Fenwold::ImportableFileTypeUtils
