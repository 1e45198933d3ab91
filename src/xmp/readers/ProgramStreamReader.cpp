// SPDX-License-Identifier: MIT
#include "xmp/readers/ProgramStreamReader.h"

#include <algorithm>
#include <string_view>

#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/AudioStream.h"
#include "xmp/readers/NativeText.h"
#include "xmp/readers/ProgramStream.h"
#include "xmp/readers/VideoStream.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// The first group of pictures of most files; the last packets of all streams.
constexpr std::size_t kLongHead = 640 * 1024;
constexpr std::size_t kTail = 512 * 1024;
constexpr std::size_t kMaxAudioBytes = 8 * 1024;

// What one piece of the file contains.
struct Streams {
  std::uint8_t videoId = 0;  // 0: none
  std::vector<std::byte> video;
  std::vector<std::uint64_t> times;  // of the video
  std::uint8_t audioType = 0;        // as in transport streams; 0: none
  ts::Elementary audio;
};

// The stream types of transport streams, which name the codecs.
constexpr std::uint8_t kMPEGAudio = 0x03;
constexpr std::uint8_t kAC3Audio = 0x81;
constexpr std::uint8_t kLPCMAudio = 0x80;

std::uint8_t AudioTypeOf(const ps::Packet& packet) {
  if (ps::IsMPEGAudio(packet.stream)) return kMPEGAudio;
  if (ps::IsAC3(packet)) return kAC3Audio;
  return ps::IsLPCM(packet) ? kLPCMAudio : 0;
}

Streams Collect(ByteReader piece, std::uint8_t videoId = 0) {
  Streams streams;
  streams.videoId = videoId;
  ps::Packets packets(piece);
  while (const auto packet = packets.Next()) {
    const auto bytes = packet->payload.Bytes();
    if (ps::IsVideo(packet->stream)) {
      if (streams.videoId == 0) streams.videoId = packet->stream;
      if (streams.videoId != packet->stream) continue;
      streams.video.insert(streams.video.end(), bytes.begin(), bytes.end());
      if (packet->presentation) streams.times.push_back(*packet->presentation);
      continue;
    }
    const std::uint8_t type = AudioTypeOf(*packet);
    if (type == 0) continue;
    if (streams.audioType == 0) streams.audioType = type;
    if (streams.audioType != type || streams.audio.bytes.size() >= kMaxAudioBytes) continue;
    streams.audio.bytes.insert(streams.audio.bytes.end(), bytes.begin(), bytes.end());
  }
  return streams;
}

// DVD: emphasis, mute and number of a frame; 2 bits depth, 2 rate, 1, 3 channels; dynamic range.
AudioFacts ReadDiscLPCM(ByteReader bytes) {
  constexpr unsigned kBits[] = {16, 20, 24, 0};
  constexpr std::uint32_t kRates[] = {48000, 96000, 44100, 32000};
  AudioFacts facts;
  facts.compressor = "PCM";
  const auto codes = bytes.U8(1);
  if (!codes) return facts;
  facts.bits = kBits[*codes >> 6];
  facts.rate = kRates[*codes >> 4 & 3];
  facts.channels = (*codes & 7u) + 1;
  return facts;
}

class ProgramFile {
 public:
  ProgramFile(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output)
      : input_(input), wanted_(wanted), output_(output) {}

  void Read() {
    ReadPiece(input_.head);
    if (NeedsLongHead()) {
      longHead_ = input_.file.Read(0, kLongHead);
      ReadPiece(ByteReader(longHead_));
    }
    if (streams_.videoId == 0 && streams_.audioType == 0) return;
    output_.hasNative = true;
    StoreVideo();
    StoreAudio();
    if (wanted_.Wants(kNsDM, "duration")) StoreDuration();
    StoreRecord();
  }

 private:
  void ReadPiece(ByteReader piece) {
    streams_ = Collect(piece);
    const ByteReader bytes(streams_.video);
    video_ = ReadMPEG2(bytes);
    compressor_ = video_.mpeg1 ? "MPEG-1" : "MPEG-2";
    if (video_.width != 0 || bytes.Empty()) return;
    video_ = ReadAVC(bytes);
    compressor_ = "AVC";
  }

  bool NeedsLongHead() const {
    if (input_.file.Size() <= input_.head.Size()) return false;
    return video_.width == 0 || streams_.audioType == 0;
  }

  void StoreVideo() {
    if (video_.width == 0) return;
    TXMPMeta& meta = output_.native;
    meta.SetProperty(kNsDM, "videoCompressor", compressor_);
    SetFrameRate(meta, video_.rate);
    SetFrameSize(meta, video_.width, video_.height);
    SetPixelAspectRatio(meta, video_.aspectWidth, video_.aspectHeight);
    SetPixelDepth(meta, video_.depth);
    SetColorSpace(meta, video_.primaries, video_.matrix);
    if (video_.fieldOrder != nullptr) {
      meta.SetProperty(kNsDM, "videoFieldOrder", video_.fieldOrder);
    }
    if (video_.gopTimecode) SetStartTimecode(meta, *video_.gopTimecode, video_.rate);
  }

