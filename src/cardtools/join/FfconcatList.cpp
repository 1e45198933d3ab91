// SPDX-License-Identifier: MIT
// The list of ffmpeg's demuxer "concat". It places each file by its earliest time stamp, after the
// duration of the one before, which is therefore given for every file: that of the container also
// counts sound and reordering, so that pictures would be late or early at a join.
#include <algorithm>
#include <cstdio>

#include "cardtools/join/JoinFormats.h"
#include "foundation/Paths.h"

namespace Sorvik {
namespace {

constexpr double kMaxSeconds = 1e9;  // of a file

std::string Seconds(std::int64_t microseconds) {
  const long long magnitude = microseconds < 0 ? -microseconds : microseconds;
  char text[40];
  std::snprintf(text, sizeof(text), "%s%lld.%06lld", microseconds < 0 ? "-" : "",
                magnitude / 1000000, magnitude % 1000000);
  return text;
}

// In single quotes; a quote inside is written outside of them.
std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

// True for a relative path that the demuxer opens without "-safe 0".
bool IsSafe(const std::string& path) {
  bool startsName = true;
  for (const char c : path) {
    const bool isPlain = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') ||
                         (c >= 'A' && c <= 'Z') || c == '_' || c == '-';
    if (!isPlain && c != '/' && (c != '.' || startsName)) return false;
    if (c == '/' && startsName) return false;
    startsName = c == '/';
  }
  return !path.empty();
}

// A file as the list names it: relative if it is below the folder of the list.
std::string NameInList(const JoinList& list, const std::string& path) {
  if (list.output.empty()) return path;
  const std::string folder = list.output.substr(0, list.output.rfind('/') + 1);
  // A colon in a relative name would end the name of a protocol.
  const bool isBelow = path.starts_with(folder) && path.find(':', folder.size()) == path.npos;
  return isBelow ? path.substr(folder.size()) : path;
}

bool IsReadable(const ShotPart& part) {
  static constexpr std::string_view kUnknown[] = {".r3d",   ".crm", ".ari", ".rmf", ".nev", ".braw",
                                                  ".braw2", ".dng", ".cr2", ".cr3", ".nef", ".arw",
                                                  ".raf",   ".orf", ".rw2", ".gpr"};
  std::string extension = part.path.substr(std::min(part.path.rfind('.'), part.path.size()));
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return !part.images &&
         std::find(std::begin(kUnknown), std::end(kUnknown), extension) == std::end(kUnknown);
}

void RequireSupport(const JoinList& list, const JoinShot& shot) {
  for (const ShotPart& part : shot.shot.parts) {
    if (!part.isPresent) continue;
    if (!IsReadable(part)) {
      throw JoinFailure{
          {list.path, "no ffconcat list for '" + shot.key +
                          "' (ffmpeg doesn't read its files as video; use the format otio)"}};
    }
    if (OneLine(part.path) != part.path) {
      throw JoinFailure{{part.path, "the format can't contain this path (control character)"}};
    }
  }
}

// "shot.ffconcat" for the first track, "shot.a2.ffconcat" for channel 2.
std::string OutputOf(const JoinList& list, const JoinTrack& track, bool isFirst) {
  if (isFirst) return list.output;
  const std::size_t name = list.output.rfind('/') + 1;
  const std::size_t dot = list.output.rfind('.');
  const std::size_t end = dot == std::string::npos || dot <= name ? list.output.size() : dot;
  const unsigned channel = track.front()->channel;
  return list.output.substr(0, end) + (channel == 0 ? ".a" : ".a" + std::to_string(channel)) +
         list.output.substr(end);
}

// The tracks of which at least one part exists.
std::vector<JoinTrack> TracksWithFiles(const ShotParts& shot) {
  std::vector<JoinTrack> tracks = TracksOf(shot);
  const auto isMissing = [](const JoinTrack& track) {
    return std::none_of(track.begin(), track.end(),
                        [](const ShotPart* part) { return part->isPresent; });
  };
  tracks.erase(std::remove_if(tracks.begin(), tracks.end(), isMissing), tracks.end());
  return tracks;
}

// The lists of one shot.
class Lists {
 public:
  Lists(const JoinList& list, const JoinShot& shot)
      : list_(list), shot_(shot), tracks_(TracksWithFiles(shot.shot)) {
    for (const ShotPart& part : shot.shot.parts) {
      if (part.isPresent) isSafe_ = isSafe_ && IsSafe(NameInList(list, part.path));
    }
    for (const JoinTrack& track : tracks_) {
      outputs_.push_back(OutputOf(list, track, &track == &tracks_.front()));
    }
  }

  std::vector<JoinFile> Write() const {
    std::vector<JoinFile> files;
    for (std::size_t i = 0; i < tracks_.size(); ++i) {
      files.push_back({outputs_[i], TextOf(tracks_[i])});
    }
    return files;
  }

