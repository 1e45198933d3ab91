// SPDX-License-Identifier: MIT
// The recordings of a Canon card whose clips are files directly in CONTENTS/CLIPS### (Cinema RAW
// Light, XF-AVC S, XF-HEVC S), without a folder for each clip.
//
// Cameras of the generation of the C80 split a recording into parts with numbered names:
//   A_0001C313A260711_101700EJ_CANON-008.MP4
// camera index, reel, clip, a letter, date, time, two random characters, a text of the user, the
// part number, and "_Proxy" for proxies. Parts share everything before the number. Older cameras
// (A001C004_22032472_CANON.CRM) write no parts. Names are compared ignoring case.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Sorvik::canonflat {

inline constexpr std::string_view kContents = "CONTENTS";

struct ClipName {
  std::string_view base;         // without part number and "_Proxy"
  std::optional<unsigned> part;  // nullopt without a part number
  bool isProxy = false;
};

// The parts of the stem of a clip's file name. Any name is a clip's name.
ClipName ParseClipName(std::string_view stem);

// True for CRM, MXF and MP4.
bool IsClipFile(std::string_view name);

struct Recording {
  std::string key;                   // the file name of the first part
  std::vector<std::string> parts;    // paths of the essence, in order
  std::vector<std::string> proxies;  // paths, in the order of the parts
  std::vector<std::string> files;    // paths of sidecars and sound files
};

struct NumberedPart {
  std::string path;
  bool exists = true;
};

// The parts of a recording, with those that are missing between the first and the last one: their
// numbers show that they existed. Parts before the first don't: a recording can begin on another
// card.
std::vector<NumberedPart> PartsWithGaps(const Recording& recording);

class Card {
 public:
  // The card at `root`, listed once within a call scope.
  static std::shared_ptr<const Card> Of(const std::string& root);
  // The recordings of one folder of clips.
  static Card OfClipFolder(const std::string& path);

  // Ordered by folder and name.
  const std::vector<Recording>& Recordings() const noexcept { return recordings_; }
  // The indexes of clip folders, and files that belong to no recording.
  const std::vector<std::string>& SharedFiles() const noexcept { return sharedFiles_; }
  const std::vector<std::string>& LooseFiles() const noexcept { return looseFiles_; }

  // The recording with that key; null if there is none.
  const Recording* Find(std::string_view key) const;

 private:
  class Builder;

  std::vector<Recording> recordings_;
  std::vector<std::string> sharedFiles_;
  std::vector<std::string> looseFiles_;
};

}  // namespace Sorvik::canonflat
