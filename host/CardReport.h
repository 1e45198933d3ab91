// SPDX-License-Identifier: MIT
// Whether a card is complete: the owner or role of each file on it, and the missing files.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "SorvikProvider/cardtools/CardCheck.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace host {

// The role of a file on the card.
enum class FileRole {
  kClip,       // listed by at least one clip
  kStructure,  // belongs to the card itself, such as an index
  kOrphaned,   // media that no clip lists: a copy made clip by clip would omit it
  kUnrelated,  // not part of the card's structure
};

struct CardFile {
  std::string path;
  FileRole role = FileRole::kUnrelated;
  std::vector<std::string> owners;  // keys of the clips that list it
};

struct CardReport {
  std::vector<CardFile> files;                 // all files below the root, sorted by path
  std::vector<Sorvik::StructurePart> missing;  // parts with an empty key belong to the card

  // True if nothing is missing and every media file belongs to a clip.
  bool IsComplete() const;
};

// Compares the files that the entries list and the library's findings with the files on disk. Opens
// no file; walks all folders of the card. Call it on a worker. Returns a partial report once `stop`
// is set.
CardReport MakeCardReport(const std::string& root, const Sorvik::ContentMap& entries,
                          const Sorvik::StructureFindings& findings, const std::atomic<bool>& stop);

}  // namespace host
