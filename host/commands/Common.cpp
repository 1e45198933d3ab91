// SPDX-License-Identifier: MIT
#include <algorithm>

#include "Commands.h"
#include "Failure.h"
#include "Json.h"
#include "Paths.h"
#include "Table.h"
#include "Values.h"

namespace host {

using Sorvik::ContentMap;
using Sorvik::FieldLabelMap;
using Sorvik::FieldNameList;
using Sorvik::FieldNameSet;
using Sorvik::FieldValueMap;
using Sorvik::ProviderWrapper;

bool IsNamed(const std::string& identification, const std::string& name) {
  return identification == name || identification.ends_with("." + name);
}

// Accesses the disk on a worker, because a dead share can block the call.
void FailUnclaimedPath(Context& context, const std::string& path) {
  throw Failure(kFailed, context.session.OnWorker<std::string>(
                             [path] { return DescribeUnclaimedPath(path); }));
}

void RequireReadable(Context& context, const std::string& path) {
  const auto reason = context.session.OnWorker<std::string>([path] { return ListingError(path); });
  if (!reason.empty()) throw Failure(kFailed, path + ": cannot read (" + reason + ")");
}

const ProviderWrapper& ChooseProvider(Context& context, const std::string& path) {
  const std::vector<ProviderWrapper*> providers = context.session.Providers(path);
  if (providers.empty()) FailUnclaimedPath(context, path);
  const std::string& name = context.options.provider;
  if (name.empty()) return *providers.front();
  for (const ProviderWrapper* provider : providers) {
    if (IsNamed(provider->GetIdentification(), name)) return *provider;
  }
  throw Failure(kFailed, path + ": not supported by provider '" + name + "'");
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
  if (options.fields) return *options.fields;
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
  throw Failure(kFailed, path + ": no entry '" + key + "'");
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

std::string CellOf(const std::string& field, const std::string& key, const FieldValueMap& fields) {
  if (field == Sorvik::kNameField) return EntryName(key, fields);
  const auto value = fields.find(field);
  return value == fields.end() ? std::string() : CellText(value->second);
}

bool HasSizes(const ContentMap& content, const std::string& field) {
  return std::any_of(content.begin(), content.end(), [&](const auto& entry) {
    const auto value = entry.second.find(field);
    return value != entry.second.end() && IsSize(value->second);
  });
}

}  // namespace

FieldNameList NonEmptyFields(FieldNameList fields, const ContentMap& content) {
  const auto empty = [&](const std::string& field) {
    return std::all_of(content.begin(), content.end(), [&](const auto& entry) {
      return CellOf(field, entry.first, entry.second).empty();
    });
  };
  std::erase_if(fields, empty);
  return fields;
}

void WriteEntriesTable(Output& output, const ProviderWrapper& provider, const FieldNameList& fields,
                       const ContentMap& content) {
  if (content.empty() || fields.empty()) return;
  const FieldLabelMap labels = provider.GetFieldLabelList();
  std::vector<std::string> headings;
  for (const std::string& field : fields) headings.push_back(LabelOf(labels, field));
  Table table(headings);
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (HasSizes(content, fields[i])) table.SetAlign(i, Table::Align::kRight);
  }
  for (const auto& [key, values] : content) {
    std::vector<std::string> row;
    for (const std::string& field : fields) row.push_back(CellOf(field, key, values));
    table.Add(std::move(row));
  }
  table.Write(output);
}

void WriteFieldLines(Output& output, const FieldLabelMap& labels, const FieldNameList& order,
                     const FieldValueMap& fields) {
  Table table({"", ""});
  const auto add = [&](const std::string& field, const Sorvik::any_regular_t& value) {
    std::string label = LabelOf(labels, field);
    for (std::string& line : ValueLines(value)) {
      table.Add({std::exchange(label, std::string()), std::move(line)});
    }
  };
  for (const std::string& field : order) {
    if (const auto found = fields.find(field); found != fields.end()) add(field, found->second);
  }
  for (const auto& [field, value] : fields) {
    if (std::find(order.begin(), order.end(), field) == order.end()) add(field, value);
  }
  table.Write(output);
}

}  // namespace host
