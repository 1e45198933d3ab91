// SPDX-License-Identifier: MIT
// Shortcuts: ".desktop" files that are links and Windows' ".lnk" files. Symbolic links are none;
// the system follows them by itself. Any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Sorvik {

// True if a file of this name may be a shortcut. No other is ever opened to find out.
bool HasShortcutName(std::string_view name) noexcept;

// The path that the shortcut `name` in `folder` leads to, in normal form. Nothing if the file is
// no shortcut or its target can't be found on this machine; the file is then an ordinary one.
// A target on a network mount is believed without a look at it, unless `folder` lies there too.
std::optional<std::string> ShortcutTarget(const std::string& folder, const std::string& name);

}  // namespace Sorvik
