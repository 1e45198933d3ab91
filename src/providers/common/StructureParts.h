// SPDX-License-Identifier: MIT
// What the checks of all structures share: the card's own files, and media that no entry reaches.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/foundation/UTF16String.h"
#include "SorvikProvider/frame/Provider.h"

namespace Sorvik {

// Adds the files of `folder` with one of these names, regardless of case, for copies of cards often
// have another spelling.
void AddStructureFiles(const UTF16String& folder, std::initializer_list<std::u16string_view> names,
                       StructureFindings& findings);

// Adds the visible files below `folder`, at any depth; what lies in a hidden folder isn't visible.
void AddStructureFilesBelow(const UTF16String& folder, StructureFindings& findings);

// Adds those of `files` that no entry which `provider` lists for `path` has among its paths. Lists
// only if there are any files.
void AddUnreached(const Provider& provider, const std::string& path, const std::string& kind,
                  const std::vector<std::string>& files, StructureFindings& findings);

// The same for the visible media files below `folders`, told by their extensions.
void AddUnreachedMedia(const Provider& provider, const std::string& path,
                       const std::vector<UTF16String>& folders, StructureFindings& findings);

}  // namespace Sorvik
