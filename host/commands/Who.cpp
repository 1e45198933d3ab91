// SPDX-License-Identifier: MIT
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "Json.h"
#include "Paths.h"
#include "Table.h"

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

void WriteTable(Output& output, const std::vector<ProviderWrapper*>& providers,
                const std::vector<int>& scores) {
  Table table({"Score", "Name", "Identification"});
  table.SetAlign(0, Table::Align::kRight);
  for (std::size_t i = 0; i < providers.size(); ++i) {
    table.Add({std::to_string(scores[i]), providers[i]->GetUIString(),
               providers[i]->GetIdentification()});
  }
  table.Write(output);
}

}  // namespace

int RunWho(Context& context) {
  const std::string path = ResolvePath(context.options.operands.front());
  const std::vector<ProviderWrapper*> providers = context.session.Providers(path);
  // The sorted list doesn't include the scores.
  const auto scores = context.session.OnWorker<std::vector<int>>([providers, path] {
    std::vector<int> result;
    for (const ProviderWrapper* provider : providers)
      result.push_back(provider->CanProvideFor(path));
    return result;
  });
  if (context.options.json) {
    WriteJson(context.output, providers, scores);
  } else if (!providers.empty()) {
    WriteTable(context.output, providers, scores);
  }
  if (providers.empty()) FailUnclaimedPath(context, path);
  return kDone;
}

}  // namespace host
