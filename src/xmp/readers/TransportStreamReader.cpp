// SPDX-License-Identifier: MIT
#include "xmp/readers/TransportStreamReader.h"

#include <algorithm>

#include "formats/TransportStream.h"
#include "formats/avchd/Playlist.h"
#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/AudioStream.h"
#include "xmp/readers/ClipInfo.h"
#include "xmp/readers/DVReader.h"
#include "xmp/readers/RecordingBlock.h"
#include "xmp/readers/VideoStream.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

enum Type : std::uint8_t { kMPEG1 = 0x01, kMPEG2 = 0x02, kAVC = 0x1B, kHEVC = 0x24, kVC1 = 0xEA };
constexpr std::uint8_t kHDVAuxiliary = 0xA1;
constexpr std::uint32_t kHDMV = 0x48444D56;

// The first picture of AVCHD takes up to 400 kB; some more access units of any camera fit in this
// size.
constexpr std::size_t kLongHead = 640 * 1024;
// In camera files the last video packet is within 200 kB of the end.
constexpr std::size_t kTail = 512 * 1024;
constexpr std::size_t kMaxAudioBytes = 8 * 1024;
constexpr std::size_t kMaxAuxiliary = 64 * 1024;

const char* CompressorName(std::uint8_t type) {
  switch (type) {
    case kMPEG1:
      return "MPEG-1";
    case kMPEG2:
      return "MPEG-2";
    case kAVC:
      return "AVC";
    case kHEVC:
      return "HEVC";
    case kVC1:
      return "VC-1";
    default:
      return nullptr;
  }
}

// The rate code of the HDMV registration.
Rate RateOfNibble(unsigned code) {
  constexpr Rate kRates[] = {{},     {24000, 1001}, {24, 1},      {25, 1}, {30000, 1001},
                             {0, 0}, {50, 1},       {60000, 1001}};
  return code < std::size(kRates) ? kRates[code] : Rate();
}

// A record of HDV's auxiliary stream, the body of a packet (IEC 61834-11): timecode at 31, date at
// 36, time at 40, encoded as in DV.
struct HDVRecord {
  std::optional<Timecode> timecode;
  std::optional<DateTime> recorded;
};

HDVRecord ReadHDVRecord(ByteReader body) {
  HDVRecord record;
  const auto view = body.ViewAt<12>(31);
  if (!view) return record;
  std::array<std::byte, 4> timecode;
  std::ranges::copy(view->first<4>(), timecode.begin());
  record.timecode = TimecodeFromBCD(timecode);
  const auto bcd = [&view](std::size_t at, unsigned mask) {
    return FromBCD((*view)[at - 31], mask).value_or(99);
  };
  DateTime date;
  const auto year = FromBCD((*view)[38 - 31]);
  if (!year) return record;
  date.year = *year + (*year >= 75 ? 1900 : 2000);
  date.month = bcd(37, 0x1F);
  date.day = bcd(36, 0x3F);
  date.hour = bcd(42, 0x3F);
  date.minute = bcd(41, 0x7F);
  date.second = bcd(40, 0x7F);
  if (date.Valid()) record.recorded = date;
  return record;
}

// The facts of one piece of the file.
struct PieceFacts {
  VideoFacts video;
  AudioFacts audio;
  std::vector<std::uint64_t> times;  // of the video
  std::vector<HDVRecord> records;
};

class StreamFile {
 public:
  StreamFile(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output)
      : input_(input), wanted_(wanted), output_(output) {}

  void Read() {
    const auto layout = ts::FindLayout(input_.head);
    if (!layout) return;
    layout_ = *layout;
    FindStreams();
    if (video_.pid == ts::kNoPID && audio_.pid == ts::kNoPID) return;
    output_.hasNative = true;
    ReadPiece(input_.head);
    const auto ticks = ClipTicks();
    if (NeedsLongHead(ticks.has_value())) {
      // From the start again: cheaper than joining two parts.
      longHead_ = input_.file.Read(0, kLongHead);
      ReadPiece(ByteReader(longHead_));
    }
    StoreVideo();
    StoreAudio();
    StoreRecording();
    StoreDuration(ticks);
  }

