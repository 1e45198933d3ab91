// SPDX-License-Identifier: MIT
// The metadata of Blackmagic RAW recordings: named values in the file, and in the sidecar with the
// extension ".sidecar", whose values take precedence as long as it exists.
//
// The names are known from a dump of the metadata of one camera. In the file they are keys of the
// QuickTime metadata box (QuickTime File Format, "Metadata"). No published description defines how
// a sidecar is structured: values are found by the same names, at any depth of its JSON objects.
#pragma once

#include <string>
#include <string_view>

#include "xmp/readers/IsoBoxes.h"

namespace Sorvik::xmp {

// True for files with the extension .braw or .braw2, ignoring case.
bool IsBrawPath(std::string_view path);

// Stores a named value as XMP property. A name without XMP property becomes a property of the
// namespace kNsBlackmagicRAW if it is short. Ignores names with other characters than lower-case
// letters, digits and "_".
void SetBrawValue(std::string_view name, const std::string& text, TXMPMeta& meta);

// Stores the named values of a 'meta' box, or of a 'udta' box that contains one.
void SetBrawItems(FileWindow& file, const IsoBox& box, TXMPMeta& meta);

// Stores the named values of a sidecar. Returns false if the text contains none; those in front of
// a fault in the JSON are kept.
bool SetBrawSidecar(std::string_view json, TXMPMeta& meta);
// The values of the sidecar next to the recording at `path`; empty if there is none. At most one
// open and one read.
TXMPMeta ReadSidecarOfBraw(const std::string& path);

// Adds the values of a recording to those of its movie. They take precedence, except for dates.
void AddBrawFacts(TXMPMeta&& braw, TXMPMeta& meta);

}  // namespace Sorvik::xmp
