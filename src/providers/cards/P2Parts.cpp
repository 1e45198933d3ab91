// SPDX-License-Identifier: MIT
#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/XmlTree.h"
#include "frame/FieldValues.h"
#include "providers/cards/P2Shots.h"
#include "providers/cards/P2Siblings.h"
#include "providers/cards/ProviderP2.h"

namespace Sorvik {
namespace {

using foundation::FileStem;
using foundation::Lookup;
using p2::kMaxChannels;
using p2::kMaxClipXmlBytes;

// A clip of a shot in playing order.
struct ShotClip {
  std::string xmlPath;  // empty if the clip is missing
  std::string globalId;
};

// Puts the clips of a shot into the order of their references. A referenced clip that wasn't
// found is missing.
class ClipChain {
 public:
  ClipChain(const std::vector<std::string>& xmlPaths, ClipValueCache& cache) {
    for (const std::string& path : xmlPaths) {
      const FieldValueMap& values = cache.ValuesOf(path);
      const std::string relation = TextOf(values, "relation");
      Node node{path, p2::ParseRelation(relation, p2::kPreviousClipId),
                p2::ParseRelation(relation, p2::kNextClipId)};
      std::string id = TextOf(values, "identifier");
      // No clip gets lost: a clip without an id, or with that of another one, is found by its path.
      if (id.empty() || nodes_.contains(id)) id = path;
      if (!node.previous.empty()) byPrevious_.emplace(node.previous, id);
      if (top_.empty()) top_ = p2::ParseRelation(relation, p2::kTopClipId);
      nodes_.emplace(id, std::move(node));
    }
  }

  std::vector<ShotClip> InOrder() {
    if (!top_.empty()) Follow(top_);
    // After a gap of several clips nothing refers to the rest: the clip before it is missing, too.
    for (const auto& [id, node] : nodes_) {
      if (seen_.contains(id) || nodes_.contains(node.previous)) continue;
      Follow(node.previous.empty() || seen_.contains(node.previous) ? id : node.previous);
    }
    // References in a cycle.
    for (const auto& [id, node] : nodes_) Follow(id);
    return std::move(order_);
  }

 private:
  struct Node {
    std::string xmlPath;
    std::string previous;
    std::string next;
  };

  void Add(const std::string& id, const std::string& xmlPath) {
    seen_.insert(id);
    order_.push_back({xmlPath, id});
  }

  void Follow(std::string id) {
    while (!id.empty() && !seen_.contains(id)) {
      const auto node = nodes_.find(id);
      if (node != nodes_.end()) {
        Add(id, node->second.xmlPath);
        id = node->second.next;
        continue;
      }
      Add(id, {});
      const auto after = byPrevious_.find(id);
      id = after == byPrevious_.end() ? std::string() : after->second;
    }
  }