 private:
  void FindStreams() {
    const ts::Program program = ts::FindProgram(input_.head, layout_);
    registration_ = program.registration;
    for (const ts::Stream& stream : program.streams) {
      if (video_.pid == ts::kNoPID && CompressorName(stream.type) != nullptr) video_ = stream;
      const bool audio = IsAudioType(stream.type, registration_);
      if (audio_.pid == ts::kNoPID && audio) audio_ = stream;
      // On Blu-ray discs this type is secondary audio.
      if (stream.type == kHDVAuxiliary && registration_ != kHDMV) auxiliary_ = stream;
    }
  }

  void ReadPiece(ByteReader piece) {
    if (video_.pid != ts::kNoPID) {
      const auto part = ts::Collect(piece, layout_, 0, video_.pid, kLongHead);
      const ByteReader bytes(part.bytes);
      if (video_.type == kAVC) found_.video = ReadAVC(bytes);
      if (video_.type == kHEVC) found_.video = ReadHEVC(bytes);
      if (video_.type == kMPEG1 || video_.type == kMPEG2) found_.video = ReadMPEG2(bytes);
      found_.times = part.presentation;
    }
    if (audio_.pid != ts::kNoPID) {
      found_.audio = ReadAudio(audio_, ts::Collect(piece, layout_, 0, audio_.pid, kMaxAudioBytes));
    }
    if (auxiliary_.pid != ts::kNoPID) ReadRecords(piece);
  }

  void ReadRecords(ByteReader piece) {
    const auto part = ts::Collect(piece, layout_, 0, auxiliary_.pid, kMaxAuxiliary);
    found_.records.clear();
    const ByteReader bytes(part.bytes);
    for (std::size_t i = 0; i < part.starts.size(); ++i) {
      const std::uint64_t end = i + 1 < part.starts.size() ? part.starts[i + 1] : bytes.Size();
      found_.records.push_back(ReadHDVRecord(bytes.Clip(part.starts[i], end - part.starts[i])));
    }
  }

  bool WantsDM(std::string_view name) const { return wanted_.Wants(kNsDM, name); }
  // Properties that the playlist may contain as well.
  bool WantsShot() const {
    return WantsDM("shotDate") || WantsDM("startTimecode") || wanted_.Wants(kNsXMP, "CreateDate") ||
           wanted_.Wants(kNsTIFF, "Make");
  }
  bool WantsRecording() const {
    return WantsShot() || wanted_.Wants(kNsTIFF, "Model") ||
           wanted_.Wants(kNsEXIF, "GPSLatitude") || wanted_.Wants(kNsEXIF, "GPSLongitude") ||
           wanted_.Wants(kNsEXIF, "GPSAltitude") || wanted_.Wants(kNsEXIF, "GPSAltitudeRef") ||
           wanted_.Wants(kNsCRS, "WhiteBalance");
  }
  // The rate determines whether a timecode is drop-frame.
  bool WantsVideo() const {
    return WantsDM("videoFrameRate") || WantsDM("videoFrameSize") || WantsDM("videoFieldOrder") ||
           WantsDM("videoPixelAspectRatio") || WantsDM("videoPixelDepth") || WantsDM("duration") ||
           WantsDM("startTimecode");
  }
  bool WantsAudio() const {
    return WantsDM("audioSampleRate") || WantsDM("audioSampleType") || WantsDM("audioChannelType");
  }

