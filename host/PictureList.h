// SPDX-License-Identifier: MIT
// A listing on the terminal with a picture next to each entry.
#pragma once

#include <string>

#include "Commands.h"

namespace host {

// `protocol` is kKitty or kSixel. Requests all pictures at once and writes the entries in order.
void WritePictureList(Context& context, const Sorvik::ProviderWrapper& provider,
                      const std::string& path, const Sorvik::FieldNameList& fields,
                      const Sorvik::ContentMap& content, PictureProtocol protocol);

}  // namespace host
