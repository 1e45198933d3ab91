// SPDX-License-Identifier: MIT
// Finds the cards at, around and below a path. Users point at the root of a medium, at a folder of
// copied cards, or at a folder inside a card; the structure that a provider claims is mostly
// another folder.
//
//   for (const FoundCard& card : FindCards("/media/SONY_SD", SearchDirection::kNearby)) ...
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/Hestra.h"
#include "SorvikProvider/foundation/ImmutableString.h"
#include "SorvikProvider/foundation/Messaging.h"
#include "SorvikProvider/frame/ProviderMessages.h"
#include "SorvikProvider/frame/ProviderRequest.h"

namespace Sorvik {

// How far below the path a search goes.
enum class SearchDirection {
  kNearby,  // the path's own folders, and those in a folder PRIVATE
  kDeep,    // all folders
};

struct FoundCard {
  std::string path;            // the folder that the provider claims, in UTF-8
  std::string identification;  // of the provider
  int score = 0;               // what CanProvideFor gives for the path
};

// Returns the cards at `path`, else the one that contains it (at most four folders above), else
// those below it; also those next to a card, in folders that don't belong to it. If several
// providers list the same clips of a folder, only the best one is returned. A card without any clip
// (the empty folders that cameras make when they format a medium) isn't returned.
//
// Links to folders and hidden folders aren't followed, other mounted file systems aren't entered,
// and at most 64 levels of folders are searched. A folder that can't be read counts as empty. If
// `path` is a file, the card that contains it is returned. Blocks; any thread, between
// ProviderHost::Initialize and the last Shutdown. Returns what was found so far if `request` is
// aborted.
SORVIK_EXPORT std::vector<FoundCard> FindCards(const std::string& path, SearchDirection direction,
                                               ProviderRequest* request = nullptr);

// The same, one by one as they are found. The search ends when `receive` returns false.
SORVIK_EXPORT void ForEachCard(const std::string& path, SearchDirection direction,
                               const std::function<bool(const FoundCard&)>& receive,
                               ProviderRequest* request = nullptr);

// A result of ProviderHost::RequestCards: one message for each card, then a last one without a
// card. After Abort only the last one is posted, with kResultAborted.
struct SORVIK_EXPORT FindCardsMessage : Hestra::MessageImpl<FindCardsMessage>,
                                        Hestra::Allocated<FindCardsMessage> {
  std::string path;  // as requested
  FoundCard card;    // empty in the last message
  bool isLast = false;
  ContentResultCode result = kResultDone;  // of the last message; kResultNoContent: no card
  // In the last message: folders below the path that can't be listed. They may contain cards.
  std::vector<std::string> unreadableFolders;

  ~FindCardsMessage() override;
};

// What ProviderHost::RequestCards queues.
class SORVIK_EXPORT FindCardsRequest final : public ProviderRequest {
 public:
  FindCardsRequest(tarnwick::utility::ImmutableString station, std::string path,
                   SearchDirection direction);
  void Run() override;
  Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> GetRef() override;

 private:
  void PostAborted() const override;

  std::string path_;
  SearchDirection direction_;
};

}  // namespace Sorvik