  std::map<std::string, Node> nodes_;              // by global id
  std::map<std::string, std::string> byPrevious_;  // the id of the clip after it
  std::string top_;
  std::set<std::string> seen_;
  std::vector<ShotClip> order_;
};

// A file that a clip has: where it is on a card.
struct Essence {
  std::string_view folder;
  std::string extension;  // with the channel
  ShotTrack track;
  unsigned channel = 0;
};

std::vector<Essence> AllEssences() {
  std::vector<Essence> all = {{p2::kAVClip, ".MXF", ShotTrack::kPictureAndSound},
                              {p2::kVideo, ".MXF", ShotTrack::kPicture}};
  for (unsigned i = 0; i < kMaxChannels; ++i) {
    all.push_back(
        {p2::kAudio, (i < 10 ? "0" : "") + std::to_string(i) + ".MXF", ShotTrack::kSound, i + 1});
  }
  return all;
}

std::string PathOf(const Essence& essence, const std::string& xmlPath) {
  return p2::ContentsFile(p2::ContentsOfClipXml(xmlPath), essence.folder, FileStem(xmlPath),
                          essence.extension);
}

// How many channels the record of a clip lists.
std::size_t ListedChannels(const std::string& xmlPath) {
  const auto document = foundation::ReadXmlFile(xmlPath, {.bytes = kMaxClipXmlBytes});
  const auto* essence = document ? document->Root().Find({"ClipContent", "EssenceList"}) : nullptr;
  return essence == nullptr ? 0 : essence->ChildrenNamed("Audio").size();
}

// The files of one track over all clips; empty if no clip has such a file.
std::vector<ListedPart> PartsOfTrack(const Essence& essence, const std::vector<ShotClip>& clips,
                                     std::size_t listedChannels) {
  std::vector<ListedPart> parts;
  bool used = essence.track == ShotTrack::kSound && essence.channel <= listedChannels;
  for (const ShotClip& clip : clips) {
    ListedPart part;
    part.track = essence.track;
    part.channel = essence.channel;
    part.name = clip.xmlPath.empty() ? clip.globalId : std::string(FileStem(clip.xmlPath));
    part.record = clip.xmlPath;
    if (!clip.xmlPath.empty()) part.path = PathOf(essence, clip.xmlPath);
    part.isPresent = !part.path.empty() && foundation::ExistsOnCard(part.path, Lookup::kListing);
    used = used || part.isPresent;
    parts.push_back(std::move(part));
  }
  if (!used) parts.clear();
  return parts;
}

// The clips of the shot that contains a clip.
struct ClipsOfShot {
  std::shared_ptr<const std::vector<std::string>> clips;
  bool isOnCard = false;  // the clip itself, and not only one of the same name on another card
};

// The shots of a card by the titles of their clips. Kept in the call scope, because a catalogue
// requests the parts of each clip.
struct ShotsByClip {
  std::map<std::string, ClipsOfShot, std::less<>> shots;
};

ShotsByClip ReadShots(const std::string& path, ClipValueCache& cache) {
  const std::string card = foundation::JoinPath(foundation::NormalizedPath(path), {});
  const auto shots = p2::SharedShotsOfCard(path, cache);
  ShotsByClip result;
  for (const auto& [id, shot] : shots->shots) {
    auto paths = std::make_shared<std::vector<std::string>>(shot.otherClipPaths);
    paths->push_back(shot.primaryClipPath);
    const std::shared_ptr<const std::vector<std::string>> clips = std::move(paths);
    for (const std::string& clip : *clips) {
      ClipsOfShot& known = result.shots[std::string(FileStem(clip))];
      if (known.isOnCard) continue;
      known = {clips, foundation::NormalizedPath(clip).starts_with(card)};
    }
  }
  return result;
}

std::vector<std::string> FindClipsOfShot(const std::string& path, const std::string& key,
                                         ClipValueCache& cache) {
  const auto all = foundation::CallScope::Remember<ShotsByClip>(
      path, [&path, &cache] { return ReadShots(path, cache); });
  const auto found = all->shots.find(key);
  return found == all->shots.end() ? std::vector<std::string>() : *found->second.clips;
}

}  // namespace

std::vector<ListedPart> ProviderP2::ListParts(const std::string& path,
                                              const std::string& key) const {
  ClipValueCache cache(p2::WithShotFields({}));
  const std::vector<std::string> xmlPaths = FindClipsOfShot(path, key, cache);
  const std::vector<ShotClip> clips = ClipChain(xmlPaths, cache).InOrder();
  std::size_t listedChannels = 0;
  std::vector<ListedPart> parts;
  for (const std::string& xml : xmlPaths) {
    listedChannels = std::max(listedChannels, ListedChannels(xml));
  }
  for (const Essence& essence : AllEssences()) {
    // Long-GOP clips have one file with all channels.
    const bool isCombined = !parts.empty() && parts.front().track == ShotTrack::kPictureAndSound;
    std::vector<ListedPart> track = PartsOfTrack(essence, clips, isCombined ? 0 : listedChannels);
    std::ranges::move(track, std::back_inserter(parts));
  }
  return parts;
}

}  // namespace Sorvik
