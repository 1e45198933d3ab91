// SPDX-License-Identifier: MIT
#include <algorithm>
#include <map>
#include <vector>

#include "CardReport.h"
#include "Commands.h"
#include "Failure.h"
#include "Json.h"
#include "Paths.h"
#include "Values.h"

namespace host {
namespace {

using Sorvik::ContentMap;
using Sorvik::StructurePart;

const Sorvik::FieldNameSet kCheckFields = {Sorvik::kNameField, Sorvik::kPathField,
                                           Sorvik::kExtraPathField, Sorvik::kProxyPathField};

const char* RoleName(FileRole role) {
  switch (role) {
    case FileRole::kClip:
      return "clip";
    case FileRole::kStructure:
      return "structure";
    case FileRole::kOrphaned:
      return "unreached";
    case FileRole::kUnrelated:
      break;
  }
  return "foreign";
}

void WriteJson(JsonWriter& json, const std::string& path, const std::string& provider,
               const CardReport& report) {
  json.BeginObject();
  json.Key("path");
  json.String(path);
  json.Key("provider");
  json.String(provider);
  json.Key("whole");
  json.Boolean(report.IsComplete());
  json.Key("missing");
  json.BeginArray();
  for (const StructurePart& part : report.missing) {
    json.BeginObject();
    json.Key("key");
    json.String(part.entryKey);
    json.Key("kind");
    json.String(part.kind);
    json.Key("path");
    json.String(part.path);
    json.EndObject();
  }
  json.EndArray();
  json.Key("files");
  json.BeginArray();
  for (const CardFile& file : report.files) {
    json.BeginObject();
    json.Key("path");
    json.String(file.path);
    json.Key("role");
    json.String(RoleName(file.role));
    json.Key("owners");
    json.Strings(file.owners);
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
}

std::string Counted(std::size_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

// The report as text, clip by clip.
class TextReport {
 public:
  TextReport(Output& output, std::string root, const CardReport& report)
      : output_(output), root_(std::move(root)), report_(report) {
    for (const CardFile& file : report.files) {
      for (const std::string& key : file.owners) filesOf_[key].push_back(file.path);
    }
    for (const StructurePart& part : report.missing) missingOf_[part.entryKey].push_back(&part);
  }

  void Write(const ContentMap& entries) {
    for (const auto& [key, fields] : entries) {
      const std::string name = EntryName(key, fields);
      Heading(name == FileName(key) ? name : name + " (" + FileName(key) + ")");
      for (const std::string& path : filesOf_[key]) Line(Relative(path));
      WriteMissing(key);
    }
    WriteOtherMissing(entries);
    WriteRole(FileRole::kStructure, "card structure");
    WriteRole(FileRole::kUnrelated, "unrelated");
    WriteRole(FileRole::kOrphaned, "orphaned");
    WriteVerdict(entries.size());
  }

 private:
  void Heading(const std::string& text) { output_.Write(output_.Shown(text) + "\n"); }
  void Line(const std::string& text) { output_.Write("  " + output_.Shown(text) + "\n"); }

  std::string Relative(const std::string& path) const {
    const std::string prefix = root_ == "/" ? root_ : root_ + "/";
    return path.starts_with(prefix) ? path.substr(prefix.size()) : path;
  }

  void WriteMissing(const std::string& key) {
    for (const StructurePart* part : missingOf_[key]) {
      Line("MISSING " + part->kind + ": " + Relative(part->path));
    }
  }

  // Missing parts of the card itself, and of clips that aren't listed.
  void WriteOtherMissing(const ContentMap& entries) {
    for (const auto& [key, parts] : missingOf_) {
      if (parts.empty() || entries.contains(key)) continue;
      Heading(key.empty() ? "card" : FileName(key));
      WriteMissing(key);
    }
  }

  void WriteRole(FileRole role, const char* heading) {
    bool first = true;
    for (const CardFile& file : report_.files) {
      if (file.role != role) continue;
      if (std::exchange(first, false)) Heading(heading);
      Line(Relative(file.path));
    }
  }

  void WriteVerdict(std::size_t clips) {
    std::size_t orphaned = 0;
    for (const CardFile& file : report_.files) orphaned += file.role == FileRole::kOrphaned;
    const std::string extent =
        Counted(clips, "clip", "clips") + ", " + Counted(report_.files.size(), "file", "files");
    if (report_.IsComplete()) {
      Heading("complete: " + extent);
    } else {
      Heading("INCOMPLETE: " + extent + ", " +
              Counted(report_.missing.size(), "part missing", "parts missing") + ", " +
              Counted(orphaned, "orphaned file", "orphaned files"));
    }
  }

  Output& output_;
  const std::string root_;
  const CardReport& report_;
  std::map<std::string, std::vector<std::string>> filesOf_;
  std::map<std::string, std::vector<const StructurePart*>> missingOf_;
};

struct CheckedCard {
  Sorvik::FoundCard card;
  ContentMap entries;
  CardReport report;
};

CheckedCard CheckCard(Context& context, const Sorvik::FoundCard& card) {
  Session& session = context.session;
  CheckedCard checked{card, session.Content(ProviderOf(card), card.path, kCheckFields), {}};
  session.GetProgress().Begin("checking");
  const auto& stop = session.Stopped();
  checked.report =
      session.OnWorker<CardReport>([card, entries = checked.entries, &stop]() -> CardReport {
        return MakeCardReport(card.path, entries,
                              Sorvik::CheckStructure(card.path, card.identification), stop);
      });
  return checked;
}

void WriteCards(Context& context, const std::string& path, const std::vector<CheckedCard>& cards) {
  if (context.options.json) {
    JsonWriter json(context.output);
    if (cards.size() > 1) json.BeginArray();
    for (const CheckedCard& checked : cards) {
      WriteJson(json, checked.card.path, checked.card.identification, checked.report);
    }
    if (cards.size() > 1) json.EndArray();
    return;
  }
  for (const CheckedCard& checked : cards) {
    const std::string& root = checked.card.path;
    if (cards.size() > 1 || root != path) {
      context.output.Write(context.output.Shown(root) + ":\n");
    }
    TextReport(context.output, root, checked.report).Write(checked.entries);
  }
}

}  // namespace

int RunCheck(Context& context) {
  const std::string path = ResolvePath(context.options.operands.front());
  const std::vector<Sorvik::FoundCard> cards = CardsFor(context, path);
  if (cards.empty()) {
    RequireReadable(context, path);
    throw Failure(kFailed, path + ": not a camera card or clip folder");
  }
  std::vector<CheckedCard> checked;
  for (const Sorvik::FoundCard& card : cards) checked.push_back(CheckCard(context, card));
  WriteCards(context, path, checked);
  const bool complete = std::all_of(checked.begin(), checked.end(),
                                    [](const CheckedCard& one) { return one.report.IsComplete(); });
  return complete ? kDone : kFailed;
}

}  // namespace host
