// SPDX-License-Identifier: MIT
#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "Json.h"
#include "Paths.h"
#include "SorvikProvider/cardtools/CardFinder.h"
#include "SorvikProvider/frame/ProviderHost.h"

namespace host {
namespace {

using Sorvik::FoundCard;
using Sorvik::ProviderWrapper;

void WriteJsonLine(Output& output, const FoundCard& card, const std::string& name) {
  JsonWriter json(output);
  json.BeginObject();
  json.Key("path");
  json.String(card.path);
  json.Key("provider");
  json.String(card.identification);
  json.Key("name");
  json.String(name);
  json.Key("score");
  json.Number(card.score);
  json.EndObject();
}

// Writes each card once, even if several of the paths lead to it.
class CardList {
 public:
  explicit CardList(Context& context) : context_(context) {}

  void Add(const FoundCard& card) {
    const Options& options = context_.options;
    const std::string id = options.json ? card.identification : std::string();
    if (!seen_.emplace(card.path, id).second) return;
    context_.session.GetProgress().Clear();
    Output& output = context_.output;
    if (options.json) {
      WriteJsonLine(output, card, ProviderOf(card).GetUIString());
    } else if (options.zero) {
      output.Write(card.path);
      output.Write(std::string_view("\0", 1));
    } else {
      output.Write(output.Shown(card.path) + "\n");
    }
    output.Flush();
  }

 private:
  Context& context_;
  std::set<std::pair<std::string, std::string>> seen_;
};

}  // namespace

const ProviderWrapper& ProviderOf(const FoundCard& card) {
  for (const ProviderWrapper* provider : Sorvik::ProviderHost::GetAllProviders()) {
    if (provider->GetIdentification() == card.identification) return *provider;
  }
  throw Failure(kFailed, card.path, "unknown provider '" + card.identification + "'");
}

CardsOfPath NearbyCards(Context& context, const std::string& path) {
  CardsOfPath found;
  found.unreadableFolders =
      context.session.FindCards(path, Sorvik::SearchDirection::kNearby,
                                [&found](const FoundCard& card) { found.cards.push_back(card); });
  return found;
}

int ReportUnreadable(Context& context, const std::vector<std::string>& folders) {
  if (folders.empty()) return kDone;
  context.output.Flush();
  for (const std::string& folder : folders) {
    WriteError(folder + ": cannot read (" + context.session.OnWorker<std::string>([folder] {
      return ListingError(folder);
    }) + ")");
  }
  return kFailed;
}

int RunCards(Context& context) {
  CardList list(context);
  int code = kDone;
  for (const std::string& operand : context.options.operands) {
    const std::string path = ResolvePath(operand);
    bool found = false;
    const auto unreadable =
        context.session.FindCards(path, Sorvik::SearchDirection::kDeep, [&](const FoundCard& card) {
          found = true;
          list.Add(card);
        });
    code = std::max(code, ReportUnreadable(context, unreadable));
    if (found) continue;
    code = kFailed;
    const auto reason = context.session.OnWorker<std::string>(
        [path] { return DescribePathError(path, "no card found"); });
    WriteError(path + ": " + reason);
  }
  return code;
}

}  // namespace host
