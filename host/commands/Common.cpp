// SPDX-License-Identifier: MIT
#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

#include "Commands.h"
#include "Failure.h"
#include "Fields.h"
#include "Json.h"
#include "Keys.h"
#include "Paths.h"
#include "ProviderNames.h"
#include "Table.h"
#include "Text.h"
#include "Values.h"

namespace host {

using Sorvik::ContentMap;
using Sorvik::FieldLabelMap;
using Sorvik::FieldNameList;
using Sorvik::FieldNameSet;
using Sorvik::FieldValueMap;
using Sorvik::ProviderWrapper;

int ForEachOperand(Context& context, const std::vector<std::string>& operands,
                   const std::function<void(const std::string&)>& run) {
  if (operands.size() == 1) {
    run(operands.front());
    return kDone;
  }
  int code = kDone;
  for (std::size_t i = 0; i < operands.size(); ++i) {
    if (i != 0 && !context.options.json) context.output.Write("\n");
    try {
      run(operands[i]);
    } catch (const Failure& failure) {
      context.session.GetProgress().Clear();
      if (context.options.json) WriteErrorJson(context.output, failure);
      context.output.Flush();
      WriteError(failure.what());
      code = failure.Code();
    }
  }
  return code;
}

std::string NearbyCard(Context& context, const std::string& path) {
  constexpr int kMaxParents = 4;
  std::string folder = path;
  for (int i = 0; i < kMaxParents && folder.find('/') == 0 && folder != "/"; ++i) {
    folder.erase(std::max<std::size_t>(folder.rfind('/'), 1));
    const std::vector<ProviderWrapper*> providers = context.session.Providers(folder);
    if (providers.empty() || !IsStructure(*providers.front())) continue;
    return " (in card " + folder + ": " + providers.front()->GetUIString() + ")";
  }
  return {};
}

bool IsStructure(const ProviderWrapper& provider) {
  return provider.IsFileBased() && !provider.ShouldCheckFilter();
}

// Accesses the disk on a worker, because an unresponsive share can block the call.
void FailUnclaimedPath(Context& context, const std::string& path) {
  const auto reason =
      context.session.OnWorker<std::string>([path] { return DescribeUnclaimedPath(path); });
  throw Failure(kFailed, path, reason + NearbyCard(context, path));
}

void FailMissingEntry(Context& context, const std::string& path, const std::string& key) {
  throw Failure(kFailed, path, "no entry '" + key + "'" + NearbyCard(context, path));
}

void RequireReadable(Context& context, const std::string& path) {
  const auto reason = context.session.OnWorker<std::string>([path] { return ListingError(path); });
  if (!reason.empty()) throw Failure(kFailed, path, "cannot read (" + reason + ")");
}

const ProviderWrapper& ChooseProvider(Context& context, const std::string& path) {
  const std::vector<ProviderWrapper*> providers = context.session.Providers(path);
  if (providers.empty()) FailUnclaimedPath(context, path);
  const std::string& name = context.options.provider;
  if (name.empty()) return *providers.front();
  for (const ProviderWrapper* provider : providers) {
    if (IsNamed(provider->GetIdentification(), name)) return *provider;
  }
  throw Failure(kFailed, path, "not supported by provider '" + name + "'");
}

FieldNameList AllFields(const ProviderWrapper& provider) {
  FieldNameList fields = provider.GetDefaultFieldList();
  for (const std::string& field : provider.GetFieldList()) {
    if (std::find(fields.begin(), fields.end(), field) == fields.end()) fields.push_back(field);
  }
  return fields;
}

FieldNameList ChosenFields(const Options& options, const ProviderWrapper& provider,
                           const FieldNameList& usual) {
  if (options.fields) return ResolveFields(*options.fields, provider.GetFieldLabelList());
  return options.all ? AllFields(provider) : usual;
}

ContentMap ListEntries(Context& context, const ProviderWrapper& provider, const std::string& path,
                       const FieldNameList& fields) {
  ContentMap content =
      context.session.Content(provider, path, FieldNameSet(fields.begin(), fields.end()));
  if (content.empty()) RequireReadable(context, path);
  return content;
}

FieldValueMap ReadEntry(Context& context, const ProviderWrapper& provider, const std::string& path,
                        const std::string& key, const FieldNameList& fields) {
  context.session.GetProgress().Begin("reading");
  const ContentMap content = context.session.OnWorker<ContentMap>([&provider, path, key, fields] {
    return provider.GetContent(path, key, FieldNameSet(fields.begin(), fields.end()));
  });
  const auto entry = content.find(key);
  if (entry != content.end()) return entry->second;
  RequireReadable(context, path);
  FailMissingEntry(context, path, key);
}

void WriteEntriesJson(Output& output, const std::string& path, const std::string& provider,
                      const ContentMap& content) {
  JsonWriter json(output);
  json.BeginObject();
  json.Key("path");
  json.String(path);
  json.Key("provider");
  json.String(provider);
  json.Key("entries");
  json.Entries(content);
  json.EndObject();
}

namespace {

constexpr char kFrameSizeField[] = "videoFrameSize";

bool IsDate(const std::string& field) { return DescribeField({}, field).type == "date"; }

}  // namespace

std::string CellOf(const Column& column, const std::string& key, const FieldValueMap& fields,
                   CellStyle style) {
  for (const std::string& field : column.fields) {
    if (field == Sorvik::kNameField) return EntryName(key, fields);
    const auto value = fields.find(field);
    if (value == fields.end()) continue;
    const bool seconds = field == kFrameCountField && column.fields.front() == kDurationField;
    const std::string text = seconds          ? SecondsText(value->second)
                             : style.complete ? FullText(value->second)
                                              : CellText(value->second);
    if (text.empty()) continue;
    if (!style.brief) return text;
    if (field == kFrameSizeField) return WithoutUnit(text);
    return IsDate(field) ? ShortLocalDate(text) : text;
  }
  return {};
}

namespace {

constexpr char kKeyHeading[] = "$$$/Sorvik/Column/Key=Key";
constexpr char kDateHeading[] = "$$$/Sorvik/Column/Date=Date";
constexpr char kModifiedHeading[] = "$$$/Sorvik/Column/Modified=Modified";

// Fields of plain folders.
constexpr char kSizeField[] = "26";
constexpr char kModifiedField[] = "21";

CellStyle StyleOf(const Context& context) {
  return {context.options.form != TableForm::kAligned, context.output.IsTerminal()};
}

bool HasSizes(const ContentMap& content, const Column& column) {
  return std::any_of(content.begin(), content.end(), [&](const auto& entry) {
    return std::any_of(column.fields.begin(), column.fields.end(), [&](const std::string& field) {
      const auto value = entry.second.find(field);
      return value != entry.second.end() && IsSize(value->second);
    });
  });
}

// True if no entry has a value in this column, or if it repeats the names.
bool IsRedundant(const Column& column, const ContentMap& content, CellStyle style) {
  return std::all_of(content.begin(), content.end(), [&](const auto& entry) {
    const auto& [key, fields] = entry;
    if (column.fields.empty()) return key == EntryName(key, fields);
    return CellOf(column, key, fields, style).empty();
  });
}

// Durations at rates without a timecode are shown in seconds.
Column FieldColumn(const FieldLabelMap& labels, const FieldNameSet& known,
                   const std::string& field) {
  Column column{LabelOf(labels, field), {field}};
  if (field == kDurationField && known.contains(kFrameCountField)) {
    column.fields.emplace_back(kFrameCountField);
  }
  return column;
}

}  // namespace

std::vector<Column> DefaultColumns(const ProviderWrapper& provider) {
  const FieldNameSet known = provider.GetFieldList();
  const FieldLabelMap labels = provider.GetFieldLabelList();
  std::vector<Column> columns = {{Translated(kKeyHeading), {}},
                                 {LabelOf(labels, Sorvik::kNameField), {Sorvik::kNameField}}};
  for (const char* field : {"startTimecode", "duration", "videoFrameRate", kFrameSizeField}) {
    if (known.contains(field)) columns.push_back(FieldColumn(labels, known, field));
  }
  if (known.contains("shotDate")) {
    columns.push_back({Translated(kDateHeading), {"shotDate", "CreateDate"}});
  }
  if (known.contains(kSizeField)) {
    columns.push_back({LabelOf(labels, kSizeField), {kSizeField}});
    columns.push_back({Translated(kModifiedHeading), {kModifiedField}});
  }
  return columns;
}

std::vector<Column> ColumnsOf(const ProviderWrapper& provider, const FieldNameList& fields) {
  const FieldLabelMap labels = provider.GetFieldLabelList();
  const FieldNameSet known = provider.GetFieldList();
  std::vector<Column> columns = {{Translated(kKeyHeading), {}}};
  for (const std::string& field : fields) columns.push_back(FieldColumn(labels, known, field));
  return columns;
}

FieldNameList FieldsOf(const std::vector<Column>& columns) {
  FieldNameList fields;
  for (const Column& column : columns) {
    fields.insert(fields.end(), column.fields.begin(), column.fields.end());
  }
  return fields;
}

void WriteEntriesTable(Context& context, const std::string& path, std::vector<Column> columns,
                       const ContentMap& content) {
  const CellStyle style = StyleOf(context);
  if (context.options.form == TableForm::kAligned) {
    if (content.empty()) return;
    std::erase_if(columns,
                  [&](const Column& column) { return IsRedundant(column, content, style); });
  }
  std::vector<std::string> headings;
  for (const Column& column : columns) headings.push_back(column.heading);
  Table table(headings);
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i].fields.empty() || IsDate(columns[i].fields.front())) table.SetFixed(i);
    if (HasSizes(content, columns[i])) table.SetAlign(i, Table::Align::kRight);
  }
  const std::map<std::string, std::string> shortKeys = ShortKeys(path, content);
  for (const auto& [key, values] : content) {
    std::vector<std::string> row;
    for (const Column& column : columns) {
      row.push_back(column.fields.empty() ? shortKeys.at(key) : CellOf(column, key, values, style));
    }
    table.Add(std::move(row));
  }
  table.Write(context.output, context.options.form);
}

