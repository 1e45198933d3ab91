// SPDX-License-Identifier: MIT
#include "providers/cards/TakeFiles.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <unordered_set>
#include <utility>

#include "formats/sony/TakePlaylist.h"
#include "foundation/CallScope.h"
#include "foundation/FoldedNames.h"
#include "foundation/Presence.h"
#include "foundation/hestra/PathUtils.h"
#include "providers/cards/TakeCards.h"

namespace Sorvik::xdcamex {
namespace {

namespace PathUtils = Hestra::PathUtils;
using formats::sony::TakePlaylist;
using foundation::CallScope;
using foundation::IsPresent;
using foundation::Lookup;
using PathUtils::CombinePaths;
using tarnwick::utility::FoldCase;

using Umids = std::vector<UTF16String>;

// With the separator behind it: names of clips may begin alike.
constexpr std::u16string_view kInCardFolder = u"/BPAV/";

UTF16String ListOfCard(const UTF16String& mp4Path) {
  const auto card = mp4Path.rfind(kInCardFolder);
  if (card == mp4Path.npos) return {};
  const UTF16String folder = mp4Path.substr(0, card + kInCardFolder.size() - 1);
  return CombinePaths(folder, u"MEDIAPRO.XML");
}

void AddSideFiles(const UTF16String& mediaPro, std::vector<UTF16String>& sideFiles) {
  const UTF16String folder = PathUtils::GetFullDirectoryPart(mediaPro);
  for (const char16_t* name : {u"MEDIAPRO.BAK", u"CUEUP.XML"}) {
    UTF16String path = folder + name;
    if (IsPresent(path, Lookup::kListing)) sideFiles.push_back(std::move(path));
  }
  sideFiles.push_back(folder + u"TAKR");
}

struct PlaylistRecord {
  std::optional<TakePlaylist> playlist;
};

std::optional<TakePlaylist> ReadTakePlaylist(const UTF16String& smiPath) {
  return CallScope::Remember<PlaylistRecord>(
             Hestra::MakeStdString(smiPath),
             [&smiPath] { return PlaylistRecord{TakePlaylist::Read(smiPath)}; })
      ->playlist;
}

// Follows the steps in which a take is put together from its parts.
class TakeSearch {
 public:
  TakeSearch(UTF16String mediaPro, WorkingList entries, EntryRef clip, EntryRef take)
      : mediaPro_(std::move(mediaPro)),
        entries_(std::move(entries)),
        clip_(entries_.At(clip)),
        take_(entries_.At(take)) {}

  TakeFiles Run() {
    ReadOwnPlaylist();
    NoteMissing();
    if (!missing_.empty()) SearchNeighbours();
    Expand();
    if (!NamesClip()) {
      sources_ = take_.componentUmids;
      Expand();
    }
    KeepOwnClips();
    return Collect();
  }
  // How many records the take named, once it has been put together.
  std::size_t Cost() const { return sources_.size() + take_.componentUmids.size(); }

 private:
  // A playlist that names nothing known stands for none: the list's own components do.
  void ReadOwnPlaylist() {
    sources_ = take_.componentUmids;
    if (take_.materialPath.empty() || !IsPresent(take_.materialPath, Lookup::kListing)) return;
    auto playlist = ReadTakePlaylist(take_.materialPath);
    if (!playlist) return;
    const bool known = std::ranges::any_of(playlist->sources, [this](const UTF16String& umid) {
      return entries_.WithUmid(umid).has_value();
    });
    if (!known) return;
    sources_ = std::move(playlist->sources);
    complete_ = playlist->complete;
  }

  void NoteMissing() {
    for (const UTF16String& umid : take_.componentUmids) {
      if (!umid.empty() && !entries_.WithUmid(umid)) missing_.insert(FoldCase(umid));
    }
  }

  void SearchNeighbours() {
    if (!complete_ && !sources_.empty()) last_ = sources_.back();
    NeighbourCards cards(mediaPro_);
    while (const auto card = cards.Next()) {
      entries_.Add(card);
      std::erase_if(missing_, [&card](const UTF16String& umid) { return card->WithUmid(umid); });
      if (!complete_) Continue();
      if (missing_.empty() && complete_) return;
    }
  }

  // Where a take goes on, the part named last has a playlist of its own on its card.
  void Continue() {
    const auto record = entries_.WithUmid(last_, cardsWithoutLast_);
    if (!record) {
      cardsWithoutLast_ = entries_.CardCount();
      return;
    }
    auto playlist = ReadTakePlaylist(entries_.At(*record).materialPath);
    if (!playlist) return;
    if (playlist->complete) {
      sources_ = std::move(playlist->sources);
      complete_ = true;
    } else if (!playlist->sources.empty()) {
      last_ = playlist->sources.back();
      cardsWithoutLast_ = 0;
    }
  }

  // Takes among the sources stand for their components. Each counts once, for takes may hold
  // themselves or one another.
  void Expand() {
    std::set<UTF16String> expanded;
    for (std::size_t i = 0; i < sources_.size(); ++i) {
      const auto record = entries_.WithUmid(sources_[i]);
      if (!record || entries_.At(*record).kind != MediaProEntry::kTake) continue;
      if (!expanded.insert(FoldCase(sources_[i])).second) continue;
      sources_ = Umids(entries_.At(*record).componentUmids);
      i = static_cast<std::size_t>(-1);  // from the start again
    }
  }

