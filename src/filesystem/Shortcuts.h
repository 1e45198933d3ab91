// SPDX-License-Identifier: MIT
// Shortcuts: ".desktop" files of type Link and Windows ".lnk" files. Symbolic links don't count:
// the kernel follows them. Any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Sorvik {

// True if the extension is that of a shortcut. Files with other extensions are never opened.
bool HasShortcutName(std::string_view name) noexcept;

// Returns the normalized path of the target of the shortcut `name` in `folder`. Returns nullopt if
// the file is no shortcut or its target is missing on this machine; it is then listed as a file.
// A target on a share that doesn't answer is assumed to exist.
std::optional<std::string> ShortcutTarget(const std::string& folder, const std::string& name);

}  // namespace Sorvik
