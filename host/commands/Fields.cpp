// SPDX-License-Identifier: MIT
#include "Fields.h"

#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "Json.h"
#include "ProviderNames.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "Table.h"
#include "Values.h"

namespace host {
namespace {

// The fields of the provider `name`, or of all providers if it is empty.
std::vector<FieldInfo> FieldsOf(const std::string& name) {
  std::vector<const Sorvik::ProviderWrapper*> providers;
  if (name.empty()) {
    const auto& all = Sorvik::ProviderHost::GetAllProviders();
    providers.assign(all.begin(), all.end());
  } else {
    providers.push_back(&ProviderNamed(name));
  }
  std::vector<FieldInfo> fields;
  Sorvik::FieldNameSet seen;
  for (const Sorvik::ProviderWrapper* provider : providers) {
    const Sorvik::FieldLabelMap labels = provider->GetFieldLabelList();
    for (const std::string& field : AllFields(*provider)) {
      if (seen.insert(field).second) fields.push_back(DescribeField(labels, field));
    }
  }
  return fields;
}

void WriteJson(Output& output, const std::vector<FieldInfo>& fields) {
  JsonWriter json(output);
  json.BeginArray();
  for (const FieldInfo& field : fields) {
    json.BeginObject();
    json.Key("name");
    json.String(field.name);
    json.Key("label");
    json.String(field.label);
    json.Key("type");
    json.String(field.type);
    json.Key("meaning");
    json.String(field.meaning);
    json.EndObject();
  }
  json.EndArray();
}

}  // namespace

int RunFields(Context& context) {
  const std::vector<std::string>& operands = context.options.operands;
  const std::vector<FieldInfo> fields = FieldsOf(operands.empty() ? "" : operands.front());
  if (context.options.json) {
    WriteJson(context.output, fields);
    return kDone;
  }
  Table table(
      {Translated("$$$/Sorvik/Column/Name=Name"), Translated("$$$/Sorvik/Column/Label=Label"),
       Translated("$$$/Sorvik/Column/Type=Type"), Translated("$$$/Sorvik/Column/Meaning=Meaning")});
  for (const FieldInfo& field : fields) {
    table.Add({field.name, field.label, std::string(field.type), std::string(field.meaning)});
  }
  table.Write(context.output, context.options.form);
  return kDone;
}

}  // namespace host