  bool NeedsLongHead(bool lengthKnown) const {
    if (input_.file.Size() <= input_.head.Size()) return false;
    const bool coded = video_.type == kAVC || video_.type == kHEVC || video_.type == kMPEG2 ||
                       video_.type == kMPEG1;
    if (coded && found_.video.width == 0 && WantsVideo()) return true;
    // The first displayed picture may follow the first one in the file.
    if (WantsDM("duration") && !lengthKnown && video_.pid != ts::kNoPID) return true;
    if (audio_.pid != ts::kNoPID && found_.audio.rate == 0 && WantsAudio()) return true;
    if (!WantsRecording()) return false;
    // The first record of a file may still belong to the previous scene.
    if (auxiliary_.pid != ts::kNoPID) return found_.records.size() < 2;
    const bool camera = video_.type == kAVC && registration_ == kHDMV;
    return camera && found_.video.recordingBlock.empty();
  }

  Rate FrameRate() const {
    if (found_.video.rate.Known()) return found_.video.rate;
    return RateOfNibble(video_.formatAndRate & 0x0F);
  }

  void StoreVideo() {
    if (video_.pid == ts::kNoPID) return;
    TXMPMeta& meta = output_.native;
    const VideoFacts& video = found_.video;
    meta.SetProperty(kNsDM, "videoCompressor", CompressorName(video_.type));
    SetFrameRate(meta, FrameRate());
    SetFrameSize(meta, video.width, video.height);
    SetPixelAspectRatio(meta, video.aspectWidth, video.aspectHeight);
    if (video.width != 0) SetPixelDepth(meta, video.depth);
    SetColorSpace(meta, video.primaries, video.matrix);
    if (video.fieldOrder != nullptr) meta.SetProperty(kNsDM, "videoFieldOrder", video.fieldOrder);
  }

  void StoreAudio() {
    TXMPMeta& meta = output_.native;
    const AudioFacts& audio = found_.audio;
    if (audio.compressor == nullptr) return;
    meta.SetProperty(kNsDM, "audioCompressor", audio.compressor);
    SetAudioSampleRate(meta, audio.rate);
    SetAudioChannels(meta, audio.channels);
    if (audio_.type != 0x80) meta.SetProperty(kNsDM, "audioSampleType", "Compressed");
    SetAudioSampleBits(meta, audio.bits);
  }

  // The playlist's shot of this clip, searched once.
  const std::optional<formats::avchd::ShotOfClip>& Shot() {
    if (!lookedForShot_ && IsCardStream(input_.path)) {
      shot_ = formats::avchd::FindShotOfStream(input_.path);
    }
    lookedForShot_ = true;
    return shot_;
  }

  void FillFromHDV(RecordingFacts& facts) {
    for (const HDVRecord& record : found_.records) {
      if (!facts.timecode) facts.timecode = record.timecode;
    }
    const auto& records = found_.records;
    // The second record counts; the first may still belong to the previous scene.
    for (std::size_t i = 1; i < records.size() && !facts.recorded; ++i) {
      facts.recorded = records[i].recorded;
    }
    if (!facts.recorded && !records.empty()) facts.recorded = records[0].recorded;
    if (!facts.timecode) facts.timecode = found_.video.gopTimecode;
  }

  // Facts that cameras store per shot, not for the later files of a spanned shot.
  void FillFromPlaylist(RecordingFacts& facts) {
    const auto& shot = Shot();
    if (!shot) return;
    const auto* mark = formats::avchd::MarkOfShot(*shot->playlist, shot->first);
    if (mark == nullptr) return;
    if (facts.maker.empty()) facts.maker = MakerName(mark->maker);
    if (shot->clip != shot->first) return;
    if (!facts.recorded) ReadRecordingDate(mark->recorded, facts);
    if (!facts.timecode) facts.timecode = TimecodeFromBCD(mark->startTimecode);
  }

