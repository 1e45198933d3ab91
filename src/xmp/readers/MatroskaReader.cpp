// SPDX-License-Identifier: MIT
#include "xmp/readers/MatroskaReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

#include "xmp/Namespaces.h"
#include "xmp/readers/CameraXml.h"
#include "xmp/readers/MatroskaTracks.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

enum Id : std::uint32_t {
  kEbml = 0x1A45DFA3,
  kSegment = 0x18538067,
  kSeekHead = 0x114D9B74,
  kSeek = 0x4DBB,
  kSeekID = 0x53AB,
  kSeekPosition = 0x53AC,
  kInfo = 0x1549A966,
  kTimestampScale = 0x2AD7B1,
  kDuration = 0x4489,
  kDateUTC = 0x4461,
  kTitle = 0x7BA9,
  kMuxingApp = 0x4D80,
  kWritingApp = 0x5741,
  kTracks = 0x1654AE6B,
  kCluster = 0x1F43B675,
  kBlockGroup = 0xA0,
  kBlock = 0xA1,
  kSimpleBlock = 0xA3,
  kTags = 0x1254C367,
  kTag = 0x7373,
  kTargets = 0x63C0,
  kTagTrackUID = 0x63C5,
  kSimpleTag = 0x67C8,
  kTagName = 0x45A3,
  kTagString = 0x4487,
};

constexpr std::uint64_t kNanoseconds = 1'000'000'000;
constexpr std::uint64_t kVideo = 1;

struct TextTag {
  std::string_view name;
  const char* schema;
  const char* property;
};
constexpr TextTag kTextTags[] = {
    {"ARTIST", kNsDM, "artist"},
    {"ALBUM", kNsDM, "album"},
    {"COMMENT", kNsDM, "logComment"},
    {"COMPOSER", kNsDM, "composer"},
    {"DIRECTOR", kNsDM, "director"},
    {"GENRE", kNsDM, "genre"},
    {"RECORDING_LOCATION", kNsDM, "shotLocation"},
    {"REEL_NAME", kNsDM, "tapeName"},
    // Copies of QuickTime metadata.
    {"COM.APPLE.QUICKTIME.MAKE", kNsTIFF, "Make"},
    {"COM.APPLE.QUICKTIME.MODEL", kNsTIFF, "Model"},
    {"MAKE", kNsTIFF, "Make"},
    {"MODEL", kNsTIFF, "Model"},
};

std::string UpperASCII(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return text;
}

// "01:02:03:04", drop-frame with a semicolon in front of the frames.
std::optional<Timecode> ParseTimecode(std::string_view text) {
  if (text.size() != 11) return std::nullopt;
  std::array<unsigned, 4> parts{};
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const auto number = ParseUnsigned(text.substr(3 * i, 2));
    if (!number) return std::nullopt;
    parts[i] = static_cast<unsigned>(*number);
  }
  if (parts[0] > 23 || parts[1] > 59 || parts[2] > 59) return std::nullopt;
  return Timecode{parts[0], parts[1], parts[2], parts[3], text[8] == ';' || text[8] == '.'};
}

class MatroskaFile {
 public:
  explicit MatroskaFile(const ReaderInput& input) : file_(input) {}

  bool Read(TXMPMeta& meta) {
    EbmlElements elements(file_, 0, file_.Size());
    while (const auto element = elements.Next()) {
      if (element->id == kSegment) {
        ReadSegment(*element);
        break;
      }
    }
    if (tracks_.empty()) return false;
    Store(meta);
    return true;
  }

 private:
  struct Part {
    std::uint32_t id;
    bool known = false;
    std::uint64_t position = 0;  // from the seek head; 0 unknown
  };

  // Parts after the media data are found through the seek head.
  void ReadSegment(const EbmlElement& segment) {
    EbmlElements elements(file_, segment);
    while (const auto element = elements.Next()) {
      if (element->id == kCluster) {
        ReadCluster(*element);
        break;
      }
      if (element->id == kSeekHead) ReadSeekHead(*element);
      ReadPart(*element);
    }
    for (const Part& part : parts_) {
      if (part.known || part.position == 0 || part.position >= segment.Size()) continue;
      const auto element = EbmlElements(file_, segment.body + part.position, segment.end).Next();
      if (element && element->id == part.id) ReadPart(*element);
    }
  }

