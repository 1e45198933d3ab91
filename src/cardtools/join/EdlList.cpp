// SPDX-License-Identifier: MIT
// CMX 3600: fixed columns, one rate for all events, which isn't in the file. Out times are
// exclusive. Lines end in CR LF for the oldest readers.
#include <algorithm>
#include <cstdio>
#include <set>

#include "cardtools/join/JoinFormats.h"
#include "foundation/Paths.h"

namespace Sorvik {
namespace {

constexpr unsigned kMaxEvents = 999;
constexpr std::size_t kReelSize = 8;
constexpr std::uint64_t kRecordStartHour = 1;
constexpr char kBlack[] = "BL";

class EdlWriter {
 public:
  explicit EdlWriter(const JoinList& list) : list_(list), rate_(CommonRate(list)) {
    const std::uint64_t base =
        (rate_.numerator + rate_.denominator / 2) / std::max<std::uint64_t>(rate_.denominator, 1);
    dropsRecord_ = DropsFrames(list.shots.front().shot);
    const std::string start = dropsRecord_ ? "01:00:00;00" : "01:00:00:00";
    record_ = FramesOfTimecode(start, rate_).value_or(kRecordStartHour * 3600 * base);
  }

  std::string Write() {
    const std::string title = list_.shots.size() == 1 ? list_.shots.front().name : list_.Title();
    Line("TITLE: " + OneLine(title));
    for (const JoinShot& shot : list_.shots) WriteShot(shot);
    return text_;
  }

 private:
  void Line(const std::string& line) { text_ += line + "\r\n"; }

  // The mode holds from its line on.
  void SetMode(bool drops) {
    if (hasMode_ && drops == drops_) return;
    hasMode_ = true;
    drops_ = drops;
    Line(drops ? "FCM: DROP FRAME" : "FCM: NON-DROP FRAME");
    Line("");
  }

  // The sound is in the file of the picture, or in files of its own.
  static const char* ChannelOf(const JoinShot& shot) {
    if (shot.shot.parts.front().track == ShotTrack::kSound) return "A";
    const std::size_t tracks = TracksOf(shot.shot).size();
    if (tracks > 2) return "AA/V";
    return tracks == 2 || HasOwnSound(shot) ? "B" : "V";
  }

  void WriteShot(const JoinShot& shot) {
    RequireLengths(list_, shot);
    SetMode(DropsFrames(shot.shot));
    for (const ShotPart* part : shot.shot.MainTrack()) WriteEvent(shot, *part);
  }

  void WriteEvent(const JoinShot& shot, const ShotPart& part) {
    if (++events_ > kMaxEvents) {
      throw JoinFailure{{list_.path, "more than " + std::to_string(kMaxEvents) +
                                         " events, the most that an EDL can have; choose a clip"}};
    }
    const std::uint64_t frames = FramesOf(part);
    const std::uint64_t start =
        part.isPresent ? part.startFrame.value_or(part.firstFrame) : std::uint64_t{0};
    char event[40];
    std::snprintf(event, sizeof(event), "%03u  %-8s %-5s C        ", events_,
                  part.isPresent ? ReelOf(part).c_str() : kBlack, ChannelOf(shot));
    Line(event + Time(start) + " " + Time(start + frames) + " " + RecordTime(record_) + " " +
         RecordTime(record_ + frames));
    record_ += frames;
    Line("* FROM CLIP NAME: " + OneLine(part.name));
    if (!part.isPresent) Line("* MISSING");
    if (part.isPresent) Line("* SOURCE FILE: " + OneLine(foundation::FileName(part.path)));
  }

  std::string Time(std::uint64_t frames) const { return TimecodeOfFrames(frames, rate_, drops_); }
  std::string RecordTime(std::uint64_t frames) const {
    return TimecodeOfFrames(frames, rate_, dropsRecord_);
  }

  // At most eight letters and digits; made unique by a number at its end.
  std::string ReelOf(const ShotPart& part) {
    std::string reel;
    for (const char c : part.name) {
      const bool isLower = c >= 'a' && c <= 'z';
      const bool isPlain = isLower || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
      if (isPlain && reel.size() < kReelSize) reel += isLower ? static_cast<char>(c - 32) : c;
    }
    if (reel.empty()) reel = "AX";
    std::string unique = reel;
    for (unsigned number = 2; !reels_.insert(unique).second; ++number) {
      const std::string suffix = "_" + std::to_string(number);
      unique = reel.substr(0, kReelSize - suffix.size()) + suffix;
    }
    return unique;
  }

  const JoinList& list_;
  const ShotRate rate_;
  std::string text_;
  std::uint64_t record_ = 0;  // frames
  unsigned events_ = 0;
  bool dropsRecord_ = false;
  bool hasMode_ = false;
  bool drops_ = false;
  std::set<std::string> reels_ = {kBlack};  // used or reserved
};

}  // namespace

std::string EdlList(const JoinList& list) {
  RequireLengths(list, list.shots.front());
  return EdlWriter(list).Write();
}

}  // namespace Sorvik
