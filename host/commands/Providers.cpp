// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "Failure.h"
#include "Json.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "Values.h"

namespace host {
namespace {

using Sorvik::FieldLabelMap;
using Sorvik::FieldNameList;
using Sorvik::ProviderWrapper;

void WriteJson(JsonWriter& json, const ProviderWrapper& provider) {
  const Sorvik::FieldNameSet fields = provider.GetFieldList();
  json.BeginObject();
  json.Key("identification");
  json.String(provider.GetIdentification());
  json.Key("name");
  json.String(provider.GetUIString());
  json.Key("fields");
  json.Strings({fields.begin(), fields.end()});
  json.Key("defaultFields");
  json.Strings(provider.GetDefaultFieldList());
  json.Key("labels");
  json.BeginObject();
  const FieldLabelMap labels = provider.GetFieldLabelList();
  for (const auto& [field, label] : labels) {
    json.Key(field);
    json.String(LabelOf(labels, field));
  }
  json.EndObject();
  // Independent of the language, for scripts.
  json.Key("labelKeys");
  json.BeginObject();
  for (const auto& [field, label] : labels) {
    json.Key(field);
    json.String(label);
  }
  json.EndObject();
  json.EndObject();
}

// Formats fields as "Name, Path, 26 (Size)": the label is added where it differs from the name.
std::string JoinWithLabels(const FieldNameList& fields, const FieldLabelMap& labels) {
  std::string list;
  for (const std::string& field : fields) {
    const std::string label = LabelOf(labels, field);
    list += (list.empty() ? "" : ", ") + field;
    if (label != field) list += " (" + label + ")";
  }
  return list;
}

void WriteText(Output& output, const ProviderWrapper& provider) {
  const FieldLabelMap labels = provider.GetFieldLabelList();
  FieldNameList others = AllFields(provider);
  const FieldNameList usual = provider.GetDefaultFieldList();
  others.erase(others.begin(), others.begin() + static_cast<std::ptrdiff_t>(usual.size()));
  output.Write(output.Shown(provider.GetUIString() + "  " + provider.GetIdentification()) + "\n");
  output.Write(output.Shown("  columns: " + JoinWithLabels(usual, labels)) + "\n");
  output.Write(output.Shown("  further: " + JoinWithLabels(others, labels)) + "\n");
}

}  // namespace

int RunProviders(Context& context) {
  const auto& providers = Sorvik::ProviderHost::GetAllProviders();
  if (context.options.json) {
    JsonWriter json(context.output);
    json.BeginArray();
    for (const ProviderWrapper* provider : providers) WriteJson(json, *provider);
    json.EndArray();
  } else {
    for (const ProviderWrapper* provider : providers) WriteText(context.output, *provider);
  }
  return kDone;
}

}  // namespace host
