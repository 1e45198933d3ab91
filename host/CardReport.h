// SPDX-License-Identifier: MIT
// The result of `sorvik check` for one structure, as text or JSON.
#pragma once

#include <string>

#include "Json.h"
#include "Output.h"
#include "SorvikProvider/cardtools/CardCheck.h"

namespace host {

struct CardReport {
  std::string path;
  std::string provider;  // its identification
  std::string against;   // the copy that the card was compared with; empty for none
  bool hashed = false;   // the contents were compared, too
  Sorvik::CardFindings result;
  bool isMedium = false;  // only the files of the medium that are in none of its cards
};

// Findings first, one per line, then all files if `withFiles`, and a summary at the end
// unless it is about the medium.
void WriteReportText(Output& output, const CardReport& report, bool withFiles);
// {"path","provider","complete","depth","against","clips","bytes","findings"} and, if `withFiles`,
// "files".
void WriteReportJson(JsonWriter& json, const CardReport& report, bool withFiles);

}  // namespace host
