// SPDX-License-Identifier: MIT
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "Json.h"
#include "Paths.h"
#include "Table.h"
#include "Values.h"

namespace host {
namespace {

using Sorvik::ProviderWrapper;

void WriteJson(Output& output, const std::vector<ProviderWrapper*>& providers,
               const std::vector<int>& scores) {
  JsonWriter json(output);
  json.BeginArray();
  for (std::size_t i = 0; i < providers.size(); ++i) {
    json.BeginObject();
    json.Key("identification");
    json.String(providers[i]->GetIdentification());
    json.Key("name");
    json.String(providers[i]->GetUIString());
    json.Key("score");
    json.Number(scores[i]);
    json.EndObject();
  }
  json.EndArray();
}

void WriteTable(Context& context, const std::vector<ProviderWrapper*>& providers,
                const std::vector<int>& scores) {
  Table table({Translated("$$$/Sorvik/Column/Score=Score"),
               Translated("$$$/Sorvik/Column/Name=Name"),
               Translated("$$$/Sorvik/Column/Identification=Identification")});
  table.SetAlign(0, Table::Align::kRight);
  for (std::size_t i = 0; i < providers.size(); ++i) {
    table.Add({std::to_string(scores[i]), providers[i]->GetUIString(),
               providers[i]->GetIdentification()});
  }
  table.Write(context.output, context.options.form);
}

}  // namespace

int RunWho(Context& context) {
  const std::string path = ResolvePath(context.options.operands.front());
  const std::vector<ProviderWrapper*> providers = context.session.Providers(path);
  if (providers.empty()) FailUnclaimedPath(context, path);
  // The sorted list doesn't include the scores.
  const auto scores = context.session.OnWorker<std::vector<int>>([providers, path] {
    std::vector<int> result;
    for (const ProviderWrapper* provider : providers)
      result.push_back(provider->CanProvideFor(path));
    return result;
  });
  if (context.options.json) {
    WriteJson(context.output, providers, scores);
  } else {
    WriteTable(context, providers, scores);
  }
  return kDone;
}

}  // namespace host
