// SPDX-License-Identifier: MIT
// Flight data that DJI cameras write as subtitles next to a recording: date and position.
// Facts: subtitle files of several models; the texts in brackets differ between them.
#pragma once

#include "xmp/Reader.h"

namespace Sorvik::xmp {

extern const Reader kSubtitleTelemetryReader;

}  // namespace Sorvik::xmp
