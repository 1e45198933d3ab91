// SPDX-License-Identifier: MIT
// The cards that a take is put together from: the lists taken in so far, and those of the cards
// beside. Lists are shared with the call scope; an object belongs to one thread.
#pragma once

#include <compare>
#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"
#include "providers/cards/MediaPro.h"

namespace Sorvik::xdcamex {

// A record of one of the lists that have been taken in so far.
struct EntryRef {
  std::size_t card;
  std::size_t place;

  friend auto operator<=>(const EntryRef&, const EntryRef&) = default;
};

// The records of several lists, one behind the other, without copying them. Records can be taken
// out.
class WorkingList {
 public:
  void Add(std::shared_ptr<const MediaProCard> card) { cards_.push_back(std::move(card)); }

  const MediaProEntry& At(EntryRef ref) const { return cards_[ref.card]->Entries()[ref.place]; }
  void TakeOut(EntryRef ref) { gone_.insert(ref); }

  std::size_t CardCount() const { return cards_.size(); }
  // The first record of that umid in the lists from that of card `from` on.
  std::optional<EntryRef> WithUmid(std::u16string_view umid, std::size_t from = 0) const {
    return First([umid](const MediaProCard& card) { return card.WithUmid(umid); },
                 [](const MediaProEntry&) { return true; }, from);
  }
  // The clips of that umid in the first list that has a record with it. More than one only on a
  // damaged card; each has its own files.
  std::vector<EntryRef> ClipsWith(std::u16string_view umid) const {
    std::vector<EntryRef> clips;
    const auto first = WithUmid(umid);
    if (!first) return clips;
    for (const std::size_t place : *cards_[first->card]->WithUmid(umid)) {
      const EntryRef ref{first->card, place};
      if (At(ref).kind == MediaProEntry::kClip) clips.push_back(ref);
    }
    return clips;
  }
  // The first take with that component, in any list or only in the one at `mediaProPath`.
  std::optional<EntryRef> TakeWith(std::u16string_view umid,
                                   const UTF16String& mediaProPath = {}) const {
    return First([umid](const MediaProCard& card) { return card.TakesWith(umid); },
                 [&mediaProPath](const MediaProEntry& entry) {
                   return mediaProPath.empty() || entry.mediaProPath == mediaProPath;
                 });
  }

 private:
  template <class Lookup, class Accept>
  std::optional<EntryRef> First(Lookup lookup, Accept accept, std::size_t from = 0) const {
    for (std::size_t card = from; card < cards_.size(); ++card) {
      const std::vector<std::size_t>* places = lookup(*cards_[card]);
      if (places == nullptr) continue;
      for (const std::size_t place : *places) {
        const EntryRef ref{card, place};
        if (!gone_.contains(ref) && accept(At(ref))) return ref;
      }
    }
    return std::nullopt;
  }

  std::vector<std::shared_ptr<const MediaProCard>> cards_;
  std::set<EntryRef> gone_;
};

struct NeighbourLists;

// The cards beside that of the list at `mediaPro` that have a list with records, one after the
// other. Nothing is known to be beside a card at the top of the file tree.
class NeighbourCards {
 public:
  explicit NeighbourCards(const UTF16String& mediaPro);

  // Null behind the last.
  std::shared_ptr<const MediaProCard> Next();

 private:
  std::shared_ptr<const NeighbourLists> lists_;
  std::size_t next_ = 0;
  std::size_t records_ = 0;
};

}  // namespace Sorvik::xdcamex
