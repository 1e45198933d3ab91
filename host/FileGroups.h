// SPDX-License-Identifier: MIT
// Loose clips in plain folders: the files that belong together by their names.
#pragma once

#include <string>

#include "SorvikProvider/frame/FieldModel.h"

namespace host {

// Sets Name, Path, ProxyPath and ExtraPath in `fields` to those of the group of `file`. Extra paths
// that are set already stay. Returns false, and changes nothing, if no other file belongs to it.
// Blocks while the folder is listed.
bool AddFileGroup(const std::string& file, Sorvik::FieldValueMap& fields);

}  // namespace host
