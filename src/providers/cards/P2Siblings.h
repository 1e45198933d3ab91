// SPDX-License-Identifier: MIT
// The walk over the places beside a P2 card, where the rest of a shot or a clip's files may lie.
// Runs on the calling thread and may be slow.
#pragma once

#include "SorvikProvider/frame/FieldModel.h"
#include "foundation/tarnwick/FileSupport.h"
#include "providers/cards/P2Shots.h"

namespace Sorvik::p2 {

class DirVisitor {
 public:
  virtual ~DirVisitor() = default;
  // False ends the walk.
  virtual bool Visit(const tarnwick::filesupport::Dir& dir) = 0;
};

// Visits the folders beside the one at `path`, or the other volumes if that is the top of one.
// Network mounts are left out unless the card lies on the same: a server that is gone must not hold
// the walk.
void VisitSiblingDirectories(const UTF16String& path, DirVisitor& visitor);

// Adds the parts of incomplete shots, and ends the walk as soon as none is missing.
class ShotCompletingDirVisitor final : public DirVisitor {
 public:
  // All three belong to the caller and outlive the visitor.
  ShotCompletingDirVisitor(P2ShotMap& shots, ShotIdSet& incomplete, ClipValueCache& cache)
      : shots_(shots), incomplete_(incomplete), cache_(cache) {}
  bool Visit(const tarnwick::filesupport::Dir& dir) override;

 private:
  P2ShotMap& shots_;
  ShotIdSet& incomplete_;
  ClipValueCache& cache_;
};

// Finds a file in a folder of CONTENTS on the cards beside this one; what it finds stands in
// `result`.
class P2FileFinder final : public DirVisitor {
 public:
  P2FileFinder(UTF16String& result, UTF16String folder, UTF16String file)
      : result_(result), folder_(std::move(folder)), file_(std::move(file)) {}
  bool Visit(const tarnwick::filesupport::Dir& dir) override;

 private:
  UTF16String& result_;
  const UTF16String folder_;
  const UTF16String file_;
};

}  // namespace Sorvik::p2
