// SPDX-License-Identifier: MIT
// Texts in XML, in URLs and in CSV. Any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/foundation/Export.h"

namespace Hestra {

// The text in an element or attribute of XML or HTML. A control character and a byte that isn't
// part of valid UTF-8 become U+FFFD.
SORVIK_EXPORT std::string XmlText(std::string_view text);

// A path in a URL, percent-encoded (RFC 3986).
SORVIK_EXPORT std::string UrlPath(std::string_view path);
// "file:///media/CARD/A%20001.MXF" for an absolute path.
SORVIK_EXPORT std::string FileUrl(std::string_view path);

// One line of CSV (RFC 4180), without its line end.
SORVIK_EXPORT std::string CsvLine(const std::vector<std::string>& row);

}  // namespace Hestra