  // Keeps the beginning of the first frame of the video. Block: track, time 2, flags 1, frame.
  void ReadCluster(const EbmlElement& cluster) {
    const MatroskaTrack* video = First(kVideo);
    if (video == nullptr || !NeedsFirstFrame(*video)) return;
    constexpr unsigned kMaxBlocks = 32;
    constexpr std::uint64_t kMaxFrameBytes = 4096;
    constexpr std::uint64_t kHeader = 4;  // of a track below 128
    EbmlElements elements(file_, cluster);
    for (unsigned i = 0; i < kMaxBlocks; ++i) {
      auto block = elements.Next();
      if (block && block->id == kBlockGroup) block = EbmlElements(file_, *block).Next();
      if (!block) return;
      if (block->id != kSimpleBlock && block->id != kBlock) continue;
      const ByteReader bytes = file_.At(block->body, std::min(kMaxFrameBytes, block->Size()));
      if (bytes.U8(0) != (0x80 | video->number)) continue;
      frame_ = bytes.Clip(kHeader).Text();
      return;
    }
  }

  void ReadSeekHead(const EbmlElement& head) {
    EbmlElements seeks(file_, head);
    while (const auto seek = seeks.Next()) {
      std::uint64_t id = 0;
      std::uint64_t position = 0;
      EbmlElements elements(file_, *seek);
      while (const auto element = elements.Next()) {
        if (element->id == kSeekID) id = EbmlUnsigned(file_, *element);
        if (element->id == kSeekPosition) position = EbmlUnsigned(file_, *element);
      }
      for (Part& part : parts_) {
        if (part.id == id) part.position = position;
      }
    }
  }

  void ReadPart(const EbmlElement& element) {
    for (Part& part : parts_) {
      if (part.id != element.id || part.known) continue;
      part.known = true;
      if (part.id == kInfo) ReadInfo(element);
      if (part.id == kTracks) tracks_ = ReadMatroskaTracks(file_, element);
      if (part.id == kTags) ReadTags(element);
    }
  }

  void ReadInfo(const EbmlElement& info) {
    EbmlElements elements(file_, info);
    while (const auto element = elements.Next()) {
      switch (element->id) {
        case kTimestampScale:
          scale_ = EbmlUnsigned(file_, *element);
          break;
        case kDuration:
          duration_ = EbmlFloat(file_, *element);
          break;
        case kDateUTC:
          date_ = static_cast<std::int64_t>(EbmlUnsigned(file_, *element));
          break;
        case kTitle:
          title_ = EbmlText(file_, *element);
          break;
        case kMuxingApp:
          if (program_.empty()) program_ = EbmlText(file_, *element);
          break;
        case kWritingApp:
          program_ = EbmlText(file_, *element);
          break;
        default:
          break;
      }
    }
  }

  struct SimpleTag {
    std::uint64_t track;  // 0: the file
    std::string name;
    std::string text;
  };

  void ReadTags(const EbmlElement& tags) {
    constexpr std::size_t kMaxTags = 1024;
    EbmlElements list(file_, tags);
    while (const auto tag = list.Next()) {
      if (tag->id != kTag) continue;
      std::uint64_t track = 0;
      EbmlElements elements(file_, *tag);
      while (const auto element = elements.Next()) {
        if (element->id == kTargets) track = TrackOf(*element);
        if (element->id != kSimpleTag || tags_.size() >= kMaxTags) continue;
        tags_.push_back({track, {}, {}});
        EbmlElements parts(file_, *element);
        while (const auto part = parts.Next()) {
          if (part->id == kTagName) tags_.back().name = UpperASCII(EbmlText(file_, *part));
          if (part->id == kTagString) tags_.back().text = EbmlText(file_, *part);
        }
      }
    }
  }

  std::uint64_t TrackOf(const EbmlElement& targets) {
    EbmlElements elements(file_, targets);
    while (const auto element = elements.Next()) {
      if (element->id == kTagTrackUID) return EbmlUnsigned(file_, *element);
    }
    return 0;
  }

  const MatroskaTrack* First(std::uint64_t type) const {
    for (const MatroskaTrack& track : tracks_) {
      if (track.type == type) return &track;
    }
    return nullptr;
  }

  void Store(TXMPMeta& meta) const {
    const MatroskaTrack* video = First(kVideo);
    if (video != nullptr) SetMatroskaVideo(*video, foundation::ReaderOf(frame_), meta);
    SetMatroskaAudio(tracks_, meta);
    StoreDuration(video, meta);
    if (!title_.empty()) meta.SetLocalizedText(kNsDC, "title", "x-default", title_);
    SetSoftware(meta, program_);
    StoreDate(meta);
    for (const SimpleTag& tag : tags_) StoreTag(tag, video, meta);
  }

