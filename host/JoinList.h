// SPDX-License-Identifier: MIT
// Lists that join the files of a shot for players and editing programs, in six formats. Nothing is
// read here; a list contains what the library found.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "SorvikProvider/cardtools/ShotParts.h"
#include "SorvikProvider/frame/FieldModel.h"

namespace host {

struct JoinShot {
  std::string key;
  std::string name;
  Sorvik::ShotParts shot;
  Sorvik::FieldValueMap fields;
};

struct JoinList {
  std::string path;      // of the structure
  std::string provider;  // its identification
  std::string output;    // the full path of the list; empty for standard output
  std::vector<JoinShot> shots;
};

// One file of a list in several files.
struct ListFile {
  std::string path;  // empty for standard output
  std::string text;
};

// Each throws Failure if a shot can't be given in the format.
//
// ffconcat of ffmpeg, for one shot: one file per track.
std::vector<ListFile> FfconcatLists(const JoinList& list);
// OpenTimelineIO: a timeline, or a collection of timelines for several shots.
std::string OtioList(const JoinList& list);
// CMX 3600 edit decision list.
std::string EdlList(const JoinList& list);
// Final Cut Pro XML 1.10: a project for each shot.
std::string FcpxmlList(const JoinList& list);
// Avid Log Exchange: the clips with their metadata.
std::string AleList(const JoinList& list);
// All parts with their metadata.
std::string CsvList(const JoinList& list);

// The fields that lists contain.
const Sorvik::FieldNameList& JoinFields();

// The parts of one track.
using JoinTrack = std::vector<const Sorvik::ShotPart*>;
std::vector<JoinTrack> TracksOf(const Sorvik::ShotParts& shot);
// True if the file itself has sound, by its metadata.
bool HasOwnSound(const JoinShot& shot);
// True if the timecode of the shot skips numbers.
bool DropsFrames(const Sorvik::ShotParts& shot);
// Throws Failure if the shot has no frame rate or the length of a part is unknown.
void RequireLengths(const JoinList& list, const JoinShot& shot);
// The rate of all shots. Throws Failure if they have different ones.
Sorvik::ShotRate CommonRate(const JoinList& list);
// "25", "29.97".
std::string DecimalRate(const Sorvik::ShotRate& rate);
// The number of frames of a part, of which RequireLengths has been called.
std::uint64_t FramesOf(const Sorvik::ShotPart& part);
// The text of a field; empty if it has none.
std::string FieldText(const JoinShot& shot, const char* field);
// Width and height in "1920 x 1080"; nullopt for other texts.
struct FrameSize {
  unsigned width;
  unsigned height;
};
std::optional<FrameSize> FrameSizeOf(const JoinShot& shot);
// The text with a blank for each control character: lists consist of lines.
std::string OneLine(std::string_view text);

}  // namespace host
