// SPDX-License-Identifier: MIT
// Dates and times in the form of XML Schema and XMP. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace Sorvik::foundation {

// The seconds since 1970, UTC, of "2022-09-25T11:57:59+10:00". Decimals of seconds are dropped;
// without a zone the time counts as UTC. Returns nullopt if `text` has another form.
std::optional<std::int64_t> SecondsSince1970(std::string_view text);

}  // namespace Sorvik::foundation
