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
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "providers/cards/TakeCards.h"

namespace Sorvik::xdcamex {
namespace {

using formats::sony::TakePlaylist;
using foundation::CallScope;
using foundation::ExistsOnCard;
using foundation::FoldCase;
using foundation::JoinPath;
using foundation::Lookup;

using Umids = std::vector<std::string>;

// With a separator at its end, because the name of a clip may begin with that of the folder.
constexpr std::string_view kInCardFolder = "/BPAV/";

std::string ListOfCard(const std::string& mp4Path) {
  const auto card = mp4Path.rfind(kInCardFolder);
  if (card == mp4Path.npos) return {};
  return mp4Path.substr(0, card + kInCardFolder.size()) + "MEDIAPRO.XML";
}

void AddSideFiles(const std::string& mediaPro, std::vector<std::string>& sideFiles) {
  const std::string_view folder = foundation::ParentFolder(mediaPro);
  for (const char* name : {"MEDIAPRO.BAK", "CUEUP.XML"}) {
    std::string path = JoinPath(folder, name);
    if (ExistsOnCard(path, Lookup::kListing)) sideFiles.push_back(std::move(path));
  }
  sideFiles.push_back(JoinPath(folder, "TAKR"));
}

struct PlaylistRecord {
  std::optional<TakePlaylist> playlist;
};

std::optional<TakePlaylist> ReadTakePlaylist(const std::string& smiPath) {
  return CallScope::Remember<PlaylistRecord>(
             smiPath,
             [&smiPath] {
               const auto found = foundation::FindOnCard(smiPath);
               return PlaylistRecord{found ? TakePlaylist::Read(*found) : std::nullopt};
             })
      ->playlist;
}

// Assembles a take from its parts.
class TakeSearch {
 public:
  TakeSearch(std::string mediaPro, WorkingList entries, EntryRef clip, EntryRef take)
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
  // The number of records in the assembled take.
  std::size_t Cost() const { return sources_.size() + take_.componentUmids.size(); }

 private:
  // A playlist without a known source counts as missing: the components in the list are used.
  void ReadOwnPlaylist() {
    sources_ = take_.componentUmids;
    if (take_.materialPath.empty()) return;
    auto playlist = ReadTakePlaylist(take_.materialPath);
    if (!playlist) return;
    const bool known = std::ranges::any_of(playlist->sources, [this](const std::string& umid) {
      return entries_.WithUmid(umid).has_value();
    });
    if (!known) return;
    sources_ = std::move(playlist->sources);
    complete_ = playlist->complete;
  }

  void NoteMissing() {
    for (const std::string& umid : take_.componentUmids) {
      if (!umid.empty() && !entries_.WithUmid(umid)) missing_.insert(FoldCase(umid));
    }
  }

  void SearchNeighbours() {
    if (!complete_ && !sources_.empty()) last_ = sources_.back();
    NeighbourCards cards(mediaPro_);
    while (const auto card = cards.Next()) {
      entries_.Add(card);
      std::erase_if(missing_, [&card](const std::string& umid) { return card->WithUmid(umid); });
      if (!complete_) Continue();
      if (missing_.empty() && complete_) return;
    }
  }

  // The last part of an incomplete playlist has a playlist of its own, on its own card.
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

  // Replaces takes among the sources by their components. Each take is expanded once, because takes
  // may contain themselves or one another.
  void Expand() {
    std::set<std::string> expanded;
    for (std::size_t i = 0; i < sources_.size(); ++i) {
      const auto record = entries_.WithUmid(sources_[i]);
      if (!record || entries_.At(*record).kind != MediaProEntry::kTake) continue;
      if (!expanded.insert(FoldCase(sources_[i])).second) continue;
      sources_ = Umids(entries_.At(*record).componentUmids);
      i = static_cast<std::size_t>(-1);  // restart
    }
  }

  bool NamesClip() const {
    return std::ranges::any_of(sources_, [this](const std::string& umid) {
      const auto record = entries_.WithUmid(umid);
      return record && entries_.At(*record).kind == MediaProEntry::kClip;
    });
  }

  // The clip itself is always a part, and so are the other clips of the take on its card: a listing
  // merges them into one entry.
  void KeepOwnClips() {
    std::set<std::string> named;
    for (const std::string& umid : sources_) named.insert(FoldCase(umid));
    if (!named.contains(FoldCase(clip_.umid))) sources_.insert(sources_.begin(), clip_.umid);
    for (const std::string& umid : take_.componentUmids) {
      const auto record = entries_.WithUmid(umid);
      if (!record || record->card != 0 || named.contains(FoldCase(umid))) continue;
      sources_.push_back(umid);
    }
  }

