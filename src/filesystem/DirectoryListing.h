// SPDX-License-Identifier: MIT
// Builds the entries of plain directories from a FolderView. Any thread.
#pragma once

#include <string>

#include "SorvikProvider/frame/FieldModel.h"
#include "foundation/platform/FolderView.h"

namespace Sorvik {

class ProviderRequest;

// Returns the entries of the folder at `path`, which `view` reads, without hidden files, system
// files and devices. Returns an empty map if `request` is aborted.
ContentMap ListDirectory(const platform::FolderView& view, const std::string& path,
                         const FieldNameSet& fields, ProviderRequest* request);

// Returns the entry `key`, whatever its attributes; an empty map if it is missing. Leaves ExtraPath
// empty.
ContentMap ListOneEntry(const platform::FolderView& view, const std::string& path,
                        const std::string& key, const FieldNameSet& fields);

}  // namespace Sorvik
