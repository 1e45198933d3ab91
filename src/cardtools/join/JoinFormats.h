// SPDX-License-Identifier: MIT
// The writers of lists that join the files of a shot. Nothing is read here; a list has what
// GetShotParts and the listing found out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "SorvikProvider/cardtools/JoinList.h"
#include "SorvikProvider/cardtools/ShotParts.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik {

struct JoinShot {
  std::string key;
  std::string name;
  ShotParts shot;
  FieldValueMap fields;
};

struct JoinList {
  std::string path;      // of the structure
  std::string provider;  // its identification
  std::string output;    // the full path of the list; may be empty
  std::vector<JoinShot> shots;

  // The name of the card's folder.
  std::string Title() const;
};

// Thrown if a list can't be made.
struct JoinFailure {
  JoinProblem problem;
  JoinStatus status = JoinStatus::kFailed;
};

// Each throws JoinFailure if a shot can't be given in the format.
//
// For one shot: one file per track.
std::vector<JoinFile> FfconcatLists(const JoinList& list);
// A timeline, or a collection of timelines for several shots.
std::string OtioList(const JoinList& list);
std::string EdlList(const JoinList& list);
// A project for each shot.
std::string FcpxmlList(const JoinList& list);
// The clips with their metadata.
std::string AleList(const JoinList& list);
// All parts with their metadata.
std::string CsvList(const JoinList& list);
// All parts as one document, on one line unless `indents`.
std::string JsonList(const JoinList& list, bool indents);

// The fields that lists contain.
const FieldNameList& JoinFields();

// The parts of one track.
using JoinTrack = std::vector<const ShotPart*>;
std::vector<JoinTrack> TracksOf(const ShotParts& shot);
// True if the file itself has sound, as far as the metadata shows.
bool HasOwnSound(const JoinShot& shot);
// True if the timecode of the shot skips numbers.
bool DropsFrames(const ShotParts& shot);
// Throws JoinFailure if the shot has no frame rate or the length of a part is unknown.
void RequireLengths(const JoinList& list, const JoinShot& shot);
// The rate of all shots. Throws JoinFailure if they have different ones.
ShotRate CommonRate(const JoinList& list);
// The number of frames of a part; 0 if unknown.
std::uint64_t FramesOf(const ShotPart& part);
// The text of a field, the first one of a list; empty if it has none.
std::string FieldText(const FieldValueMap& fields, const std::string& field);
// Width and height in "1920 x 1080"; nullopt for other texts.
struct FrameSize {
  unsigned width;
  unsigned height;
};
std::optional<FrameSize> FrameSizeOf(const JoinShot& shot);
// The text with a blank for each control character: lists consist of lines.
std::string OneLine(std::string_view text);

}  // namespace Sorvik