  TakeFiles Collect() {
    TakeFiles files;
    std::set<std::string> done;  // a playlist may repeat a clip
    for (const std::string& umid : sources_) {
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
      entries_.Remove(*take);
      files.takes.push_back(entries_.At(*take));
    }
  }

  const std::string mediaPro_;
  WorkingList entries_;
  const MediaProEntry& clip_;  // both owned by the cards in the list
  const MediaProEntry& take_;
  Umids sources_;
  bool complete_ = true;
  std::string last_;                         // the part after which the take continues
  std::size_t cardsWithoutLast_ = 0;         // the first cards, known not to contain it
  std::unordered_set<std::string> missing_;  // components that are in no list, folded
};

void AddIfExists(const std::string& path, std::vector<std::string>& paths) {
  if (path.empty()) return;
  if (auto found = foundation::FindOnCard(path)) paths.push_back(std::move(*found));
}

}  // namespace

TakeFiles GatherTake(const std::string& mp4Path, std::size_t& recordsLeft) {
  TakeFiles files;
  const std::string mediaPro = ListOfCard(mp4Path);
  if (mediaPro.empty() || !ExistsOnCard(mediaPro, Lookup::kListing)) return files;
  files.mediaProFiles.push_back(mediaPro);
  AddSideFiles(mediaPro, files.sideFiles);
  const auto card = MediaProCard::Of(mediaPro);
  const auto index = card->WithEssence(foundation::FileName(mp4Path));
  if (!index) return files;
  WorkingList entries;
  entries.Add(card);
  const EntryRef clip{0, *index};
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

namespace {

// Removes the parts whose essence exists on another card, and notes where the others should be.
void DropPartsOn(const MediaProCard& card, std::vector<MissingPart>& missing) {
  std::erase_if(missing, [&card](MissingPart& part) {
    const auto* records = card.WithUmid(part.umid);
    if (records == nullptr) return false;
    const MediaProEntry& record = card.Entries()[records->front()];
    if (record.kind != MediaProEntry::kClip || foundation::FindOnCard(record.essencePath)) {
      return true;
    }
    part.path = record.essencePath;
    return false;
  });
}

}  // namespace

std::vector<MissingPart> MissingParts(const std::string& mediaPro, const MediaProEntry& take) {
  std::vector<MissingPart> missing;
  const auto own = MediaProCard::Of(mediaPro);
  for (const std::string& umid : take.componentUmids) {
    if (!umid.empty() && own->WithUmid(umid) == nullptr) missing.push_back({umid, {}});
  }
  const auto playlist = ReadTakePlaylist(take.materialPath);
  if (playlist && !playlist->complete && !playlist->sources.empty()) {
    const std::string& last = playlist->sources.back();
    const auto same = [&last](const MissingPart& part) {
      return foundation::EqualIgnoringCase(part.umid, last);
    };
    if (std::ranges::none_of(missing, same)) missing.push_back({last, {}});
  }
  NeighbourCards cards(mediaPro);
  while (!missing.empty()) {
    const auto card = cards.Next();
    if (card == nullptr) break;
    DropPartsOn(*card, missing);
  }
  return missing;
}

std::vector<std::string> PathsOf(const TakeFiles& files, const std::string& own) {
  std::vector<std::string> paths;
  for (const MediaProEntry& clip : files.clips) {
    if (!foundation::EqualIgnoringCase(clip.essencePath, own)) AddIfExists(clip.essencePath, paths);
    for (const auto& path :
         {clip.xmlPath, clip.bimPath, clip.ppnPath, clip.materialPath, clip.xmpPath}) {
      AddIfExists(path, paths);
    }
  }
  for (const MediaProEntry& take : files.takes) {
    AddIfExists(take.xmlPath, paths);
    AddIfExists(take.materialPath, paths);
  }
  for (const auto* list : {&files.mediaProFiles, &files.sideFiles}) {
    for (const std::string& path : *list) {
      if (ExistsOnCard(path, Lookup::kListing)) paths.push_back(path);
    }
  }
  return paths;
}

}  // namespace Sorvik::xdcamex
