// SPDX-License-Identifier: MIT
// The clips of a PANA_GRP folder of a Panasonic camcorder. Folders are called after the format that
// they contain, "001RAQAM": number, frame size, rate, scan, "A", and M for the main recording or T
// for the simultaneous one of the second slot. Names are compared ignoring case.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Sorvik::panagroup {

inline constexpr std::string_view kRoot = "PANA_GRP";

// The meaning of a folder name. Letters for further formats exist and have no published meaning;
// their fields are empty.
struct FolderCode {
  unsigned width = 0;
  unsigned height = 0;
  std::string_view frameRate = {};  // "59.94"
  bool isProgressive = false;
  bool isSimultaneous = false;
  bool isComplete = false;  // all letters are known
};

// Returns nullopt if the name hasn't the form of such a folder.
std::optional<FolderCode> ParseFolderName(std::string_view name);

struct Clip {
  std::string key;  // "001RAQAM/A001C001.MOV"
  std::string path;
  FolderCode code;
  std::vector<std::string> files;  // of the same stem: thumbnails and anything else
};

class Card {
 public:
  // The card at `root`, listed once within a call scope.
  static std::shared_ptr<const Card> Of(const std::string& root);

  const std::vector<Clip>& Clips() const noexcept { return clips_; }
  const Clip* Find(std::string_view key) const;
  // The folders with clips, and the indexes and backups in them and in the root.
  const std::vector<std::string>& Folders() const noexcept { return folders_; }
  const std::vector<std::string>& SharedFiles() const noexcept { return sharedFiles_; }
  // True if the root or a folder contains something else.
  bool HasUnrelated() const noexcept { return hasUnrelated_; }
  // True if the name of a folder consists of known letters.
  bool HasKnownFormat() const noexcept { return hasKnownFormat_; }

 private:
  void AddFolder(const std::string& path, const FolderCode& code);

  std::vector<Clip> clips_;
  std::vector<std::string> folders_;
  std::vector<std::string> sharedFiles_;
  bool hasUnrelated_ = false;
  bool hasKnownFormat_ = false;
};

}  // namespace Sorvik::panagroup
