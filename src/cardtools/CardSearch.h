// SPDX-License-Identifier: MIT
// The search for cards, by the folders that contain them.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/cardtools/CardFinder.h"
#include "metadata/ClipProvider.h"

namespace Sorvik {

// A folder that is the root of cards.
struct FoundFolder {
  std::string path;
  std::vector<FoundCard> cards;  // best first
  bool hasKnownCards = false;    // some of them are from CardSearchHooks::known
};

struct CardSearchHooks {
  // Ends the search by returning false.
  std::function<bool(FoundFolder)> receive;
  // May be empty. Called before a folder is listed; false skips it.
  std::function<bool(const std::string& path)> enter = {};
  // May be empty. Returns cards whose root the folder is, so that their providers aren't asked.
  std::function<std::vector<FoundCard>(const std::string& path)> known = {};
  // May be empty. Called for each folder below the start that may contain cards but can't be
  // listed.
  std::function<void(const std::string& path)> unreadable = {};
};

// Searches as ForEachCard does.
void SearchCards(const std::string& path, SearchDirection direction, const CardSearchHooks& hooks,
                 ProviderRequest* request);

// The cards whose root is `path`, best first.
std::vector<FoundCard> CardsAt(const std::string& path, ProviderRequest* request);

// The layout of a registered provider; nullptr if it is a host's own, or if there is none.
const CardLayout* LayoutOf(std::string_view identification);

// Whether a name matches one of the patterns of a CardLayout.
bool MatchesAny(std::string_view name, const std::vector<std::string_view>& patterns);

}  // namespace Sorvik
