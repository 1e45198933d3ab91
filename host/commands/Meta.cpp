// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>

#include "Commands.h"
#include "Failure.h"
#include "Fields.h"
#include "Json.h"
#include "Paths.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/metadata/RelatedFiles.h"
#include "SorvikProvider/metadata/ValueSources.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "Table.h"
#include "Values.h"

namespace host {
namespace {

using Sorvik::FieldNameList;
using Sorvik::FieldNameSet;
using Sorvik::FieldValueMap;
using Sorvik::XMPSupport::SourcedValueMap;
namespace XMPSupport = Sorvik::XMPSupport;

constexpr std::size_t kMaxPacketBytes = 64U << 20;

std::string ReadStandardInput(const std::atomic<bool>& stop) {
  std::string packet;
  std::string chunk(1 << 16, '\0');
  while (!stop) {
    const ssize_t got = read(STDIN_FILENO, chunk.data(), chunk.size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      throw Failure(kFailed,
                    std::string("standard input: cannot read (") + std::strerror(errno) + ")");
    }
    if (got == 0) break;
    packet.append(chunk, 0, static_cast<std::size_t>(got));
    if (packet.size() > kMaxPacketBytes)
      throw Failure(kFailed, "standard input: XMP packet too large");
  }
  return packet;
}

FieldNameList TableFields() {
  FieldNameList fields;
  for (const XMPSupport::XMPCrossReference& row : XMPSupport::kXMPCrossReference) {
    fields.emplace_back(row.propertyName);
  }
  return fields;
}

// Whether the value is in `fields`, too.
bool HasValue(const FieldValueMap& fields, const std::string& name, const std::string& value) {
  const auto found = fields.find(name);
  const auto* text = found == fields.end() ? nullptr : found->second.get_if<std::string>();
  return text != nullptr && *text == value;
}

void WriteSources(JsonWriter& json, const FieldValueMap& fields, const SourcedValueMap& sources) {
  json.BeginObject();
  for (const auto& [name, sourced] : sources) {
    json.Key(name);
    json.BeginObject();
    json.Key("from");
    json.String(XMPSupport::GetSourceName(sourced.from));
    if (!HasValue(fields, name, sourced.value)) {
      json.Key("value");
      json.String(sourced.value);
    }
    json.Key("others");
    json.BeginArray();
    for (const XMPSupport::SourceValue& other : sourced.others) {
      json.BeginObject();
      json.Key("from");
      json.String(XMPSupport::GetSourceName(other.from));
      json.Key("value");
      json.String(other.value);
      json.EndObject();
    }
    json.EndArray();
    json.EndObject();
  }
  json.EndObject();
}

void WriteJson(Output& output, const std::string& path, const FieldValueMap& fields,
               const std::optional<SourcedValueMap>& sources) {
  JsonWriter json(output);
  json.BeginObject();
  json.Key("path");
  json.String(path);
  json.Key("fields");
  json.Fields(fields);
  if (sources) {
    json.Key("sources");
    WriteSources(json, fields, *sources);
  }
  json.EndObject();
}

Sorvik::FieldLabelMap FurtherLabels() {
  Sorvik::FieldLabelMap labels;
  for (const XMPSupport::FurtherProperty& property : XMPSupport::kFurtherProperties) {
    labels[property.name] = property.labelKey;
  }
  return labels;
}

// "value (source); value (source)"
std::string OtherTexts(const std::vector<XMPSupport::SourceValue>& others) {
  std::string texts;
  for (const XMPSupport::SourceValue& other : others) {
    texts += texts.empty() ? "" : "; ";
    texts += other.value + " (" + XMPSupport::GetSourceName(other.from) + ")";
  }
  return texts;
}

// Fields in the order of `wanted`, then further properties.
void WriteSourceTable(Output& output, const FieldNameList& wanted, const SourcedValueMap& sources) {
  Table table({Translated("$$$/Sorvik/Column/Field=Field"),
               Translated("$$$/Sorvik/Column/Value=Value"),
               Translated("$$$/Sorvik/Column/Source=Source"),
               Translated("$$$/Sorvik/Column/Others=Other values")});
  FieldNameList order = wanted;
  for (const auto& [name, sourced] : sources) {
    if (std::find(wanted.begin(), wanted.end(), name) == wanted.end()) order.push_back(name);
  }
  const Sorvik::FieldLabelMap labels = FurtherLabels();
  for (const std::string& name : order) {
    const auto found = sources.find(name);
    if (found == sources.end()) continue;
    const XMPSupport::SourcedValue& sourced = found->second;
    table.Add({LabelOf(labels, name), sourced.value, XMPSupport::GetSourceName(sourced.from),
               OtherTexts(sourced.others)});
  }
  table.Write(output);
}

// Returns the fields that the best provider of the card has for the entry that the file is the main
// file of; empty if there is no such entry.
FieldValueMap EntryFields(const std::string& path, const FieldNameList& wanted) {
  Hestra::UTF16String key;
  Hestra::UTF16String folder;
  Hestra::UTF16String identification;
  const Hestra::UTF16String file = Hestra::MakeString(path);
  Sorvik::GetRelatedFilesWithoutExtraFiles(file, key, folder, identification);
  if (key == file) return {};
  for (const Sorvik::ProviderWrapper* provider : Sorvik::ProviderHost::GetAllProviders()) {
    if (Hestra::MakeString(provider->GetIdentification()) != identification) continue;
    const Sorvik::ContentMap content =
        provider->GetContent(Hestra::MakeStdString(folder), Hestra::MakeStdString(key),
                             FieldNameSet(wanted.begin(), wanted.end()));
    return content.empty() ? FieldValueMap() : content.begin()->second;
  }
  return {};
}

// Sources of the wanted fields, and of further properties if no fields were selected.
SourcedValueMap FindSources(const std::string& path, const FieldNameList& wanted, bool further) {
  SourcedValueMap sources = XMPSupport::GetValueSources(path);
  XMPSupport::AddProviderValues(EntryFields(path, wanted), sources);
  const FieldNameSet names(wanted.begin(), wanted.end());
  const XMPSupport::XMPFieldBits none;
  std::erase_if(sources, [&](const auto& source) {
    const bool isField = XMPSupport::ParseFields({source.first}) != none;
    return isField ? !names.contains(source.first) : !further;
  });
  return sources;
}

// `file` is empty for an XMP packet on standard input.
void RunOne(Context& context, const std::string& file, const FieldNameList& wanted) {
  const bool packet = file.empty();
  const std::string path = packet ? "-" : ResolvePath(file);
  FieldNameSet asked(wanted.begin(), wanted.end());
  // For durations without a timecode, which are shown in seconds.
  const bool addsCount =
      !context.options.json && asked.contains(kDurationField) && !asked.contains(kFrameCountField);
  if (addsCount) asked.insert(kFrameCountField);
  const auto bits = XMPSupport::ParseFields(asked);
  const auto& stop = context.session.Stopped();
  context.session.GetProgress().Begin("reading");
  auto fields = context.session.OnWorker<FieldValueMap>([packet, path, bits, &stop] {
    return packet ? XMPSupport::MakeValue(bits, ReadStandardInput(stop))
                  : XMPSupport::MakeValue(path, bits);
  });
  if (fields.empty()) {
    if (packet) throw Failure(kFailed, "standard input: no metadata");
    throw Failure(kFailed, path, context.session.OnWorker<std::string>([path] {
      return DescribePathError(path, "no metadata");
    }));
  }
  std::optional<SourcedValueMap> sources;
  if (context.options.sources) {
    const bool further = !context.options.fields;
    sources = context.session.OnWorker<SourcedValueMap>(
        [path, wanted, further] { return FindSources(path, wanted, further); });
  }
  if (context.options.json) {
    WriteJson(context.output, path, fields, sources);
  } else if (sources) {
    WriteSourceTable(context.output, wanted, *sources);
  } else {
    ShowDuration(fields);
    if (addsCount) fields.erase(kFrameCountField);
    WriteFieldLines(context.output, {}, wanted, fields);
  }
}

}  // namespace

int RunMeta(Context& context) {
  const Options& options = context.options;
  const FieldNameList wanted = options.fields ? ResolveFields(*options.fields, {}) : TableFields();
  if (options.packet) {
    RunOne(context, {}, wanted);
    return kDone;
  }
  return ForEachOperand(context, options.operands, [&](const std::string& file) {
    if (file.empty()) throw Failure(kUsageError, "FILE must not be empty (try 'sorvik --help')");
    RunOne(context, file, wanted);
  });
}

}  // namespace host
