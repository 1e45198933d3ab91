// SPDX-License-Identifier: MIT
// Groups loose files by their names, for providers that implement FileGrouper.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "SorvikProvider/cardtools/FileGroup.h"

namespace Sorvik {

// The clip that a file belongs to, derived from its name.
struct LooseName {
  std::string_view clip;    // the part of the name that all files of the clip have
  bool isOriginal = false;  // the essence, or a part of it
  bool isProxy = false;
  bool isTypical = false;  // no other structure has such names
  std::uint32_t part = 0;  // the order of originals
};

// Returns nullopt if the name isn't one of the structure.
using LooseNameParser = std::optional<LooseName> (*)(std::string_view name);

// The group of the file `name` in `folder`: the visible files with the same clip, compared ignoring
// case. Returns nullopt if it has no original, or no file with a typical name.
std::optional<FileGroup> GroupLooseFiles(const std::string& folder, const std::string& name,
                                         LooseNameParser parse);

}  // namespace Sorvik
