// SPDX-License-Identifier: MIT
#include "providers/cards/P2Siblings.h"

#include <utility>

#include "foundation/CallScope.h"
#include "foundation/Mounts.h"
#include "foundation/Paths.h"
#include "providers/cards/Neighbours.h"
#include "providers/common/ClipReadAhead.h"

namespace Sorvik::p2 {
namespace {

using foundation::CardFolder;
using foundation::JoinPath;

void VisitOtherVolumes(const std::string& own, DirVisitor& visitor) {
  for (const platform::Volume& volume : foundation::ListVolumes()) {
    if (volume.isNetwork || volume.mountPoint == own) continue;
    if (!visitor.Visit(volume.mountPoint)) return;
  }
}

}  // namespace

void VisitSiblingDirectories(const std::string& path, DirVisitor& visitor) {
  const std::string own = foundation::NormalizedPath(path);
  if (own == "/" || foundation::IsMountPoint(own)) return VisitOtherVolumes(own, visitor);
  const auto parent = CardFolder::Of(foundation::ParentFolder(own));
  for (const std::string& name : parent->Folders()) {
    const std::string sibling = parent->PathOf(name);
    if (sibling == own || !CanAccessWithoutBlocking(sibling, own)) continue;
    if (!visitor.Visit(sibling)) return;
  }
}

bool ShotCompletingDirVisitor::Visit(const std::string& dir) {
  const auto clips = ListClipXmlFiles(dir);
  ReadClipsAhead(clips, cache_, request_);
  for (const std::string& xmlPath : clips) {
    if (IsAnsweredWithout(request_)) return false;
    AddClipToShots(xmlPath, incomplete_, cache_, shots_);
  }
  std::erase_if(incomplete_, [this](const std::string& id) {
    const auto shot = shots_.lower_bound(id);
    return shot != shots_.end() && shot->first == id && shot->second.IsComplete();
  });
  return !incomplete_.empty();
}

bool P2FileFinder::Visit(const std::string& dir) {
  std::string path = ContentsFile(JoinPath(dir, kContents), folder_, name_, extension_);
  if (!foundation::ExistsOnCard(path, foundation::Lookup::kDisk)) return true;
  result_ = std::move(path);
  return false;
}

P2ShotMap ShotsOfCard(const std::string& path, ClipValueCache& cache, ProviderRequest* request) {
  P2ShotMap shots;
  const auto clips = ListClipXmlFiles(path);
  ReadClipsAhead(clips, cache, request);
  for (const std::string& xmlPath : clips) {
    if (IsAnsweredWithout(request)) return shots;
    AddClipToShots(xmlPath, {}, cache, shots);
  }
  ShotIdSet incomplete;
  if (CollectIncompleteShots(shots, incomplete)) {
    ShotCompletingDirVisitor visitor(shots, incomplete, cache, request);
    VisitSiblingDirectories(path, visitor);
  }
  return shots;
}

const P2ShotInfo* CardShots::Of(std::string_view xmlPath) const {
  const auto found = byClip.find(xmlPath);
  return found == byClip.end() ? nullptr : found->second;
}

std::shared_ptr<const CardShots> SharedShotsOfCard(const std::string& path, ClipValueCache& cache) {
  return foundation::CallScope::Share<CardShots>(path, [&path, &cache] {
    auto card = std::make_shared<CardShots>();
    card->shots = ShotsOfCard(path, cache);
    for (const auto& [id, shot] : card->shots) {
      card->byClip.emplace(shot.primaryClipPath, &shot);
      for (const std::string& clip : shot.otherClipPaths) card->byClip.emplace(clip, &shot);
    }
    return card;
  });
}

}  // namespace Sorvik::p2
