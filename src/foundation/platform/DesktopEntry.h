// SPDX-License-Identifier: MIT
// Desktop entries that are links (Desktop Entry Specification, "Type=Link"). Any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Sorvik::platform {

// The path that the link's "file:" URL stands for, decoded and absolute. Nothing if `text` is no
// desktop entry, no link, or leads to another host or scheme.
std::optional<std::string> LinkOfDesktopEntry(std::string_view text);

}  // namespace Sorvik::platform
