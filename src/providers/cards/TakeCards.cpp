// SPDX-License-Identifier: MIT
#include "providers/cards/TakeCards.h"

#include "foundation/CallScope.h"
#include "foundation/hestra/Directory.h"
#include "foundation/hestra/PathUtils.h"
#include "providers/cards/Neighbours.h"

namespace Sorvik::xdcamex {

namespace PathUtils = Hestra::PathUtils;
using formats::sony::MediaProfile;
using foundation::CallScope;

struct NeighbourLists {
  std::vector<UTF16String> paths;
};

namespace {

constexpr std::u16string_view kCardFolder = u"/BPAV";

// The lists of hundreds of full cards. They are kept for the call, so hostile ones must end.
constexpr std::size_t kMaxSiblingRecords = 500'000;

// Where the lists of the cards beside this one would lie.
std::shared_ptr<const NeighbourLists> ListsBeside(const UTF16String& mediaPro) {
  const UTF16String root = mediaPro.substr(0, mediaPro.rfind(kCardFolder));
  const auto separator = root.rfind(PathUtils::kSeparator);
  if (separator == root.npos || separator == 0) return std::make_shared<NeighbourLists>();
  return CallScope::Remember<NeighbourLists>(Hestra::MakeStdString(root), [&] {
    NeighbourLists lists;
    std::vector<UTF16String> files;
    std::vector<UTF16String> folders;
    Hestra::Directory::GetContainedFileAndDirectoryPaths(root.substr(0, separator), files, folders);
    for (const UTF16String& folder : folders) {
      UTF16String list = folder + UTF16String(kCardFolder) + u"/MEDIAPRO.XML";
      if (list != mediaPro &&
          CanAccessWithoutBlocking(Hestra::MakeStdString(folder), Hestra::MakeStdString(root)))
        lists.paths.push_back(std::move(list));
    }
    return lists;
  });
}

}  // namespace

NeighbourCards::NeighbourCards(const UTF16String& mediaPro) : lists_(ListsBeside(mediaPro)) {}

std::shared_ptr<const MediaProCard> NeighbourCards::Next() {
  while (next_ < lists_->paths.size()) {
    const UTF16String& list = lists_->paths[next_++];
    records_ += MediaProfile::Of(list)->RecordCount();
    if (records_ > kMaxSiblingRecords) return nullptr;
    auto card = MediaProCard::Of(list);
    if (!card->Entries().empty()) return card;
  }
  return nullptr;
}

}  // namespace Sorvik::xdcamex
