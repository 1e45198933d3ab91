// SPDX-License-Identifier: MIT
// What the checks of all structures have in common: the files of the structure itself, and media
// that belong to no entry. Paths are UTF-8.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/frame/Provider.h"

namespace Sorvik {

// Adds the files of `folder` that have one of these names, ignoring case: copies of cards often
// spell them differently.
void AddStructureFiles(const std::string& folder, std::initializer_list<std::string_view> names,
                       StructureFindings& findings);

// Adds the visible files below `folder`, at any depth. The contents of hidden folders are hidden.
void AddStructureFilesBelow(const std::string& folder, StructureFindings& findings);

// Adds those of `files` that are among the paths of no entry which `provider` lists for `path`.
// Lists the entries only if there are files.
void AddUnreached(const Provider& provider, const std::string& path, const std::string& kind,
                  const std::vector<std::string>& files, StructureFindings& findings);

// The same for the visible media files below `folders`, detected by their extensions.
void AddUnreachedMedia(const Provider& provider, const std::string& path,
                       const std::vector<std::string>& folders, StructureFindings& findings);

}  // namespace Sorvik
