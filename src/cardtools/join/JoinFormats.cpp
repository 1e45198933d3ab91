// SPDX-License-Identifier: MIT
#include "cardtools/join/JoinFormats.h"

#include <algorithm>
#include <charconv>

#include "foundation/Paths.h"

namespace Sorvik {

std::string JoinList::Title() const {
  const std::string_view name = foundation::FileName(path);
  return std::string(name.empty() ? path : name);
}

const FieldNameList& JoinFields() {
  static const FieldNameList kFields = {kNameField,
                                        "scene",
                                        "takeNumber",
                                        "shotName",
                                        "shotNumber",
                                        "good",
                                        "shotLocation",
                                        "description",
                                        "comment",
                                        "logComment",
                                        "creator",
                                        "CreateDate",
                                        "Make",
                                        "Model",
                                        "SerialNumber",
                                        "identifier",
                                        "videoFrameSize",
                                        "videoFrameRate",
                                        "videoCompressor",
                                        "audioSampleRate",
                                        "audioSampleType",
                                        "audioChannelType",
                                        "audioCompressor"};
  return kFields;
}

std::vector<JoinTrack> TracksOf(const ShotParts& shot) {
  std::vector<JoinTrack> tracks;
  for (const ShotPart& part : shot.parts) {
    const bool continues = !tracks.empty() && tracks.back().front()->track == part.track &&
                           tracks.back().front()->channel == part.channel;
    if (!continues) tracks.emplace_back();
    tracks.back().push_back(&part);
  }
  return tracks;
}

std::string FieldText(const FieldValueMap& fields, const std::string& field) {
  const auto found = fields.find(field);
  if (found == fields.end()) return {};
  if (const auto* text = found->second.get_if<std::string>()) return *text;
  const auto* list = found->second.get_if<std::vector<any_regular_t>>();
  if (list == nullptr) return {};
  for (const any_regular_t& item : *list) {
    const auto* text = item.get_if<std::string>();
    if (text != nullptr && !text->empty()) return *text;
  }
  return {};
}

bool HasOwnSound(const JoinShot& shot) {
  if (shot.shot.parts.front().track != ShotTrack::kPictureAndSound) return false;
  return !FieldText(shot.fields, "audioSampleRate").empty() ||
         !FieldText(shot.fields, "audioCompressor").empty();
}

bool DropsFrames(const ShotParts& shot) {
  return std::any_of(shot.parts.begin(), shot.parts.end(), [](const ShotPart& part) {
    return part.startTimecode.find(';') != std::string::npos;
  });
}

void RequireLengths(const JoinList& list, const JoinShot& shot) {
  if (!shot.shot.rate.IsKnown()) {
    throw JoinFailure{{list.path, "the frame rate of '" + shot.key + "' is unknown"}};
  }
  // The rate of a sound file is that of its samples.
  if (TimecodeOfFrames(0, shot.shot.rate, false).empty()) {
    throw JoinFailure{
        {list.path, "'" + shot.key + "' has no frame rate, which the format requires"}};
  }
  for (const ShotPart& part : shot.shot.parts) {
    if (part.frames) continue;
    throw JoinFailure{
        {list.path, "the length of part '" + part.name + "' of '" + shot.key + "' is unknown"}};
  }
}

std::uint64_t FramesOf(const ShotPart& part) { return part.frames.value_or(0); }

ShotRate CommonRate(const JoinList& list) {
  const ShotRate rate = list.shots.front().shot.rate;
  for (const JoinShot& shot : list.shots) {
    if (shot.shot.rate == rate) continue;
    throw JoinFailure{{list.path, "the clips have different frame rates (" + DecimalRate(rate) +
                                      ", " + DecimalRate(shot.shot.rate) +
                                      "), but the format has one; choose a clip"}};
  }
  return rate;
}

std::optional<FrameSize> FrameSizeOf(const JoinShot& shot) {
  const std::string text = FieldText(shot.fields, "videoFrameSize");
  FrameSize size{};
  const char* const end = text.data() + text.size();
  const auto width = std::from_chars(text.data(), end, size.width);
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  const char* const second = std::find_if(width.ptr, end, isDigit);
  const auto height = std::from_chars(second, end, size.height);
  if (width.ec != std::errc() || height.ec != std::errc()) return std::nullopt;
  return size;
}

std::string OneLine(std::string_view text) {
  std::string line(text);
  std::replace_if(
      line.begin(), line.end(),
      [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, ' ');
  return line;
}

}  // namespace Sorvik
