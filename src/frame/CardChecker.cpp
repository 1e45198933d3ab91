// SPDX-License-Identifier: MIT
#include "frame/CardChecker.h"

#include <algorithm>

namespace Sorvik {

void CardDescription::Report(Finding::Kind kind, std::string role, std::string path,
                             std::vector<std::string> entryKeys, std::string detail) {
  const Finding::Severity severity = SeverityOf(kind, role);
  Report(
      {kind, severity, std::move(role), std::move(path), std::move(entryKeys), std::move(detail)});
}

Finding::Severity SeverityOf(Finding::Kind kind, std::string_view role) {
  static constexpr std::string_view kOptionalRoles[] = {
      card_role::kThumbnail, card_role::kRealTimeMeta, card_role::kJournal};
  const bool optional = std::ranges::find(kOptionalRoles, role) != std::end(kOptionalRoles);
  const bool warning = kind == Finding::Kind::kUnlisted || optional;
  return warning ? Finding::Severity::kWarning : Finding::Severity::kError;
}

}  // namespace Sorvik
