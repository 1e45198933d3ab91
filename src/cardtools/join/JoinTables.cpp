// SPDX-License-Identifier: MIT
// Tables of the parts with their metadata: Avid Log Exchange and CSV.
#include <algorithm>
#include <array>
#include <utility>

#include "SorvikProvider/foundation/EscapedText.h"
#include "cardtools/ShotJson.h"
#include "cardtools/join/JoinFormats.h"
#include "foundation/Paths.h"

namespace Sorvik {
namespace {

struct MetadataColumn {
  const char* heading;
  const char* field;
};

constexpr MetadataColumn kAleColumns[] = {{"Scene", "scene"},
                                          {"Take", "takeNumber"},
                                          {"Shot", "shotName"},
                                          {"Camera", "Model"},
                                          {"Camera Maker", "Make"},
                                          {"Camera Serial #", "SerialNumber"},
                                          {"Shoot Date", "CreateDate"},
                                          {"Circled", "good"},
                                          {"Location", "shotLocation"},
                                          {"Description", "description"},
                                          {"Comments", "logComment"},
                                          {"Creator", "creator"},
                                          {"Image Size", "videoFrameSize"},
                                          {"Video Codec", "videoCompressor"},
                                          {"Audio SR", "audioSampleRate"},
                                          {"Audio Bit Depth", "audioSampleType"},
                                          {"UMID", "identifier"}};

// Cells are separated by tabs, rows by line ends.
std::string AleLine(const std::vector<std::string>& cells) {
  std::string line;
  for (std::size_t i = 0; i < cells.size(); ++i) line += (i == 0 ? "" : "\t") + OneLine(cells[i]);
  return line + "\r\n";
}

std::string VideoFormat(const JoinShot& shot) {
  const auto size = FrameSizeOf(shot);
  switch (size ? size->height : 0) {
    case 1080:
      return "1080";
    case 720:
      return "720";
    case 576:
      return "PAL";
    case 480:
    case 486:
      return "NTSC";
    default:
      return "CUSTOM";
  }
}

// "VA1A2" for a picture and two channels.
std::string TracksText(const JoinShot& shot) {
  std::string text;
  unsigned channels = 0;
  for (const JoinTrack& track : TracksOf(shot.shot)) {
    if (track.front()->track != ShotTrack::kSound) text += "V";
    if (track.front()->track == ShotTrack::kSound || HasOwnSound(shot)) {
      text += "A" + std::to_string(++channels);
    }
  }
  return text;
}

std::vector<MetadataColumn> UsedColumns(const JoinList& list) {
  std::vector<MetadataColumn> used;
  for (const MetadataColumn& column : kAleColumns) {
    const bool isUsed = std::any_of(
        list.shots.begin(), list.shots.end(),
        [&column](const JoinShot& shot) { return !FieldText(shot.fields, column.field).empty(); });
    if (isUsed) used.push_back(column);
  }
  return used;
}

std::vector<std::string> AleRow(const JoinShot& shot, const ShotPart& part,
                                const std::vector<MetadataColumn>& columns) {
  const bool drops = DropsFrames(shot.shot);
  const std::uint64_t start = part.startFrame.value_or(part.firstFrame);
  const std::size_t slash = part.path.rfind('/');
  std::vector<std::string> row = {part.name,
                                  TracksText(shot),
                                  TimecodeOfFrames(start, shot.shot.rate, drops),
                                  TimecodeOfFrames(start + FramesOf(part), shot.shot.rate, drops),
                                  part.name,
                                  std::string(foundation::FileName(part.path)),
                                  part.path.substr(0, slash == std::string::npos ? 0 : slash),
                                  shot.name};
  for (const MetadataColumn& column : columns) row.push_back(FieldText(shot.fields, column.field));
  return row;
}

}  // namespace

std::string AleList(const JoinList& list) {
  for (const JoinShot& shot : list.shots) RequireLengths(list, shot);
  const std::vector<MetadataColumn> columns = UsedColumns(list);
  std::string text = AleLine({"Heading"}) + AleLine({"FIELD_DELIM", "TABS"}) +
                     AleLine({"VIDEO_FORMAT", VideoFormat(list.shots.front())}) +
                     AleLine({"AUDIO_FORMAT", "48khz"}) +
                     AleLine({"FPS", DecimalRate(CommonRate(list))}) + "\r\n";
  std::vector<std::string> headings = {"Name", "Tracks",      "Start",       "End",
                                       "Tape", "Source File", "Source Path", "Clip"};
  for (const MetadataColumn& column : columns) headings.emplace_back(column.heading);
  text += AleLine({"Column"}) + AleLine(headings) + "\r\n" + AleLine({"Data"});
  for (const JoinShot& shot : list.shots) {
    for (const ShotPart* part : shot.shot.MainTrack()) {
      if (part->isPresent) text += AleLine(AleRow(shot, *part, columns));
    }
  }
  return text;
}

namespace {

std::vector<std::string> CsvRow(const JoinShot& shot, std::size_t number, const ShotPart& part) {
  const auto text = [](const auto& value) {
    return value ? std::to_string(*value) : std::string();
  };
  std::vector<std::string> row = {shot.key,
                                  std::to_string(number),
                                  NameOf(part.track),
                                  part.channel == 0 ? "" : std::to_string(part.channel),
                                  part.name,
                                  part.path,
                                  part.isPresent ? "yes" : "no",
                                  part.isInferred ? "yes" : "no",
                                  text(part.frames),
                                  std::to_string(part.firstFrame),
                                  part.startTimecode,
                                  text(part.startFrame),
                                  shot.shot.rate.IsKnown() ? FractionOf(shot.shot.rate) : "",
                                  text(part.joinMicroseconds)};
  for (const std::string& field : JoinFields()) row.push_back(FieldText(shot.fields, field));
  for (std::string& cell : row) cell = OneLine(cell);
  return row;
}

}  // namespace

std::string CsvList(const JoinList& list) {
  std::vector<std::string> headings = {
      "Key",      "Part",   "Track",       "Channel",        "File title",  "File", "Present",
      "Inferred", "Frames", "First frame", "Start timecode", "Start frame", "Rate", "Join us"};
  headings.insert(headings.end(), JoinFields().begin(), JoinFields().end());
  std::string text = Hestra::CsvLine(headings) + "\r\n";
  for (const JoinShot& shot : list.shots) {
    for (const JoinTrack& track : TracksOf(shot.shot)) {
      for (std::size_t i = 0; i < track.size(); ++i) {
        text += Hestra::CsvLine(CsvRow(shot, i + 1, *track[i])) + "\r\n";
      }
    }
  }
  return text;
}

}  // namespace Sorvik
