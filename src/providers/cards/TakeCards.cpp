// SPDX-License-Identifier: MIT
#include "providers/cards/TakeCards.h"

#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/platform/FileSystem.h"
#include "providers/cards/Neighbours.h"

namespace Sorvik::xdcamex {

using formats::sony::MediaProfile;
using foundation::CallScope;
using foundation::CardFolder;

struct NeighbourLists {
  std::vector<std::string> paths;
};

namespace {

constexpr std::string_view kCardFolder = "/BPAV";

// The lists of hundreds of full cards. All lists are kept for the call, so their total is limited.
constexpr std::size_t kMaxSiblingRecords = 500'000;

// The paths of the lists of the cards next to this one, whether they exist or not.
std::shared_ptr<const NeighbourLists> NeighbourListsOf(const std::string& mediaPro) {
  const std::string root = mediaPro.substr(0, mediaPro.rfind(kCardFolder));
  const auto separator = root.rfind(platform::kSeparator);
  if (separator == root.npos || separator == 0) return std::make_shared<NeighbourLists>();
  return CallScope::Remember<NeighbourLists>(root, [&] {
    NeighbourLists lists;
    const auto parent = CardFolder::Of(root.substr(0, separator));
    for (const std::string& name : parent->Folders()) {
      const std::string folder = parent->PathOf(name);
      std::string list = folder + std::string(kCardFolder) + "/MEDIAPRO.XML";
      if (list == mediaPro || !CanAccessWithoutBlocking(folder, root)) continue;
      lists.paths.push_back(std::move(list));
    }
    return lists;
  });
}

}  // namespace

NeighbourCards::NeighbourCards(const std::string& mediaPro) : lists_(NeighbourListsOf(mediaPro)) {}

std::shared_ptr<const MediaProCard> NeighbourCards::Next() {
  while (next_ < lists_->paths.size()) {
    const std::string& list = lists_->paths[next_++];
    records_ += MediaProfile::Of(list)->RecordCount();
    if (records_ > kMaxSiblingRecords) return nullptr;
    auto card = MediaProCard::Of(list);
    if (!card->Entries().empty()) return card;
  }
  return nullptr;
}

}  // namespace Sorvik::xdcamex
