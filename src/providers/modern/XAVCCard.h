// SPDX-License-Identifier: MIT
// The clips of an XAVC card (M4ROOT, XDROOT) with all their files: the material list joined with
// what the folders contain.
//
// A file belongs to the clip whose material names it; if no material does, to the clip whose stem
// it has, followed by a letter and two digits: C0001M01.XML, C0001S03.MP4, C0001T01.JPG,
// C0001R01.BIM. Clip numbers mean nothing: they don't start at 1, have gaps, and several cameras
// write to one card. Names are compared ignoring case and reported as on disk.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/sony/MediaProfile.h"
#include "foundation/CardFolder.h"

namespace Sorvik::xavc {

inline constexpr std::string_view kClipFolder = "CLIP";
inline constexpr std::string_view kProxyFolder = "SUB";
inline constexpr std::string_view kThumbnailFolder = "THMBNL";
inline constexpr std::string_view kGeneralFolder = "GENERAL";
inline constexpr std::string_view kIndex = "MEDIAPRO.XML";

// Names in the root of a card: those of both layouts.
inline constexpr std::string_view kStructureFolders[] = {
    kClipFolder, kProxyFolder, kThumbnailFolder, kGeneralFolder, "TAKE", "EDIT", "USERDATA"};
// Those of them with files that belong to no clip.
inline constexpr std::string_view kOtherFolders[] = {kGeneralFolder, "TAKE", "EDIT", "USERDATA"};
inline constexpr std::string_view kStructureFiles[] = {kIndex, "STATUS.BIN", "CUEUP.XML",
                                                       "DISCMETA.XML"};

// The letter and two digits at the end of a stem: "M01".
inline constexpr std::size_t kKindSize = 3;

// True for the name of an essence file: MP4 or MXF.
bool IsEssenceName(std::string_view name);
// True for "<stem>" followed by `letter`, two digits and an extension.
bool IsFileOfKind(std::string_view name, char letter);
// The path of a file in a subfolder of the root, all compared ignoring case.
std::optional<std::string> FindInRoot(const std::string& root, std::string_view folder,
                                      std::string_view name);

struct Clip {
  std::string essence;  // the file name; of a missing file as the material list spells it
  bool exists = false;
  const formats::sony::Material* material = nullptr;  // null if the list doesn't contain it
  std::vector<std::string> files;                     // paths of its other files, sorted

  // Paths; empty if there is none.
  std::string Record() const;
  std::string Proxy() const;
  std::string Thumbnail() const;

 private:
  std::string FirstFile(char kind, bool (*hasExtension)(std::string_view)) const;
};

class Card {
 public:
  // The card at `root`, read once within a call scope.
  static std::shared_ptr<const Card> Of(const std::string& root);

  const std::string& Root() const noexcept { return root_; }
  const formats::sony::MediaProfile& Index() const noexcept { return *index_; }
  // The path of the material list; empty if there is none.
  const std::string& IndexPath() const noexcept { return indexPath_; }
  // In the order of the list, which is the order of recording; then those that aren't listed, by
  // name. Includes clips whose essence is missing but not those of which nothing is left.
  const std::vector<Clip>& Clips() const noexcept { return clips_; }
  // The materials of which nothing is left: cards that weren't formatted list them.
  const std::vector<const formats::sony::Material*>& StaleMaterials() const noexcept {
    return stale_;
  }
  // The files of the card itself, its folders with files that belong to no clip, and such files in
  // the folders of clips.
  const std::vector<std::string>& SharedFiles() const noexcept { return sharedFiles_; }
  const std::vector<std::string>& SharedFolders() const noexcept { return sharedFolders_; }
  const std::vector<std::string>& LooseFiles() const noexcept { return looseFiles_; }
  std::string PathOf(const Clip& clip) const;

  // The clip with that essence name; null if there is none.
  const Clip* Find(std::string_view essence) const;
  // The clips that continue `clip` as parts of one recording, in order.
  std::vector<const Clip*> PartsAfter(const Clip& clip) const;
  bool IsLaterPart(const Clip& clip) const;

 private:
  class Builder;

  // The neighbors of a clip among the clips of its camera: the material list mixes all cameras.
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  struct Link {
    std::size_t previous;
    std::size_t next;
  };

  void LinkClips();
  const Clip* ClipAt(std::size_t index) const;
  const Link& LinkOf(const Clip& clip) const;

  std::string root_;
  std::string clipFolder_;
  std::string indexPath_;
  std::shared_ptr<const formats::sony::MediaProfile> index_;
  std::vector<Clip> clips_;
  std::vector<Link> links_;  // of the clips
  std::vector<const formats::sony::Material*> stale_;
  std::vector<std::string> sharedFiles_;
  std::vector<std::string> sharedFolders_;
  std::vector<std::string> looseFiles_;
};

}  // namespace Sorvik::xavc