namespace {

std::vector<std::string> FieldLines(const std::string& field, const Sorvik::any_regular_t& value) {
  // A name may consist of separators.
  if (field == Sorvik::kNameField) return FieldTexts({{field, value}}, Sorvik::kNameField);
  return ValueLines(value);
}

// Breaks values at blanks to the width of the terminal, next to the labels.
class FieldLineWriter {
 public:
  FieldLineWriter(Output& output, const FieldLabelMap& labels) : output_(output), labels_(labels) {}

  void Add(const std::string& field, const Sorvik::any_regular_t& value) {
    std::string label = output_.Shown(LabelOf(labels_, field));
    for (const std::string& line : FieldLines(field, value)) {
      labelWidth_ = std::max(labelWidth_, CellWidth(label));
      lines_.emplace_back(std::exchange(label, std::string()), output_.Shown(line));
    }
  }

  void Write() const {
    constexpr std::size_t kGap = 2;
    const auto columns = static_cast<std::size_t>(TerminalColumns());
    const std::size_t indent = labelWidth_ + kGap;
    const bool wraps = output_.IsTerminal() && columns > indent;
    for (const auto& [label, value] : lines_) {
      std::string start = label + std::string(indent - CellWidth(label), ' ');
      const std::vector<std::string> parts =
          wraps ? WrappedWords(value, columns - indent) : std::vector<std::string>{value};
      for (const std::string& part : parts) {
        output_.Write(std::exchange(start, std::string(indent, ' ')) + part + "\n");
      }
    }
  }

 private:
  Output& output_;
  const FieldLabelMap& labels_;
  std::size_t labelWidth_ = 0;
  std::vector<std::pair<std::string, std::string>> lines_;
};

}  // namespace

void WriteFieldLines(Output& output, const FieldLabelMap& labels, const FieldNameList& order,
                     const FieldValueMap& fields) {
  FieldLineWriter writer(output, labels);
  for (const std::string& field : order) {
    if (const auto found = fields.find(field); found != fields.end()) {
      writer.Add(field, found->second);
    }
  }
  for (const auto& [field, value] : fields) {
    if (std::find(order.begin(), order.end(), field) == order.end()) writer.Add(field, value);
  }
  writer.Write();
}

}  // namespace host
