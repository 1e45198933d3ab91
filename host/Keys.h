// SPDX-License-Identifier: MIT
// Keys of entries as a user sees and types them.
#pragma once

#include <map>
#include <string>

#include "Commands.h"

namespace host {

// Maps each key of a listing of `path` to its short form: the file name of a key that is a path
// below `path`, or the relative path if another entry has the same file name; any other key
// unchanged. FindKey accepts every short form.
std::map<std::string, std::string> ShortKeys(const std::string& path,
                                             const Sorvik::ContentMap& content);

// Returns the key of the entry that `typed` refers to. The key of an entry with an existing file is
// returned unchanged.
// Otherwise the listing is searched for a short key, a file name, a path relative to `path` or
// absolute, and a name, in this order. Throws Failure if nothing matches, and with the candidates
// if several entries match.
std::string FindKey(Context& context, const Sorvik::ProviderWrapper& provider,
                    const std::string& path, const std::string& typed);

}  // namespace host