  bool NamesClip() const {
    return std::ranges::any_of(sources_, [this](const UTF16String& umid) {
      const auto record = entries_.WithUmid(umid);
      return record && entries_.At(*record).kind == MediaProEntry::kClip;
    });
  }

  // The clip that was asked about is a part whatever the playlist says, and so are the others of
  // the take on its card: a listing folds them into one entry.
  void KeepOwnClips() {
    std::set<UTF16String> named;
    for (const UTF16String& umid : sources_) named.insert(FoldCase(umid));
    if (!named.contains(FoldCase(clip_.umid))) sources_.insert(sources_.begin(), clip_.umid);
    for (const UTF16String& umid : take_.componentUmids) {
      const auto record = entries_.WithUmid(umid);
      if (!record || record->card != 0 || named.contains(FoldCase(umid))) continue;
      sources_.push_back(umid);
    }
  }

  TakeFiles Collect() {
    TakeFiles files;
    std::set<UTF16String> done;  // a playlist may repeat a clip
    for (const UTF16String& umid : sources_) {
      if (!done.insert(FoldCase(umid)).second) continue;
      for (const EntryRef clip : entries_.ClipsWith(umid)) AddClip(entries_.At(clip), files);
    }
    return files;
  }

  void AddClip(const MediaProEntry& clip, TakeFiles& files) {
    files.clips.push_back(clip);
    if (std::ranges::find(files.mediaProFiles, clip.mediaProPath) == files.mediaProFiles.end()) {
      files.mediaProFiles.push_back(clip.mediaProPath);
      AddSideFiles(clip.mediaProPath, files.sideFiles);
    }
    if (const auto take = entries_.TakeWith(clip.umid, clip.mediaProPath)) {
      entries_.TakeOut(*take);
      files.takes.push_back(entries_.At(*take));
    }
  }

  const UTF16String mediaPro_;
  WorkingList entries_;
  const MediaProEntry& clip_;  // both owned by the cards in the list
  const MediaProEntry& take_;
  Umids sources_;
  bool complete_ = true;
  UTF16String last_;                         // the part after which the take goes on
  std::size_t cardsWithoutLast_ = 0;         // so many cards needn't be searched for it again
  std::unordered_set<UTF16String> missing_;  // components that no list names, folded
};

void AddIfThere(const UTF16String& path, std::vector<UTF16String>& paths) {
  if (path.empty()) return;
  if (auto found = foundation::FoundOnDisk(path)) paths.push_back(std::move(*found));
}

}  // namespace

TakeFiles GatherTake(const UTF16String& mp4Path, std::size_t& recordsLeft) {
  TakeFiles files;
  const UTF16String mediaPro = ListOfCard(mp4Path);
  if (mediaPro.empty() || !IsPresent(mediaPro, Lookup::kListing)) return files;
  files.mediaProFiles.push_back(mediaPro);
  AddSideFiles(mediaPro, files.sideFiles);
  const auto card = MediaProCard::Of(mediaPro);
  const auto place = card->OfEssence(PathUtils::GetFullFilePart(mp4Path));
  if (!place) return files;
  WorkingList entries;
  entries.Add(card);
  const EntryRef clip{0, *place};
  const auto take = entries.TakeWith(entries.At(clip).umid);
  if (!take || recordsLeft == 0) {
    files.clips.push_back(entries.At(clip));
    return files;
  }
  TakeSearch search(mediaPro, std::move(entries), clip, *take);
  files = search.Run();
  recordsLeft -= std::min(recordsLeft, search.Cost());
  return files;
}

std::vector<UTF16String> MissingParts(const UTF16String& mediaPro, const MediaProEntry& take) {
  std::vector<UTF16String> missing = take.componentUmids;
  const auto dropKnown = [&missing](const MediaProCard& card) {
    std::erase_if(missing, [&card](const UTF16String& umid) {
      return umid.empty() || card.WithUmid(umid) != nullptr;
    });
  };
  dropKnown(*MediaProCard::Of(mediaPro));
  if (missing.empty()) return missing;
  NeighbourCards cards(mediaPro);
  while (const auto card = cards.Next()) {
    dropKnown(*card);
    if (missing.empty()) break;
  }
  return missing;
}

std::vector<UTF16String> PathsOf(const TakeFiles& files, const UTF16String& own) {
  std::vector<UTF16String> paths;
  const UTF16String foldedOwn = FoldCase(own);
  for (const MediaProEntry& clip : files.clips) {
    if (FoldCase(clip.essencePath) != foldedOwn) AddIfThere(clip.essencePath, paths);
    for (const auto& path :
         {clip.xmlPath, clip.bimPath, clip.ppnPath, clip.materialPath, clip.xmpPath}) {
      AddIfThere(path, paths);
    }
  }
  for (const MediaProEntry& take : files.takes) {
    AddIfThere(take.xmlPath, paths);
    AddIfThere(take.materialPath, paths);
  }
  for (const auto* list : {&files.mediaProFiles, &files.sideFiles}) {
    for (const UTF16String& path : *list) {
      if (IsPresent(path, Lookup::kListing)) paths.push_back(path);
    }
  }
  return paths;
}

}  // namespace Sorvik::xdcamex
