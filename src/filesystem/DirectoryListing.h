// SPDX-License-Identifier: MIT
// Entries of plain directories, made from whatever tells the facts of a folder. Any thread.
#pragma once

#include <string>

#include "SorvikProvider/frame/FieldModel.h"
#include "foundation/platform/FolderView.h"

namespace Sorvik {

class ProviderRequest;

// The entries of the folder at `path`, whose contents `view` tells; without hidden and system ones
// and without devices. Empty if `request` is aborted meanwhile.
ContentMap ListDirectory(const platform::FolderView& view, const std::string& path,
                         const FieldNameSet& fields, ProviderRequest* request);

// The one entry `key`, whatever its attributes; empty if it isn't there. ExtraPath stays empty.
ContentMap ListOneEntry(const platform::FolderView& view, const std::string& path,
                        const std::string& key, const FieldNameSet& fields);

// `path` and `key` with one separator between them.
std::string JoinPath(const std::string& path, std::string_view key);

}  // namespace Sorvik
