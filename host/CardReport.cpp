// SPDX-License-Identifier: MIT
#include "CardReport.h"

#include <algorithm>
#include <cstdlib>

#include "CheckWords.h"
#include "Paths.h"
#include "Text.h"
#include "Values.h"

namespace host {
namespace {

using Sorvik::CardFile;
using Sorvik::CardFindings;
using Sorvik::Finding;

using Severity = Finding::Severity;

std::size_t CountOf(const CardFindings& result, Severity severity) {
  return static_cast<std::size_t>(
      std::ranges::count(result.findings, severity, &Finding::severity));
}

// Colours follow the usual ones of compilers. NO_COLOR turns them off.
std::string Coloured(const Output& output, std::string_view text, const char* code) {
  const char* off = std::getenv("NO_COLOR");
  if (!output.IsTerminal() || (off != nullptr && *off != '\0')) return std::string(text);
  return "\x1b[" + std::string(code) + "m" + std::string(text) + "\x1b[0m";
}

const char* ColourOf(Severity severity) {
  if (severity == Severity::kError) return "1;31";
  return severity == Severity::kWarning ? "1;35" : "1;36";
}

std::string JoinedKeys(const std::vector<std::string>& keys) {
  constexpr std::size_t kMaxShownKeys = 3;
  std::string text;
  for (std::size_t i = 0; i < std::min(keys.size(), kMaxShownKeys); ++i) {
    text += (i == 0 ? "" : ", ") + FileName(keys[i]);
  }
  if (keys.size() > kMaxShownKeys) {
    text += ", " + CountText(keys.size() - kMaxShownKeys, Counted::kMore);
  }
  return text;
}

// "error: missing sound channel: CONTENTS/AUDIO/0001AB01.MXF (0001AB; 0 bytes)"
void WriteFinding(Output& output, const CardReport& report, const Finding& finding) {
  std::string text =
      Coloured(output, SeverityWord(finding.severity) + ":", ColourOf(finding.severity));
  text += " " + FaultText(finding) + ": " + output.Shown(RelativePath(finding.path, report.path));
  std::string more = JoinedKeys(finding.entryKeys);
  if (!finding.detail.empty()) more += (more.empty() ? "" : "; ") + finding.detail;
  if (!more.empty()) text += " (" + output.Shown(more) + ")";
  output.Write(text + "\n");
}

void WriteFileLine(Output& output, const CardReport& report, const CardFile& file) {
  constexpr std::size_t kRoleColumns = 10;
  std::string line = FileRoleWord(file.role);
  const std::size_t width = CellWidth(line);
  line.append(width < kRoleColumns ? kRoleColumns - width : 1, ' ');
  line += output.Shown(RelativePath(file.path, report.path));
  if (!file.owners.empty()) line += "  (" + output.Shown(JoinedKeys(file.owners)) + ")";
  output.Write(line + "\n");
}

// The number of files of the card at the report's path, or of parts of its clips on other cards.
std::size_t CountFiles(const CardReport& report, bool onOtherCards) {
  const auto& files = report.result.files;
  return static_cast<std::size_t>(std::ranges::count_if(files, [&](const CardFile& file) {
    const bool isBelow = RelativePath(file.path, report.path) != file.path;
    return file.isPartOfCopy && isBelow != onOtherCards;
  }));
}

std::string DepthText(const CardReport& report) {
  if (report.hashed) return ", " + Translated("$$$/Sorvik/Check/Hashed=contents compared");
  if (report.result.depth == Sorvik::CheckDepth::kNames) {
    return ", " + Translated("$$$/Sorvik/Check/NamesOnly=names and sizes only");
  }
  return {};
}

void WriteSummary(Output& output, const CardReport& report) {
  const CardFindings& result = report.result;
  const std::size_t errors = CountOf(result, Severity::kError);
  const std::size_t warnings = CountOf(result, Severity::kWarning);
  std::string text =
      Coloured(output, VerdictWord(result.complete), result.complete ? "1;32" : "1;31");
  text += ": " + CountText(result.clips, Counted::kClips) + ", " +
          CountText(CountFiles(report, false), Counted::kFiles) + ", " + SizeText(result.bytes);
  if (const std::size_t others = CountFiles(report, true); others != 0) {
    text += ", " + CountText(others, Counted::kFilesOnOtherCards);
  }
  if (errors != 0) text += ", " + CountText(errors, Counted::kErrors);
  if (warnings != 0) text += ", " + CountText(warnings, Counted::kWarnings);
  output.Write(text + DepthText(report) + "\n");
}

void WriteFindingJson(JsonWriter& json, const Finding& finding) {
  json.BeginObject();
  json.Key("kind");
  json.String(NameOf(finding.kind));
  json.Key("severity");
  json.String(NameOf(finding.severity));
  json.Key("role");
  json.String(finding.role);
  json.Key("path");
  json.String(finding.path);
  json.Key("entries");
  json.Strings(finding.entryKeys);
  json.Key("detail");
  json.String(finding.detail);
  json.EndObject();
}

void WriteFilesJson(JsonWriter& json, const std::vector<CardFile>& files) {
  json.Key("files");
  json.BeginArray();
  for (const CardFile& file : files) {
    json.BeginObject();
    json.Key("path");
    json.String(file.path);
    json.Key("role");
    json.String(NameOf(file.role));
    json.Key("owners");
    json.Strings(file.owners);
    json.EndObject();
  }
  json.EndArray();
}

std::string_view DepthName(const CardReport& report) {
  if (report.hashed) return "hash";
  return report.result.depth == Sorvik::CheckDepth::kNames ? "names" : "structure";
}

}  // namespace

void WriteReportText(Output& output, const CardReport& report, bool withFiles) {
  for (const Finding& finding : report.result.findings) WriteFinding(output, report, finding);
  if (withFiles) {
    for (const CardFile& file : report.result.files) WriteFileLine(output, report, file);
  }
  if (!report.isMedium) WriteSummary(output, report);
}

void WriteReportJson(JsonWriter& json, const CardReport& report, bool withFiles) {
  json.BeginObject();
  json.Key("path");
  json.String(report.path);
  json.Key("provider");
  json.String(report.provider);
  json.Key("complete");
  json.Boolean(report.result.complete);
  json.Key("depth");
  json.String(DepthName(report));
  json.Key("against");
  if (report.against.empty()) {
    json.Null();
  } else {
    json.String(report.against);
  }
  json.Key("clips");
  json.Number(static_cast<unsigned long long>(report.result.clips));
  json.Key("bytes");
  json.Number(static_cast<unsigned long long>(report.result.bytes));
  json.Key("findings");
  json.BeginArray();
  for (const Finding& finding : report.result.findings) WriteFindingJson(json, finding);
  json.EndArray();
  if (withFiles) WriteFilesJson(json, report.result.files);
  json.EndObject();
}

}  // namespace host
