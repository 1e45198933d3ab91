// SPDX-License-Identifier: MIT
// Desktop entries that are links (Desktop Entry Specification, "Type=Link"). Any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Sorvik::platform {

// Returns the decoded absolute path of the link's "file:" URL. Returns nullopt if `text` is no
// desktop entry or no link, or if the URL has another host or scheme.
std::optional<std::string> LinkOfDesktopEntry(std::string_view text);

}  // namespace Sorvik::platform
