// SPDX-License-Identifier: MIT
// Final Cut Pro XML 1.10. Times are rational seconds, multiples of the frame duration: offsets in
// the time of the parent, starts in that of the asset, which is the timecode of the media.
#include <map>
#include <numeric>
#include <tuple>

#include "SorvikProvider/foundation/EscapedText.h"
#include "cardtools/join/JoinFormats.h"

namespace Sorvik {
namespace {

std::string Attribute(const char* name, std::string_view value) {
  return std::string(" ") + name + "=\"" + Hestra::XmlText(value) + "\"";
}

std::string Time(std::uint64_t frames, const ShotRate& rate) {
  const std::uint64_t units = frames * rate.denominator;
  if (units % rate.numerator == 0) return std::to_string(units / rate.numerator) + "s";
  return std::to_string(units) + "/" + std::to_string(rate.numerator) + "s";
}

class FcpxmlWriter {
 public:
  explicit FcpxmlWriter(const JoinList& list) : list_(list) {}

  std::string Write() {
    std::string projects;
    for (const JoinShot& shot : list_.shots) projects += Project(shot);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n"
           "<fcpxml version=\"1.10\">\n  <resources>\n" +
           resources_ + "  </resources>\n  <library>\n    <event" +
           Attribute("name", list_.Title()) + ">\n" + projects +
           "    </event>\n  </library>\n</fcpxml>\n";
  }

 private:
  std::string NextId() { return "r" + std::to_string(++ids_); }

  // Formats are shared by the shots that have the same.
  std::string FormatOf(const JoinShot& shot) {
    const ShotRate& rate = shot.shot.rate;
    const auto size = FrameSizeOf(shot).value_or(FrameSize{});
    const auto [known, isNew] = formats_.try_emplace(
        std::tuple(rate.numerator, rate.denominator, size.width, size.height), std::string());
    if (!isNew) return known->second;
    known->second = NextId();
    resources_ += "    <format" + Attribute("id", known->second) +
                  Attribute("frameDuration", std::to_string(rate.denominator) + "/" +
                                                 std::to_string(rate.numerator) + "s");
    if (size.width != 0) {
      resources_ += Attribute("width", std::to_string(size.width)) +
                    Attribute("height", std::to_string(size.height));
    }
    resources_ += "/>\n";
    return known->second;
  }

  std::string AssetOf(const JoinShot& shot, const ShotPart& part, const std::string& format) {
    const std::string id = NextId();
    const bool isSound = part.track == ShotTrack::kSound;
    const std::uint64_t start = part.startFrame.value_or(part.firstFrame);
    const std::uint64_t mediaStart = start - std::min(start, part.firstFrame);
    const std::uint64_t length = part.firstFrame + FramesOf(part) + part.framesAfter;
    resources_ += "    <asset" + Attribute("id", id) + Attribute("name", part.name) +
                  Attribute("start", Time(mediaStart, shot.shot.rate)) +
                  Attribute("duration", Time(length, shot.shot.rate));
    if (!isSound) resources_ += Attribute("hasVideo", "1") + Attribute("format", format);
    if (isSound || HasOwnSound(shot)) {
      resources_ += Attribute("hasAudio", "1") + Attribute("audioSources", "1");
      if (isSound && part.channel != 0) resources_ += Attribute("audioChannels", "1");
    }
    resources_ += ">\n      <media-rep kind=\"original-media\"" +
                  Attribute("src", Hestra::FileUrl(part.path)) + "/>\n    </asset>\n";
    return id;
  }

  std::string Project(const JoinShot& shot) {
    RequireLengths(list_, shot);
    const ShotRate& rate = shot.shot.rate;
    const std::string format = FormatOf(shot);
    const auto tracks = TracksOf(shot.shot);
    const std::uint64_t begin = tracks.front().front()->startFrame.value_or(0);
    std::uint64_t offset = begin;
    std::string spine;
    for (std::size_t i = 0; i < tracks.front().size(); ++i) {
      spine += SpineItem(shot, tracks, i, offset, format);
      offset += FramesOf(*tracks.front()[i]);
    }
    return "      <project" + Attribute("name", shot.name) + ">\n        <sequence" +
           Attribute("format", format) + Attribute("tcStart", Time(begin, rate)) +
           Attribute("tcFormat", DropsFrames(shot.shot) ? "DF" : "NDF") +
           Attribute("duration", Time(offset - begin, rate)) + ">\n          <spine>\n" + spine +
           "          </spine>\n        </sequence>\n      </project>\n";
  }

  // A file of the first track with the sound files that belong to it, or a gap.
  std::string SpineItem(const JoinShot& shot, const std::vector<JoinTrack>& tracks,
                        std::size_t index, std::uint64_t offset, const std::string& format) {
    const ShotPart& part = *tracks.front()[index];
    const std::uint64_t start = part.isPresent ? part.startFrame.value_or(part.firstFrame) : offset;
    const std::string asset = part.isPresent ? AssetOf(shot, part, format) : std::string();
    const std::string connected = ConnectedSound(shot, tracks, index, start, format);
    const std::string element = part.isPresent ? "asset-clip" : "gap";
    std::string item = "            <" + element;
    if (part.isPresent) item += Attribute("ref", asset);
    item += Attribute("name", part.name) + Attribute("offset", Time(offset, shot.shot.rate)) +
            Attribute("start", Time(start, shot.shot.rate)) +
            Attribute("duration", Time(FramesOf(part), shot.shot.rate));
    if (connected.empty()) return item + "/>\n";
    return item + ">\n" + connected + "            </" + element + ">\n";
  }

  std::string ConnectedSound(const JoinShot& shot, const std::vector<JoinTrack>& tracks,
                             std::size_t index, std::uint64_t parentStart,
                             const std::string& format) {
    std::string connected;
    for (std::size_t lane = 1; lane < tracks.size(); ++lane) {
      if (index >= tracks[lane].size() || !tracks[lane][index]->isPresent) continue;
      const ShotPart& sound = *tracks[lane][index];
      connected +=
          "              <asset-clip" + Attribute("ref", AssetOf(shot, sound, format)) +
          Attribute("lane", "-" + std::to_string(lane)) + Attribute("name", sound.name) +
          Attribute("offset", Time(parentStart, shot.shot.rate)) +
          Attribute("start", Time(sound.startFrame.value_or(sound.firstFrame), shot.shot.rate)) +
          Attribute("duration", Time(FramesOf(sound), shot.shot.rate)) + "/>\n";
    }
    return connected;
  }

  const JoinList& list_;
  unsigned ids_ = 0;
  std::string resources_;
  std::map<std::tuple<std::uint64_t, std::uint64_t, unsigned, unsigned>, std::string> formats_;
};

}  // namespace

std::string FcpxmlList(const JoinList& list) {
  for (const JoinShot& shot : list.shots) {
    for (const ShotPart& part : shot.shot.parts) {
      if (!part.images) continue;
      throw JoinFailure{
          {list.path, "'" + shot.key +
                          "' is an image sequence, which the format doesn't have; use the format "
                          "otio"}};
    }
  }
  return FcpxmlWriter(list).Write();
}

}  // namespace Sorvik
