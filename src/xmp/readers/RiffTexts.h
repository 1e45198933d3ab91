// SPDX-License-Identifier: MIT
// Texts of RIFF files: the lists INFO and Tdat. Facts: Multimedia Programming Interface and Data
// Specifications 1.0, chapter 2; ISO 16684-3, tables 22 to 24.
#pragma once

#include "xmp/readers/RiffChunks.h"

namespace Sorvik::xmp {

void SetInfoTexts(FileWindow& file, const RiffChunk& list, TXMPMeta& meta);
// Timecodes and tape names.
void SetTapeTexts(FileWindow& file, const RiffChunk& list, TXMPMeta& meta);

// xmp:CreateDate from any of the forms in use: "Mon Mar 10 15:04:43 2003", "2003:03:10 15:04:43",
// "2003/03/10/ 15:04", "2003-03-10".
void SetRiffDate(std::string_view text, TXMPMeta& meta);

}  // namespace Sorvik::xmp
