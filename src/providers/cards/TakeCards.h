// SPDX-License-Identifier: MIT
// The lists of the cards that a take is assembled from: the ones read so far, and those of the
// cards next to this one. Lists are shared with the call scope; an object belongs to one thread.
#pragma once

#include <compare>
#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "providers/cards/MediaPro.h"

namespace Sorvik::xdcamex {

// A record of one of the lists that have been added.
struct EntryRef {
  std::size_t card;
  std::size_t index;

  friend auto operator<=>(const EntryRef&, const EntryRef&) = default;
};

// The records of several lists as one list, without copies. Single records can be removed.
class WorkingList {
 public:
  void Add(std::shared_ptr<const MediaProCard> card) { cards_.push_back(std::move(card)); }

  const MediaProEntry& At(EntryRef ref) const { return cards_[ref.card]->Entries()[ref.index]; }
  void Remove(EntryRef ref) { removed_.insert(ref); }

  std::size_t CardCount() const { return cards_.size(); }
  // The first record with that UMID in the list of card `from` or a later one.
  std::optional<EntryRef> WithUmid(std::string_view umid, std::size_t from = 0) const {
    return First([umid](const MediaProCard& card) { return card.WithUmid(umid); },
                 [](const MediaProEntry&) { return true; }, from);
  }
  // The clips with that UMID in the first list that contains a record with it. More than one only
  // on a damaged card; each has files of its own.
  std::vector<EntryRef> ClipsWith(std::string_view umid) const {
    std::vector<EntryRef> clips;
    const auto first = WithUmid(umid);
    if (!first) return clips;
    for (const std::size_t index : *cards_[first->card]->WithUmid(umid)) {
      const EntryRef ref{first->card, index};
      if (At(ref).kind == MediaProEntry::kClip) clips.push_back(ref);
    }
    return clips;
  }
  // The first take with that component, in any list or only in the one at `mediaProPath`.
  std::optional<EntryRef> TakeWith(std::string_view umid,
                                   std::string_view mediaProPath = {}) const {
    return First([umid](const MediaProCard& card) { return card.TakesWith(umid); },
                 [mediaProPath](const MediaProEntry& entry) {
                   return mediaProPath.empty() || entry.mediaProPath == mediaProPath;
                 });
  }

 private:
  template <class Lookup, class Accept>
  std::optional<EntryRef> First(Lookup lookup, Accept accept, std::size_t from = 0) const {
    for (std::size_t card = from; card < cards_.size(); ++card) {
      const std::vector<std::size_t>* indexes = lookup(*cards_[card]);
      if (indexes == nullptr) continue;
      for (const std::size_t index : *indexes) {
        const EntryRef ref{card, index};
        if (!removed_.contains(ref) && accept(At(ref))) return ref;
      }
    }
    return std::nullopt;
  }

  std::vector<std::shared_ptr<const MediaProCard>> cards_;
  std::set<EntryRef> removed_;
};

struct NeighbourLists;

// The cards next to that of the list at `mediaPro` that have a list with records, one after the
// other. None for a card in the root of the file system.
class NeighbourCards {
 public:
  explicit NeighbourCards(const std::string& mediaPro);

  // Returns null after the last.
  std::shared_ptr<const MediaProCard> Next();

 private:
  std::shared_ptr<const NeighbourLists> lists_;
  std::size_t next_ = 0;
  std::size_t records_ = 0;
};

}  // namespace Sorvik::xdcamex
