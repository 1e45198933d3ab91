// SPDX-License-Identifier: MIT
#include "OfflineCatalogue.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <set>

#include "Failure.h"
#include "Paths.h"
#include "ProviderNames.h"

namespace host {
namespace {

using Sorvik::CardFile;
using Sorvik::CataloguedCard;
using Sorvik::CatalogueIndex;

bool IsAtOrBelow(const std::string& path, const std::string& folder) {
  return path == folder || folder == "/" || RelativePath(path, folder) != path;
}

std::shared_ptr<const CatalogueIndex> OpenCatalogue(Context& context) {
  const std::string path = ResolvePath(context.options.catalog);
  auto index = context.session.OnWorker<std::shared_ptr<const CatalogueIndex>>(
      [path] { return CatalogueIndex::Open(path); });
  if (!index) throw Failure(kFailed, path, DescribePathError(path, "cannot read"));
  return index;
}

CataloguedCard ReadCard(Context& context, const CatalogueIndex& index,
                        const CatalogueIndex::Card& card) {
  CataloguedCard result;
  if (!ReadCataloguedCard(index, card, result)) {
    throw Failure(kFailed, ResolvePath(context.options.catalog),
                  "invalid or missing lines of the card " + card.path);
  }
  return result;
}

std::vector<CataloguedCard> ReadCards(
    Context& context, const CatalogueIndex& index,
    const std::function<bool(const CatalogueIndex::Card&)>& isWanted) {
  const std::string& provider = context.options.provider;
  std::vector<CataloguedCard> cards;
  for (const CatalogueIndex::Card& card : index.Cards()) {
    const bool isNamed = provider.empty() || IsNamed(card.identification, provider);
    if (isNamed && isWanted(card)) cards.push_back(ReadCard(context, index, card));
  }
  return cards;
}

}  // namespace

std::vector<CataloguedCard> CataloguedCards(Context& context, const std::string& path) {
  const auto index = OpenCatalogue(context);
  auto cards = ReadCards(context, *index, [&path](const CatalogueIndex::Card& card) {
    return IsAtOrBelow(card.path, path);
  });
  if (cards.empty()) {
    cards = ReadCards(context, *index, [&path](const CatalogueIndex::Card& card) {
      return IsAtOrBelow(path, card.path);
    });
  }
  if (cards.empty()) throw Failure(kFailed, path, "not in the catalogue");
  return cards;
}

std::pair<const CataloguedCard*, std::string> FindCataloguedClip(
    const std::vector<CataloguedCard>& cards, const std::string& path, const std::string& typed) {
  using Match = std::pair<const CataloguedCard*, std::string>;
  std::set<Match> byKey;
  std::set<Match> byName;
  std::set<Match> byFile;
  for (const CataloguedCard& card : cards) {
    for (const CataloguedCard::Clip& clip : card.clips) {
      if (clip.key == typed) byKey.emplace(&card, clip.key);
      if (clip.name == typed || FileName(clip.key) == typed) byName.emplace(&card, clip.key);
    }
    for (const CardFile& file : card.findings.files) {
      if (file.owners.size() != 1) continue;
      const bool isNamed = file.path == typed || FileName(file.path) == typed ||
                           RelativePath(file.path, path) == typed;
      if (isNamed) byFile.emplace(&card, file.owners.front());
    }
  }
  for (const std::set<Match>& matches : {byKey, byName, byFile}) {
    if (matches.size() == 1) return *matches.begin();
    if (matches.empty()) continue;
    std::string candidates;
    for (const auto& [card, key] : matches) {
      candidates += (candidates.empty() ? "" : ", ") + card->path + " " + key;
    }
    throw Failure(kFailed, path, "'" + typed + "' is ambiguous: " + candidates);
  }
  throw Failure(kFailed, path, "no entry '" + typed + "' in the catalogue");
}

std::pair<CataloguedCard, CardFile> FindCataloguedFile(Context& context, const std::string& file) {
  const auto index = OpenCatalogue(context);
  const auto cards = ReadCards(context, *index, [&file](const CatalogueIndex::Card& card) {
    return IsAtOrBelow(file, card.path);
  });
  bool isListed = false;
  for (const CataloguedCard& card : cards) {
    for (const CardFile& known : card.findings.files) {
      if (known.path == file && !known.owners.empty()) return {card, known};
      isListed = isListed || known.path == file;
    }
  }
  throw Failure(kFailed, file, isListed ? "belongs to no clip" : "not in the catalogue");
}

}  // namespace host
