// SPDX-License-Identifier: MIT
// The search of the places next to a P2 card, which may contain the rest of a shot or the files of
// a clip. Runs on the calling thread and may be slow.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "providers/cards/P2Shots.h"

namespace Sorvik::p2 {

class DirVisitor {
 public:
  virtual ~DirVisitor() = default;
  // Returns false to end the search.
  virtual bool Visit(const std::string& dir) = 0;
};

// Visits the siblings of the folder at `path`; the other volumes if `path` is the root of one.
// Skips network mounts other than the card's own: an unreachable server must not block the search.
void VisitSiblingDirectories(const std::string& path, DirVisitor& visitor);

// Adds the missing parts of incomplete shots. Ends the search as soon as none is incomplete.
class ShotCompletingDirVisitor final : public DirVisitor {
 public:
  // All belong to the caller and outlive the visitor; `request` may be null.
  ShotCompletingDirVisitor(P2ShotMap& shots, ShotIdSet& incomplete, ClipValueCache& cache,
                           ProviderRequest* request)
      : shots_(shots), incomplete_(incomplete), cache_(cache), request_(request) {}
  bool Visit(const std::string& dir) override;

 private:
  P2ShotMap& shots_;
  ShotIdSet& incomplete_;
  ClipValueCache& cache_;
  ProviderRequest* request_;
};

// The shots of the card at `path`, with their parts on cards next to it.
P2ShotMap ShotsOfCard(const std::string& path, ClipValueCache& cache,
                      ProviderRequest* request = nullptr);

// The same, cached in the call scope; can't be aborted.
struct CardShots {
  CardShots() = default;
  CardShots(const CardShots&) = delete;  // byClip points into shots
  CardShots& operator=(const CardShots&) = delete;

  P2ShotMap shots;
  std::map<std::string, const P2ShotInfo*, std::less<>>
      byClip;  // by the paths of the clip XML files

  // Returns the shot that contains a clip; nullptr if there is none.
  const P2ShotInfo* Of(std::string_view xmlPath) const;
};
std::shared_ptr<const CardShots> SharedShotsOfCard(const std::string& path, ClipValueCache& cache);

// Finds the file `name` + `extension` in a folder of CONTENTS on another card. `result` receives
// its path and stays unchanged if there is none.
class P2FileFinder final : public DirVisitor {
 public:
  P2FileFinder(std::string& result, std::string_view folder, std::string_view name,
               std::string_view extension)
      : result_(result), folder_(folder), name_(name), extension_(extension) {}
  bool Visit(const std::string& dir) override;

 private:
  std::string& result_;
  const std::string folder_;
  const std::string name_;
  const std::string extension_;
};

}  // namespace Sorvik::p2
