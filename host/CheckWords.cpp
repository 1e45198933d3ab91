// SPDX-License-Identifier: MIT
#include "CheckWords.h"

#include <algorithm>
#include <string_view>

#include "Values.h"

namespace host {
namespace {

struct Role {
  std::string_view name;
  const char* key;
};

constexpr Role kRoles[] = {
    {"essence", "$$$/Sorvik/Check/Role/Essence=essence"},
    {"sound channel", "$$$/Sorvik/Check/Role/Sound=sound channel"},
    {"proxy", "$$$/Sorvik/Check/Role/Proxy=proxy"},
    {"clip record", "$$$/Sorvik/Check/Role/ClipRecord=clip record"},
    {"index", "$$$/Sorvik/Check/Role/Index=index"},
    {"playlist", "$$$/Sorvik/Check/Role/Playlist=playlist"},
    {"span", "$$$/Sorvik/Check/Role/Span=span"},
    {"segment", "$$$/Sorvik/Check/Role/Segment=segment"},
    {"frame", "$$$/Sorvik/Check/Role/Frame=frame"},
    {"thumbnail", "$$$/Sorvik/Check/Role/Thumbnail=thumbnail"},
    {"real-time metadata", "$$$/Sorvik/Check/Role/RealTimeMeta=real-time metadata"},
    {"voice memo", "$$$/Sorvik/Check/Role/VoiceMemo=voice memo"},
    {"sidecar", "$$$/Sorvik/Check/Role/Sidecar=sidecar"},
    {"journal", "$$$/Sorvik/Check/Role/Journal=journal"},
    {"folder", "$$$/Sorvik/Check/Role/Folder=folder"},
};

std::string RoleWord(const std::string& role) {
  const auto known = std::ranges::find(kRoles, std::string_view(role), &Role::name);
  return known == std::ranges::end(kRoles) ? role : Translated(known->key);
}

std::string KindWord(Sorvik::Finding::Kind kind) {
  static constexpr const char* kKeys[] = {
      "$$$/Sorvik/Check/Kind/Missing=missing",     "$$$/Sorvik/Check/Kind/Empty=empty",
      "$$$/Sorvik/Check/Kind/Truncated=truncated", "$$$/Sorvik/Check/Kind/Unreadable=unreadable",
      "$$$/Sorvik/Check/Kind/Orphaned=orphaned",   "$$$/Sorvik/Check/Kind/Unlisted=unlisted",
      "$$$/Sorvik/Check/Kind/Stale=stale",         "$$$/Sorvik/Check/Kind/Differs=differs"};
  return Translated(kKeys[static_cast<std::size_t>(kind)]);
}

void Replace(std::string& text, std::string_view placeholder, const std::string& value) {
  if (const auto at = text.find(placeholder); at != text.npos) {
    text.replace(at, placeholder.size(), value);
  }
}

}  // namespace

std::string SeverityWord(Sorvik::Finding::Severity severity) {
  static constexpr const char* kKeys[] = {"$$$/Sorvik/Check/Severity/Error=error",
                                          "$$$/Sorvik/Check/Severity/Warning=warning",
                                          "$$$/Sorvik/Check/Severity/Note=note"};
  return Translated(kKeys[static_cast<std::size_t>(severity)]);
}

std::string FaultText(const Sorvik::Finding& finding) {
  std::string text = Translated("$$$/Sorvik/Check/Fault={kind} {role}");
  Replace(text, "{kind}", KindWord(finding.kind));
  Replace(text, "{role}", RoleWord(finding.role));
  return text;
}

std::string FileRoleWord(Sorvik::CardFileRole role) {
  static constexpr const char* kKeys[] = {
      "$$$/Sorvik/Check/File/Clip=clip", "$$$/Sorvik/Check/File/Structure=structure",
      "$$$/Sorvik/Check/File/Foreign=foreign", "$$$/Sorvik/Check/File/Hidden=hidden"};
  return Translated(kKeys[static_cast<std::size_t>(role)]);
}

std::string VerdictWord(bool complete) {
  return complete ? Translated("$$$/Sorvik/Check/Complete=complete")
                  : Translated("$$$/Sorvik/Check/Incomplete=INCOMPLETE");
}

std::string CountText(std::size_t count, Counted what) {
  struct Words {
    const char* one;
    const char* many;
  };
  static constexpr Words kWords[] = {
      {"$$$/Sorvik/Check/Count/Clip=clip", "$$$/Sorvik/Check/Count/Clips=clips"},
      {"$$$/Sorvik/Check/Count/File=file", "$$$/Sorvik/Check/Count/Files=files"},
      {"$$$/Sorvik/Check/Count/OtherFile=file on other cards",
       "$$$/Sorvik/Check/Count/OtherFiles=files on other cards"},
      {"$$$/Sorvik/Check/Count/Error=error", "$$$/Sorvik/Check/Count/Errors=errors"},
      {"$$$/Sorvik/Check/Count/Warning=warning", "$$$/Sorvik/Check/Count/Warnings=warnings"},
      {"$$$/Sorvik/Check/Count/More=more", "$$$/Sorvik/Check/Count/More=more"},
  };
  const Words& words = kWords[static_cast<std::size_t>(what)];
  return std::to_string(count) + " " + Translated(count == 1 ? words.one : words.many);
}

}  // namespace host
