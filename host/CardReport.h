// SPDX-License-Identifier: MIT
// Whether a card is whole: whose is each file on it, and what is missing.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "SorvikProvider/frame/FieldModel.h"
#include "SorvikProvider/cardtools/CardCheck.h"

namespace host {

// What a file on the card is.
enum class FileRole {
  kClip,       // clips list it
  kStructure,  // it belongs to the card and to no clip
  kUnreached,  // media that no clip reaches: a copy made by clips would lose it
  kForeign,    // the card's structure doesn't know it
};

struct CardFile {
  std::string path;
  FileRole role = FileRole::kForeign;
  std::vector<std::string> owners;  // keys of the clips that list it
};

struct CardReport {
  std::vector<CardFile> files;                 // all below the root, in order of their paths
  std::vector<Sorvik::StructurePart> missing;  // those without a key belong to the card

  // Nothing is missing, and every piece of media belongs to a clip.
  bool IsWhole() const;
};

// Puts together what the entries list, what the library finds and what lies on the disk. Opens
// nothing; walks through all folders of the card. For a worker.
CardReport MakeCardReport(const std::string& root, const Sorvik::ContentMap& entries,
                          const Sorvik::StructureFindings& findings, const std::atomic<bool>& stop);

}  // namespace host