  // The number of frames by the statistics of the writer, else by the duration of the file, which
  // includes a start of a fraction of a frame if the sound starts earlier.
  void StoreDuration(const MatroskaTrack* video, TXMPMeta& meta) const {
    const double seconds = duration_ * static_cast<double>(scale_) / kNanoseconds;
    constexpr double kMaxSeconds = 1e8;
    if (!(seconds > 0 && seconds < kMaxSeconds)) return;
    constexpr std::uint64_t kMilliseconds = 1000;
    SetFileDataRate(meta, file_.Size(), static_cast<std::uint64_t>(seconds * kMilliseconds),
                    kMilliseconds);
    const Rate rate = video == nullptr ? Rate() : video->FrameRate();
    if (!rate.Known()) {
      const auto units = static_cast<std::uint64_t>(std::llround(seconds * kMilliseconds));
      return SetDuration(meta, units, Rate{kMilliseconds, 1});
    }
    const double frames = seconds * static_cast<double>(rate.num) / static_cast<double>(rate.den);
    const std::uint64_t counted = FramesByStatistics(*video, frames);
    constexpr double kStart = 0.25;
    SetDuration(meta, counted != 0 ? counted : static_cast<std::uint64_t>(frames + kStart), rate);
  }

  // 0 if there are none, or if they contradict the duration.
  std::uint64_t FramesByStatistics(const MatroskaTrack& video, double expected) const {
    for (const SimpleTag& tag : tags_) {
      if (tag.track != video.uid || tag.name != "NUMBER_OF_FRAMES") continue;
      const auto frames = ParseUnsigned(tag.text);
      constexpr double kMaxDifference = 2;
      if (frames && std::fabs(static_cast<double>(*frames) - expected) <= kMaxDifference) {
        return *frames;
      }
    }
    return 0;
  }

  // Nanoseconds since 2001 in UTC.
  void StoreDate(TXMPMeta& meta) const {
    constexpr std::int64_t kTo2001From1904 = 3'061'152'000;
    if (date_ <= 0) return;
    meta.SetProperty(kNsXMP, "CreateDate",
                     DateOf1904(static_cast<std::uint64_t>(
                         date_ / static_cast<std::int64_t>(kNanoseconds) + kTo2001From1904)));
  }

  void StoreTag(const SimpleTag& tag, const MatroskaTrack* video, TXMPMeta& meta) const {
    const bool ofVideo = video != nullptr && tag.track == video->uid;
    if ((tag.track != 0 && !ofVideo) || tag.text.empty()) return;
    if (tag.name == "TIMECODE") {
      if (const auto timecode = ParseTimecode(tag.text)) {
        SetStartTimecode(meta, *timecode, video == nullptr ? Rate() : video->FrameRate());
      }
      return;
    }
    if (tag.track != 0) return;
    if (tag.name == "TITLE" && title_.empty()) {
      meta.SetLocalizedText(kNsDC, "title", "x-default", tag.text);
    } else if (tag.name == "DESCRIPTION") {
      meta.SetLocalizedText(kNsDC, "description", "x-default", tag.text);
    } else if (tag.name == "COPYRIGHT") {
      SetCopyright(meta, tag.text);
    } else if (tag.name == "DATE_RECORDED") {
      if (const std::string date = ExifDate(tag.text); !date.empty()) {
        meta.SetProperty(kNsXMP, "CreateDate", date);
      }
    } else if (tag.name == "DATE_RELEASED") {
      meta.SetProperty(kNsDM, "releaseDate", tag.text);
    } else if (tag.name == "LOCATION" || tag.name == "COM.APPLE.QUICKTIME.LOCATION.ISO6709") {
      SetISO6709(meta, tag.text);
    }
    for (const TextTag& row : kTextTags) {
      if (row.name == tag.name) meta.SetProperty(row.schema, row.property, tag.text);
    }
  }

  FileWindow file_;
  std::array<Part, 3> parts_{{{kInfo}, {kTracks}, {kTags}}};
  std::uint64_t scale_ = 1'000'000;
  double duration_ = 0;
  std::int64_t date_ = 0;
  std::string title_;
  std::string program_;
  std::vector<MatroskaTrack> tracks_;
  std::vector<SimpleTag> tags_;
  std::string frame_;  // the beginning of the first frame of the video, if it is needed
};

bool Recognises(const ReaderInput& input) { return input.head.U32BE(0) == kEbml; }

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  if (Recognises(input)) output.hasNative = MatroskaFile(input).Read(output.native);
}

}  // namespace

const Reader kMatroskaReader = {"Matroska", Recognises, Read};

}  // namespace Sorvik::xmp