 private:
  std::string TextOf(const JoinTrack& track) const {
    std::string text = "ffconcat version 1.0\n";
    text += Comment(shot_.name + " (" + shot_.key + "), " + list_.provider);
    text += Commands();
    for (const ShotPart* part : track) text += Entry(*part);
    return text;
  }

  static std::string Comment(const std::string& text) { return "# " + OneLine(text) + "\n"; }

  std::string Input(const std::string& output) const {
    const std::string name(output.empty() ? "LIST" : foundation::FileName(output));
    const bool isPlain = IsSafe(name);
    return (isSafe_ ? "" : "-safe 0 ") + std::string("-i ") + (isPlain ? name : Quoted(name));
  }

  // How to play the list. Tracks in files of their own are put side by side by ffmpeg.
  std::string Commands() const {
    if (tracks_.size() == 1) {
      const bool isSound = tracks_.front().front()->track == ShotTrack::kSound;
      const std::string maps = std::string(isSound ? "" : "-map 0:v ") +
                               (isSound || HasOwnSound(shot_) ? "-map 0:a " : "");
      return Comment("play: ffplay " + Input(outputs_.front())) +
             Comment("copy: ffmpeg " + Input(outputs_.front()) + " " + maps + "-c copy JOINED" +
                     Extension());
    }
    std::string inputs;
    std::string maps;
    for (std::size_t i = 0; i < tracks_.size(); ++i) {
      const bool isSound = tracks_[i].front()->track == ShotTrack::kSound;
      inputs += Input(outputs_[i]) + " ";
      maps += "-map " + std::to_string(i) + (isSound ? ":a " : ":v ");
    }
    return Comment("play: ffmpeg " + inputs + maps + "-c copy -f matroska - | ffplay -") +
           Comment("copy: ffmpeg " + inputs + maps + "-c copy JOINED.mov");
  }

  // Of the first file, so that a copy has the same container.
  std::string Extension() const {
    for (const ShotPart& part : shot_.shot.parts) {
      if (!part.isPresent) continue;
      const std::string extension =
          part.path.substr(std::min(part.path.rfind('.'), part.path.size()));
      return IsSafe("x" + extension) ? extension : std::string();
    }
    return {};
  }

  std::string Entry(const ShotPart& part) const {
    if (!part.isPresent) return Missing(part);
    std::string text = "file " + Quoted(NameInList(list_, part.path)) + "\n";
    if (part.joinMicroseconds) {
      text += "duration " + Seconds(*part.joinMicroseconds) + "\n";
    } else {
      text += Comment("length unknown: the next file is placed by the container's own duration");
    }
    if ((part.firstFrame > 0 || part.framesAfter > 0) && part.stampMicroseconds && part.frames) {
      text += Comment("in and out points are exact only if every frame is a key frame");
      if (part.firstFrame > 0) text += "inpoint " + Seconds(*part.stampMicroseconds) + "\n";
      if (part.framesAfter > 0) text += "outpoint " + Seconds(OutPoint(part)) + "\n";
    }
    if (part.isInferred) text += Comment("inferred: continues the file before it");
    return text;
  }

  std::int64_t OutPoint(const ShotPart& part) const {
    const double seconds = static_cast<double>(FramesOf(part)) *
                           static_cast<double>(shot_.shot.rate.denominator) /
                           static_cast<double>(shot_.shot.rate.numerator);
    return *part.stampMicroseconds +
           static_cast<std::int64_t>(std::min(seconds, kMaxSeconds) * 1e6);
  }

  // The time of a missing part stays empty: the file before it gets a longer duration.
  std::string Missing(const ShotPart& part) const {
    std::string text = "missing: " + part.name;
    if (!part.path.empty()) text += ", " + part.path;
    return Comment(text + (part.frames ? ", " + std::to_string(*part.frames) + " frames" : ""));
  }

  const JoinList& list_;
  const JoinShot& shot_;
  const std::vector<JoinTrack> tracks_;
  std::vector<std::string> outputs_;  // of the tracks
  bool isSafe_ = true;
};

// Adds the lengths of missing parts to the files before them, so that what follows keeps its place.
void KeepGaps(ShotParts& shot) {
  ShotPart* last = nullptr;
  for (ShotPart& part : shot.parts) {
    if (part.isPresent) {
      last = &part;
    } else if (last != nullptr && last->track == part.track && last->channel == part.channel &&
               last->joinMicroseconds && part.joinMicroseconds) {
      *last->joinMicroseconds += *part.joinMicroseconds;
    }
  }
}

}  // namespace

std::vector<JoinFile> FfconcatLists(const JoinList& list) {
  JoinShot shot = list.shots.front();
  RequireSupport(list, shot);
  if (list.output.empty() && TracksWithFiles(shot.shot).size() > 1) {
    throw JoinFailure{{list.path, "'" + shot.key +
                                      "' has its tracks in separate files, so that it needs "
                                      "several lists and the path of the first one"}};
  }
  KeepGaps(shot.shot);
  return Lists(list, shot).Write();
}

}  // namespace Sorvik
