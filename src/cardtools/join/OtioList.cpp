// SPDX-License-Identifier: MIT
// OpenTimelineIO JSON: Timeline.1, Stack.1, Track.1, Clip.2, which libraries since 0.15 read.
#include <algorithm>

#include "SorvikProvider/foundation/EscapedText.h"
#include "SorvikProvider/foundation/JsonWriter.h"
#include "cardtools/join/JoinFormats.h"

namespace Sorvik {
namespace {

class OtioWriter {
 public:
  OtioWriter(Hestra::JsonWriter& json, const JoinList& list) : json_(json), list_(list) {}

  void WriteTimeline(const JoinShot& shot) {
    shot_ = &shot;
    Begin("Timeline.1", shot.name);
    json_.Key("global_start_time");
    const auto& start = shot.shot.parts.front().startFrame;
    if (start) {
      WriteTime(*start);
    } else {
      json_.Null();
    }
    WriteShotMetadata();
    json_.Key("tracks");
    Begin("Stack.1", "tracks");
    json_.Key("children");
    json_.BeginArray();
    WriteTracks();
    json_.EndArray();
    json_.EndObject();
    json_.EndObject();
  }

  void WriteCollection() {
    Begin("SerializableCollection.1", list_.Title());
    json_.Key("children");
    json_.BeginArray();
    for (const JoinShot& shot : list_.shots) WriteTimeline(shot);
    json_.EndArray();
    json_.EndObject();
  }

 private:
  void Begin(const char* schema) {
    json_.BeginObject();
    json_.Key("OTIO_SCHEMA");
    json_.String(schema);
  }
  void Begin(const char* schema, const std::string& name) {
    Begin(schema);
    Member("name", name);
  }
  void Member(const char* key, const std::string& text) {
    json_.Key(key);
    json_.String(text);
  }
  void Member(const char* key, std::uint64_t number) {
    json_.Key(key);
    json_.Number(static_cast<unsigned long long>(number));
  }

  void WriteRate() {
    const ShotRate& rate = shot_->shot.rate;
    json_.Key("rate");
    json_.Number(static_cast<double>(rate.numerator) / static_cast<double>(rate.denominator));
  }

  void WriteTime(std::uint64_t frames) {
    Begin("RationalTime.1");
    WriteRate();
    Member("value", frames);
    json_.EndObject();
  }

  void WriteRange(const char* key, std::uint64_t start, std::uint64_t frames) {
    json_.Key(key);
    Begin("TimeRange.1");
    json_.Key("start_time");
    WriteTime(start);
    json_.Key("duration");
    WriteTime(frames);
    json_.EndObject();
  }

  void WriteShotMetadata() {
    BeginMetadata();
    Member("path", list_.path);
    Member("provider", list_.provider);
    Member("key", shot_->key);
    json_.Key("complete");
    json_.Boolean(shot_->shot.isComplete);
    const std::string identifier = FieldText(shot_->fields, "identifier");
    if (!identifier.empty()) Member("identifier", identifier);
    EndMetadata();
  }
  void BeginMetadata() {
    json_.Key("metadata");
    json_.BeginObject();
    json_.Key("sorvik");
    json_.BeginObject();
  }
  void EndMetadata() {
    json_.EndObject();
    json_.EndObject();
  }

  // A file with picture and sound is in a track of each kind.
  void WriteTracks() {
    unsigned pictures = 0;
    unsigned sounds = 0;
    for (const JoinTrack& track : TracksOf(shot_->shot)) {
      if (track.front()->track == ShotTrack::kSound) {
        WriteTrack(track, "Audio", "A" + std::to_string(++sounds));
        continue;
      }
      WriteTrack(track, "Video", "V" + std::to_string(++pictures));
      if (HasOwnSound(*shot_)) WriteTrack(track, "Audio", "A" + std::to_string(++sounds));
    }
  }

  void WriteTrack(const JoinTrack& track, const char* kind, const std::string& name) {
    Begin("Track.1", name);
    Member("kind", kind);
    json_.Key("children");
    json_.BeginArray();
    for (const ShotPart* part : track) WriteClip(*part);
    json_.EndArray();
    json_.EndObject();
  }

  // A missing part keeps its length, so that what follows keeps its place.
  void WriteClip(const ShotPart& part) {
    constexpr char kMedia[] = "DEFAULT_MEDIA";
    Begin("Clip.2", part.name);
    WriteRange("source_range", part.startFrame.value_or(part.firstFrame), FramesOf(part));
    WritePartMetadata(part);
    Member("active_media_reference_key", kMedia);
    json_.Key("media_references");
    json_.BeginObject();
    json_.Key(kMedia);
    WriteReference(part);
    json_.EndObject();
    json_.EndObject();
  }

  void WritePartMetadata(const ShotPart& part) {
    BeginMetadata();
    Member("path", part.path);
    if (part.channel != 0) Member("channel", part.channel);
    json_.Key("inferred");
    json_.Boolean(part.isInferred);
    if (!part.frames) Member("length", "unknown");
    EndMetadata();
  }

  void WriteReference(const ShotPart& part) {
    if (!part.isPresent) {
      Begin("MissingReference.1");
      if (part.frames) WriteRange("available_range", part.startFrame.value_or(0), *part.frames);
    } else if (part.images) {
      WriteImages(part, *part.images);
    } else {
      Begin("ExternalReference.1");
      Member("target_url", Hestra::FileUrl(part.path));
      const std::uint64_t start = part.startFrame.value_or(part.firstFrame);
      WriteRange("available_range", start - std::min(start, part.firstFrame),
                 part.firstFrame + FramesOf(part) + part.framesAfter);
    }
    json_.EndObject();
  }

  void WriteImages(const ShotPart& part, const ImageSequence& images) {
    Begin("ImageSequenceReference.1");
    Member("target_url_base", Hestra::FileUrl(part.path) + "/");
    Member("name_prefix", images.prefix);
    Member("name_suffix", images.suffix);
    Member("start_frame", images.first);
    Member("frame_step", std::uint64_t{1});
    WriteRate();
    Member("frame_zero_padding", images.digits);
    Member("missing_frame_policy", images.missing == 0 ? "error" : "black");
    WriteRange("available_range", part.startFrame.value_or(0), FramesOf(part));
  }

  Hestra::JsonWriter& json_;
  const JoinList& list_;
  const JoinShot* shot_ = nullptr;
};

}  // namespace

std::string OtioList(const JoinList& list) {
  for (const JoinShot& shot : list.shots) {
    if (!shot.shot.rate.IsKnown()) {
      throw JoinFailure{{list.path, "the frame rate of '" + shot.key + "' is unknown"}};
    }
  }
  std::string text;
  {
    Hestra::JsonWriter json([&text](std::string_view part) { text += part; }, true);
    OtioWriter writer(json, list);
    if (list.shots.size() == 1) {
      writer.WriteTimeline(list.shots.front());
    } else {
      writer.WriteCollection();
    }
  }
  return text;
}

}  // namespace Sorvik
