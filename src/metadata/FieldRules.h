// SPDX-License-Identifier: MIT
// Conversion rules: functions that turn the XMP property of a field into its display text.
#pragma once

#include <optional>
#include <string>

#include "SorvikProvider/metadata/XMPSupport.h"
#include "xmp/XMPMeta.h"

namespace Sorvik::XMPSupport {

// The display text of a field; nullopt if the field's key is omitted.
using Text = std::optional<std::string>;

// Rules never throw for bad data: a property that can't be read gives an empty text, unless stated
// otherwise.
namespace FieldRules {

// The value of a simple property.
Text Unmodified(const xmp::SXMPMeta& meta, const XMPCrossReference& row);
// Always nullopt: fields whose values come from providers.
Text SetByProviders(const xmp::SXMPMeta& meta, const XMPCrossReference& row);

// dc:title in the user's language. A title that isn't a language alternative is read as a simple
// property. Returns nullopt if it can't be read.
Text Title(const xmp::SXMPMeta& meta, const XMPCrossReference& row);
// The first item of an array.
Text FirstItem(const xmp::SXMPMeta& meta, const XMPCrossReference& row);
// A language alternative in the user's language.
Text AlternativeText(const xmp::SXMPMeta& meta, const XMPCrossReference& row);
// The items of an array, separated by semicolons.
Text JoinedList(const xmp::SXMPMeta& meta, const XMPCrossReference& row);
// Path and type of a project reference.
Text Project(const xmp::SXMPMeta& meta, const XMPCrossReference& row);
// "1920 x 1080 pixel"; empty if width, height or unit is missing.
Text FrameSize(const xmp::SXMPMeta& meta, const XMPCrossReference& row);
// The quotient of "10/11" or "10:11", both read as 32-bit integers. Other texts are returned with
// the first colon replaced by a slash.
Text AspectRatio(const xmp::SXMPMeta& meta, const XMPCrossReference& row);
// "Yes" or "No" in the user's language; empty unless the value is "True" or "False".
Text Boolean(const xmp::SXMPMeta& meta, const XMPCrossReference& row);
// "Yes" or "No" in the user's language.
std::string BooleanText(bool value);
// A fraction as a decimal number with four decimals; other values unmodified. Calculated in single
// precision, which is the precision of such values.
Text Ratio(const xmp::SXMPMeta& meta, const XMPCrossReference& row);
// Same as Ratio, with the unit.
Text DataRate(const xmp::SXMPMeta& meta, const XMPCrossReference& row);
Text StartTimecode(const xmp::SXMPMeta& meta, const XMPCrossReference& row);

// The following read xmpDM:duration, whatever the row.
// The duration as a timecode.
Text Duration(const xmp::SXMPMeta& meta, const XMPCrossReference& row);
// Its time scale. Returns nullopt if the duration can't be read.
Text Scale(const xmp::SXMPMeta& meta, const XMPCrossReference& row);
// "1234 @ 1001/30000".
Text FrameCount(const xmp::SXMPMeta& meta, const XMPCrossReference& row);

}  // namespace FieldRules
}  // namespace Sorvik::XMPSupport
