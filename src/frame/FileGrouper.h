// SPDX-License-Identifier: MIT
// What a provider implements, as a second base, if the names of its files show what belongs
// together outside of a card.
#pragma once

#include <optional>
#include <string>

#include "SorvikProvider/cardtools/FileGroup.h"

namespace Sorvik {

class FileGrouper {
 public:
  virtual ~FileGrouper() = default;
  // Returns the group of the file `name` in `folder`; nullopt if the name isn't one of the
  // structure, or if no file of the folder belongs to it that others wouldn't find. The caller sets
  // the identification. Runs in a call scope of the caller. Any thread.
  virtual std::optional<FileGroup> GroupOf(const std::string& folder,
                                           const std::string& name) const = 0;
};

}  // namespace Sorvik
