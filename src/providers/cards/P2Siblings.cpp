// SPDX-License-Identifier: MIT
#include "providers/cards/P2Siblings.h"

#include <string>

#include "foundation/hestra/PathUtils.h"
#include "foundation/platform/Volumes.h"
#include "providers/cards/Neighbours.h"

namespace Sorvik::p2 {
namespace {

namespace PathUtils = Hestra::PathUtils;
using tarnwick::filesupport::Dir;

void VisitOtherVolumes(const std::string& own, DirVisitor& visitor) {
  for (const platform::Volume& volume : platform::ListVolumes()) {
    if (volume.isNetwork || volume.mountPoint == own) continue;
    if (!visitor.Visit(Dir(Hestra::MakeString(volume.mountPoint)))) return;
  }
}

}  // namespace

void VisitSiblingDirectories(const UTF16String& path, DirVisitor& visitor) {
  const Dir dir(PathUtils::ToNormalizedPath(path));
  const std::string own = Hestra::MakeStdString(dir.FullPath());
  if (dir.IsTopLevelDir() || platform::IsMountPoint(own)) return VisitOtherVolumes(own, visitor);
  for (const Dir& sibling : dir.Parent().Subdirs()) {
    if (sibling.FullPath() == dir.FullPath()) continue;
    if (!MayLookAt(sibling.FullPath(), dir.FullPath())) continue;
    if (!visitor.Visit(sibling)) return;
  }
}

bool ShotCompletingDirVisitor::Visit(const Dir& dir) {
  for (const UTF16String& xmlPath : ListClipXmlFiles(dir.FullPath())) {
    AddClipToShots(xmlPath, incomplete_, cache_, shots_);
  }
  std::erase_if(incomplete_, [this](const std::string& id) {
    const auto shot = shots_.lower_bound(id);
    return shot != shots_.end() && shot->first == id && shot->second.IsComplete();
  });
  return !incomplete_.empty();
}

bool P2FileFinder::Visit(const Dir& dir) {
  UTF16String path = dir.SubDir(kContents).SubDir(folder_).FileNamed(file_).FullPath();
  if (!foundation::IsPresent(path, foundation::Lookup::kDisk)) return true;
  result_ = std::move(path);
  return false;
}

}  // namespace Sorvik::p2
