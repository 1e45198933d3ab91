// SPDX-License-Identifier: MIT
// The words of `sorvik check` in the language of the user. JSON has the English ones.
#pragma once

#include <cstddef>
#include <string>

#include "SorvikProvider/cardtools/CardCheck.h"

namespace host {

std::string SeverityWord(Sorvik::Finding::Severity severity);
// "missing sound channel"
std::string FaultText(const Sorvik::Finding& finding);
std::string FileRoleWord(Sorvik::CardFileRole role);
// "complete" or "INCOMPLETE"
std::string VerdictWord(bool complete);

enum class Counted { kClips, kFiles, kFilesOnOtherCards, kErrors, kWarnings, kMore };
// "1 clip", "2 clips"
std::string CountText(std::size_t count, Counted what);

}  // namespace host
