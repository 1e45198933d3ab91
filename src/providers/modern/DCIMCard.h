// SPDX-License-Identifier: MIT
// The recordings and DCF objects below a DCIM folder. No file is opened; each folder is listed once
// within a call scope.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "providers/modern/DCIMMakers.h"

namespace Sorvik::dcim {

struct Part {
  std::string path;
  std::uint32_t number = 0;  // of the chapter, frame or lens
};

// Each file is in exactly one of the lists. Paths are full.
struct Object {
  std::string key;  // "100GOPRO/GX010001": the folder below DCIM and the stem of the first file
  const Maker* maker = nullptr;
  const StemPattern* pattern = nullptr;  // null for DCF objects
  std::vector<Part> parts;               // the originals, in order; empty if they are missing
  std::vector<std::string> proxies;
  std::vector<std::string> thumbnails;
  std::vector<std::string> files;  // further originals (JPEG next to raw), edits, sound, sidecars

  // How the number of a part counts.
  Numbering PartNumbering() const {
    return pattern == nullptr ? Numbering::kNone : pattern->numbering;
  }
};

struct Chapter {
  std::string path;
  bool exists = true;
};

// The parts of an object in order. Chapters are numbered without gaps: those that are missing
// before the last one are included.
std::vector<Chapter> ChaptersOf(const Object& object);

// One folder with objects.
class ObjectFolder {
 public:
  // Returns the thumbnails of a stem that aren't next to the original.
  using FindThumbnails = std::function<std::vector<std::string>(std::string_view stem)>;

  // `path` is the folder, `keyPrefix` the beginning of its keys ("100GOPRO/"), `maker` its row or
  // null if unknown.
  ObjectFolder(const std::string& path, const std::string& keyPrefix, const Maker* maker,
               const FindThumbnails& findThumbnails = {});

  const std::string& Path() const noexcept { return path_; }
  // Ordered by key.
  const std::vector<Object>& Objects() const noexcept { return objects_; }
  const Object* Find(std::string_view key) const;
  // Files that belong to the folder, and sidecars without an original.
  const std::vector<std::string>& FolderFiles() const noexcept { return folderFiles_; }
  // Names of the subfolders that contain no files of these objects.
  const std::vector<std::string>& Subfolders() const noexcept { return subfolders_; }

 private:
  class Builder;

  std::string path_;
  std::vector<Object> objects_;
  std::vector<std::string> folderFiles_;
  std::vector<std::string> subfolders_;
};

class Card {
 public:
  // The card at `root`, which contains a folder DCIM.
  static std::shared_ptr<const Card> Of(const std::string& root);

  // The path of DCIM; empty if there is none.
  static std::string FolderOf(const std::string& root);

  // In order of their paths.
  const std::vector<std::shared_ptr<const ObjectFolder>>& Folders() const noexcept {
    return folders_;
  }

 private:
  std::vector<std::shared_ptr<const ObjectFolder>> folders_;
};

// The object with that key; null if there is none. Lists its folder only. The pointer keeps the
// folder.
std::shared_ptr<const Object> FindObject(const std::string& root, std::string_view key);

}  // namespace Sorvik::dcim