  void StoreRecording() {
    TXMPMeta& meta = output_.native;
    RecordingFacts facts;
    if (!found_.video.recordingBlock.empty()) {
      facts = ReadRecordingBlock(ByteReader(found_.video.recordingBlock), meta);
    }
    FillFromHDV(facts);
    StoreFacts(facts, meta);
    const bool complete = facts.recorded && facts.timecode && !facts.maker.empty();
    if (!complete && WantsShot()) FillFromPlaylist(facts);
    TXMPMeta fromPlaylist;
    StoreFacts(facts, fromPlaylist);
    Complete(std::move(fromPlaylist));
    if (facts.recorded) return;
    if (const auto named = DateFromRecorderName(input_.path)) SetRecordingDate(meta, *named);
  }

  void StoreFacts(RecordingFacts facts, TXMPMeta& meta) const {
    if (facts.recorded) SetRecordingDate(meta, *facts.recorded, facts.zone);
    meta.SetProperty(kNsTIFF, "Make", facts.maker);
    meta.SetProperty(kNsTIFF, "Model", facts.model);
    if (!facts.timecode) return;
    const Rate rate = Normalise(FrameRate());
    // Only rates of 1001 drop frame numbers; otherwise the bit has another meaning.
    if (rate.den != 1001 || rate.num == 24000) facts.timecode->drop = false;
    SetStartTimecode(meta, *facts.timecode, rate);
  }

  // Facts of the card's playlist or clip information.
  void Complete(TXMPMeta facts) {
    facts.RemoveEqual(output_.native);
    if (!facts.Empty()) output_.completing.push_back({NativeOrigin::kIndex, std::move(facts)});
  }

  // The clip's length in ticks of 1/45000 s from the clip information.
  std::optional<std::uint64_t> ClipTicks() {
    if (!WantsDM("duration")) return std::nullopt;
    if (const auto ticks = ClipLengthOfStream(input_.path)) return ticks;
    const auto& shot = Shot();
    if (!shot) return std::nullopt;
    const auto& item = shot->playlist->items[shot->clip];
    if (item.outTime <= item.inTime) return std::nullopt;
    return item.outTime - item.inTime;
  }

  void StoreDuration(const std::optional<std::uint64_t>& ticks) {
    const Rate rate = Normalise(FrameRate());
    if (!WantsDM("duration") || !rate.Known()) return;
    constexpr std::uint64_t kTicksPerSecond = 45000;
    if (ticks) {
      const std::uint64_t unit = kTicksPerSecond * rate.den;
      TXMPMeta index;
      SetDuration(index, (*ticks * rate.num + unit / 2) / unit, rate);
      Complete(std::move(index));
    } else if (const auto frames = CountFrames(found_.times, LastTimes(), rate)) {
      SetDuration(output_.native, *frames, rate);
    }
  }

  std::vector<std::uint64_t> LastTimes() {
    const std::uint64_t size = input_.file.Size();
    const std::uint64_t have = std::max<std::uint64_t>(input_.head.Size(), longHead_.size());
    if (size <= have) return found_.times;
    const std::uint64_t start = std::max(size - std::min<std::uint64_t>(size, kTail), have);
    const auto tail = input_.file.Read(start, kTail);
    auto part = ts::Collect(ByteReader(tail), layout_, start, video_.pid, 0, true);
    // A short tail may contain none; then the last one is in the part read before.
    if (start == have) {
      part.presentation.insert(part.presentation.end(), found_.times.begin(), found_.times.end());
    }
    return part.presentation;
  }

  const ReaderInput& input_;
  const WantedProperties& wanted_;
  ReaderOutput& output_;
  ts::Layout layout_;
  std::uint32_t registration_ = 0;
  ts::Stream video_;
  ts::Stream audio_;
  ts::Stream auxiliary_;
  PieceFacts found_;
  std::vector<std::byte> longHead_;
  std::optional<formats::avchd::ShotOfClip> shot_;
  bool lookedForShot_ = false;
};

bool Recognises(const ReaderInput& input) { return ts::FindLayout(input.head).has_value(); }

void Read(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output) {
  StreamFile(input, wanted, output).Read();
}

}  // namespace

const Reader kTransportStreamReader = {"MPEG-2 transport stream", Recognises, Read};

}  // namespace Sorvik::xmp
