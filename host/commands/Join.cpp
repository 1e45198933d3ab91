// SPDX-License-Identifier: MIT
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "Keys.h"
#include "OfflineCatalogue.h"
#include "Paths.h"
#include "SorvikProvider/cardtools/JoinList.h"

namespace host {
namespace {

using Sorvik::CataloguedCard;
using Sorvik::JoinFile;
using Sorvik::JoinFormat;
using Sorvik::JoinOptions;
using Sorvik::JoinResult;
using Sorvik::JoinStatus;

JoinFormat ChooseFormat(const Options& options) {
  if (options.json && options.format.empty()) return JoinFormat::kJson;
  if (options.format.empty()) throw Failure(kUsageError, "join: --format or --json is required");
  const auto format = Sorvik::JoinFormatNamed(options.format);
  if (!format) throw Failure(kUsageError, "join: unknown format '" + options.format + "'");
  if (options.json && *format != JoinFormat::kJson) {
    throw Failure(kUsageError, "join: --json and --format are mutually exclusive");
  }
  if (*format == JoinFormat::kFfconcat && options.operands.size() < 2) {
    throw Failure(kUsageError, "join: --format ffconcat needs a KEY");
  }
  return *format;
}

// The card among those at and below `path`: the best one at the path itself, or the only one.
const CataloguedCard& ChooseCard(const std::string& path,
                                 const std::vector<CataloguedCard>& cards) {
  const CataloguedCard& first = cards.front();
  const auto other = std::ranges::find_if(
      cards, [&first](const CataloguedCard& card) { return card.path != first.path; });
  if (first.path == path || other == cards.end()) return first;
  throw Failure(kFailed, path,
                "several cards in the catalogue, such as " + first.path + " and " + other->path);
}

JoinResult JoinCatalogued(Context& context, const std::string& path, const JoinOptions& wanted) {
  const std::vector<std::string>& operands = context.options.operands;
  const std::vector<CataloguedCard> cards = CataloguedCards(context, path);
  if (operands.size() < 2) return Sorvik::MakeJoinLists(ChooseCard(path, cards), {}, wanted);
  const auto [card, key] = FindCataloguedClip(cards, path, operands[1]);
  return Sorvik::MakeJoinLists(*card, key, wanted);
}

JoinResult JoinCard(Context& context, const std::string& path, const JoinOptions& wanted) {
  const std::vector<std::string>& operands = context.options.operands;
  const Sorvik::ProviderWrapper& provider = ChooseProvider(context, path);
  const std::string key =
      operands.size() < 2 ? std::string() : FindKey(context, provider, path, operands[1]);
  JoinResult joined = context.session.Join(path, provider.GetIdentification(), key, wanted);
  if (joined.status != JoinStatus::kDone) RequireReadable(context, path);
  return joined;
}

}  // namespace

int RunJoin(Context& context) {
  const Options& options = context.options;
  JoinOptions wanted;
  wanted.format = ChooseFormat(options);
  wanted.allowGaps = options.allowGaps;
  const bool toFile = !options.output.empty() && options.output != "-";
  if (toFile) RefuseFileOfCard(context, options.output);
  if (toFile) wanted.output = ResolvePath(options.output);
  wanted.indents = !toFile && context.output.IndentsJson();
  const std::string path = ResolvePath(options.operands[0]);
  const JoinResult joined = options.catalog.empty() ? JoinCard(context, path, wanted)
                                                    : JoinCatalogued(context, path, wanted);
  for (const auto& [place, text] : joined.warnings) WriteError(place + ": " + text);
  if (joined.status != JoinStatus::kDone) {
    const char* const hint = joined.status == JoinStatus::kGap ? " (use --allow-gaps)" : "";
    throw Failure(kFailed, joined.problem.path, joined.problem.text + hint);
  }
  for (const JoinFile& file : joined.files) {
    if (!file.path.empty()) RefuseFileOfCard(context, file.path);
  }
  for (const JoinFile& file : joined.files) {
    WriteFile(context.output, file.path.empty() ? "-" : file.path, file.text);
  }
  return kDone;
}

}  // namespace host