  void StoreAudio() {
    if (streams_.audioType == 0) return;
    TXMPMeta& meta = output_.native;
    ts::Stream stream;
    stream.type = streams_.audioType;
    const AudioFacts facts = streams_.audioType == kLPCMAudio
                                 ? ReadDiscLPCM(ByteReader(streams_.audio.bytes))
                                 : ReadAudio(stream, streams_.audio);
    meta.SetProperty(kNsDM, "audioCompressor", facts.compressor);
    SetAudioSampleRate(meta, facts.rate);
    SetAudioChannels(meta, facts.channels);
    if (streams_.audioType != kLPCMAudio) {
      meta.SetProperty(kNsDM, "audioSampleType", "Compressed");
    }
    SetAudioSampleBits(meta, facts.bits);
  }

  void StoreDuration() {
    if (!video_.rate.Known()) return;
    std::vector<std::uint64_t> last = streams_.times;
    const std::uint64_t have = std::max<std::uint64_t>(input_.head.Size(), longHead_.size());
    const std::uint64_t size = input_.file.Size();
    if (size > have) {
      const auto tail = input_.file.Read(size - std::min<std::uint64_t>(size, kTail), kTail);
      last = Collect(ByteReader(tail), streams_.videoId).times;
    }
    if (const auto frames = CountFrames(streams_.times, last, video_.rate)) {
      SetDuration(output_.native, *frames, video_.rate);
      SetFileDataRate(output_.native, size, *frames * video_.rate.den, video_.rate.num);
    }
  }

  // .MOI: "V6", size of the file, year 2, month, day, hour, minute, milliseconds 2; at 128 the
  // shape of the picture.
  void StoreRecord() {
    constexpr std::string_view kExtension = ".MOD";
    const std::string& path = input_.path;
    const bool wantsDate = wanted_.Wants(kNsXMP, "CreateDate") || wanted_.Wants(kNsDM, "shotDate");
    if (!wantsDate && !wanted_.Wants(kNsDM, "videoPixelAspectRatio")) return;
    if (path.size() <= kExtension.size()) return;
    std::string record = path.substr(0, path.size() - kExtension.size());
    if (!foundation::EqualIgnoringCase(path.substr(record.size()), kExtension)) return;
    record += path.ends_with("D") ? ".MOI" : ".moi";
    if (!foundation::MayExistOnCard(record)) return;
    constexpr std::size_t kRecordBytes = 129;
    const auto bytes = platform::ReadHead(record, kRecordBytes);
    if (!bytes || !ByteReader(*bytes).Matches(0, "V6")) return;
    TXMPMeta facts;
    if (const auto date = ReadMOIDate(ByteReader(*bytes))) SetRecordingDate(facts, *date);
    SetMOIAspect(ByteReader(*bytes).U8(kRecordBytes - 1).value_or(0xFF), facts);
    if (!facts.Empty()) output_.overriding.push_back({NativeOrigin::kRecord, std::move(facts)});
  }

  // The lower half of the code: 0 and 1 for 4:3, 4 and 5 for 16:9. The video often has the code of
  // 4:3 for both.
  void SetMOIAspect(unsigned code, TXMPMeta& facts) const {
    const unsigned shape = code & 0x0FU;
    if (video_.width == 0 || (shape > 1 && shape != 4 && shape != 5)) return;
    const bool isWide = shape > 1;
    SetPixelAspectRatio(facts, (isWide ? 16U : 4U) * std::uint64_t{video_.height},
                        (isWide ? 9U : 3U) * std::uint64_t{video_.width});
  }

  static std::optional<DateTime> ReadMOIDate(ByteReader moi) {
    DateTime date;
    const unsigned milliseconds = moi.U16BE(12).value_or(0xFFFF);
    date.year = moi.U16BE(6).value_or(0);
    date.month = moi.U8(8).value_or(0);
    date.day = moi.U8(9).value_or(0);
    date.hour = moi.U8(10).value_or(99);
    date.minute = moi.U8(11).value_or(99);
    date.second = milliseconds / 1000;
    return date.Valid() ? std::optional(date) : std::nullopt;
  }

  const ReaderInput& input_;
  const WantedProperties& wanted_;
  ReaderOutput& output_;
  Streams streams_;
  VideoFacts video_;
  const char* compressor_ = nullptr;
  std::vector<std::byte> longHead_;
};

bool Recognises(const ReaderInput& input) { return ps::IsProgramStream(input.head); }

void Read(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output) {
  if (Recognises(input)) ProgramFile(input, wanted, output).Read();
}

}  // namespace

const Reader kProgramStreamReader = {"MPEG program stream", Recognises, Read};

}  // namespace Sorvik::xmp
