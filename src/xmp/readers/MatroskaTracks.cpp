// SPDX-License-Identifier: MIT
#include "xmp/readers/MatroskaTracks.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "xmp/Namespaces.h"
#include "xmp/readers/BitReader.h"
#include "xmp/readers/CodecNames.h"
#include "xmp/readers/IsoBoxes.h"
#include "xmp/readers/IsoVideoEntry.h"
#include "xmp/readers/VideoStream.h"
#include "xmp/readers/WaveFacts.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;
using foundation::ReaderOf;

constexpr std::size_t kMaxTracks = 64;
constexpr std::uint64_t kMaxSetupBytes = 4096;

enum Id : std::uint32_t {
  kTrackEntry = 0xAE,
  kTrackNumber = 0xD7,
  kTrackUID = 0x73C5,
  kTrackType = 0x83,
  kCodecID = 0x86,
  kCodecPrivate = 0x63A2,
  kDefaultDuration = 0x23E383,
  kVideo = 0xE0,
  kPixelWidth = 0xB0,
  kPixelHeight = 0xBA,
  kCropBottom = 0x54AA,
  kCropTop = 0x54BB,
  kCropLeft = 0x54CC,
  kCropRight = 0x54DD,
  kDisplayWidth = 0x54B0,
  kDisplayHeight = 0x54BA,
  kDisplayUnit = 0x54B2,
  kFlagInterlaced = 0x9A,
  kFieldOrder = 0x9D,
  kColour = 0x55B0,
  kMatrix = 0x55B1,
  kBitsPerChannel = 0x55B2,
  kPrimaries = 0x55BB,
  kAudio = 0xE1,
  kSamplingFrequency = 0xB5,
  kOutputFrequency = 0x78B5,
  kChannels = 0x9F,
  kBitDepth = 0x6264,
};

unsigned Small(FileWindow& file, const EbmlElement& element) {
  return static_cast<unsigned>(std::min<std::uint64_t>(EbmlUnsigned(file, element), 0xFFFF));
}

void ReadColour(FileWindow& file, const EbmlElement& colour, MatroskaTrack& track) {
  EbmlElements elements(file, colour);
  while (const auto element = elements.Next()) {
    if (element->id == kMatrix) track.matrix = Small(file, *element);
    if (element->id == kBitsPerChannel) track.depth = Small(file, *element);
    if (element->id == kPrimaries) track.primaries = Small(file, *element);
  }
}

void ReadFrameSize(FileWindow& file, const EbmlElement& video, MatroskaTrack& track) {
  std::uint32_t cropX = 0;
  std::uint32_t cropY = 0;
  EbmlElements elements(file, video);
  while (const auto element = elements.Next()) {
    switch (element->id) {
      case kPixelWidth:
        track.width = Small(file, *element);
        break;
      case kPixelHeight:
        track.height = Small(file, *element);
        break;
      case kCropLeft:
      case kCropRight:
        cropX += Small(file, *element);
        break;
      case kCropTop:
      case kCropBottom:
        cropY += Small(file, *element);
        break;
      default:
        break;
    }
  }
  if (cropX < track.width) track.width -= cropX;
  if (cropY < track.height) track.height -= cropY;
}

void ReadVideo(FileWindow& file, const EbmlElement& video, MatroskaTrack& track) {
  ReadFrameSize(file, video, track);
  EbmlElements elements(file, video);
  while (const auto element = elements.Next()) {
    switch (element->id) {
      case kDisplayWidth:
        track.displayWidth = EbmlUnsigned(file, *element);
        break;
      case kDisplayHeight:
        track.displayHeight = EbmlUnsigned(file, *element);
        break;
      case kDisplayUnit:
        track.displayUnit = EbmlUnsigned(file, *element);
        break;
      case kFlagInterlaced:
        track.interlaced = EbmlUnsigned(file, *element);
        break;
      case kFieldOrder:
        track.fieldOrder = EbmlUnsigned(file, *element);
        break;
      case kColour:
        ReadColour(file, *element, track);
        break;
      default:
        break;
    }
  }
}

// The output frequency is that of the decoded sound if it differs.
void ReadAudio(FileWindow& file, const EbmlElement& audio, MatroskaTrack& track) {
  EbmlElements elements(file, audio);
  double output = 0;
  while (const auto element = elements.Next()) {
    if (element->id == kSamplingFrequency) track.sampleRate = EbmlFloat(file, *element);
    if (element->id == kOutputFrequency) output = EbmlFloat(file, *element);
    if (element->id == kChannels) track.channels = Small(file, *element);
    if (element->id == kBitDepth) track.sampleBits = Small(file, *element);
  }
  if (output > 0) track.sampleRate = output;
}

MatroskaTrack ReadTrack(FileWindow& file, const EbmlElement& entry) {
  MatroskaTrack track;
  EbmlElements elements(file, entry);
  while (const auto element = elements.Next()) {
    switch (element->id) {
      case kTrackNumber:
        track.number = EbmlUnsigned(file, *element);
        break;
      case kTrackUID:
        track.uid = EbmlUnsigned(file, *element);
        break;
      case kTrackType:
        track.type = EbmlUnsigned(file, *element);
        break;
      case kCodecID:
        track.codec = EbmlText(file, *element);
        break;
      case kCodecPrivate:
        track.setup = file.Copy(element->body, std::min(element->Size(), kMaxSetupBytes));
        break;
      case kDefaultDuration:
        track.frameNanoseconds = EbmlUnsigned(file, *element);
        break;
      case kVideo:
        ReadVideo(file, *element, track);
        break;
      case kAudio:
        ReadAudio(file, *element, track);
        break;
      default:
        break;
    }
  }
  return track;
}

// Codes of the codec tables of other containers; a code shorter than the id is a prefix of it.
struct Codec {
  std::string_view id;
  std::string_view code;
  std::uint32_t configuration;  // of the codec in CodecPrivate; 0 if it has none
};
constexpr Codec kVideoCodecs[] = {
    {"V_MPEG4/ISO/AVC", "avc1", FourCC("avcC")},
    {"V_MPEGH/ISO/HEVC", "hvc1", FourCC("hvcC")},
    {"V_MPEGI/ISO/VVC", "vvc1", FourCC("vvcC")},
    {"V_AV1", "av01", FourCC("av1C")},
    {"V_VP8", "vp08", 0},
    {"V_VP9", "vp09", 0},
    {"V_MPEG4/", "mp4v", 0},
    {"V_MPEG2", "m2v1", 0},
    {"V_PRORES", "apcn", 0},
    {"V_MJPEG", "mjpg", 0},
    {"V_UNCOMPRESSED", "raw ", 0},
};
struct Name {
  std::string_view id;
  std::string_view name;
};
constexpr Name kOtherVideo[] = {
    {"V_MPEG1", "MPEG-1"}, {"V_FFV1", "FFV1"},           {"V_THEORA", "Theora"},
    {"V_DIRAC", "Dirac"},  {"V_MPEG4/MS/", "MS-MPEG-4"},
};
constexpr Name kSounds[] = {
    {"A_AAC", "AAC"},       {"A_AC3", "AC3"},       {"A_EAC3", "E-AC3"}, {"A_OPUS", "Opus"},
    {"A_VORBIS", "Vorbis"}, {"A_FLAC", "FLAC"},     {"A_PCM/", "PCM"},   {"A_MPEG/", "MPEG"},
    {"A_DTS", "DTS"},       {"A_TRUEHD", "TrueHD"}, {"A_ALAC", "ALAC"},
};
constexpr std::string_view kBitmapCodec = "V_MS/VFW/FOURCC";
constexpr std::string_view kWaveCodec = "A_MS/ACM";

// The name in the table, else the id without its kind.
template <std::size_t N>
std::string NameOf(std::string_view id, const Name (&names)[N]) {
  for (const Name& name : names) {
    if (id.starts_with(name.id)) return std::string(name.name);
  }
  return std::string(id.substr(std::min<std::size_t>(id.size(), 2)));
}

void SetVideoCodec(const MatroskaTrack& track, TXMPMeta& meta) {
  std::string code;
  if (track.codec == kBitmapCodec) {
    constexpr std::size_t kCompression = 16;  // of the bitmap header
    code = ReaderOf(track.setup).TextAt(kCompression, 4);
  } else if (track.codec == "V_PRORES" && track.setup.size() >= 4) {
    code = track.setup.substr(0, 4);
  } else {
    for (const Codec& codec : kVideoCodecs) {
      if (!track.codec.starts_with(codec.id)) continue;
      if (track.codec.starts_with("V_MPEG4/MS/")) break;
      code = codec.code;
      if (codec.configuration != 0) {
        SetCodecConfiguration(codec.configuration, ReaderOf(track.setup), meta);
      }
      break;
    }
  }
  meta.SetProperty(kNsDM, "videoCompressor",
                   code.empty() ? NameOf(track.codec, kOtherVideo) : VideoCodecName(code));
  if (!meta.HasProperty(kNsDM, "videoPixelDepth")) SetPixelDepth(meta, BitsOfVideoCodec(code));
}

void SetFieldOrder(const MatroskaTrack& track, TXMPMeta& meta) {
  constexpr std::uint64_t kInterlaced = 1;
  constexpr std::uint64_t kProgressive = 2;
  if (track.interlaced == kProgressive) {
    meta.SetProperty(kNsDM, "videoFieldOrder", "Progressive");
  }
  if (track.interlaced != kInterlaced) return;
  switch (track.fieldOrder) {
    case 1:
    case 14:
      return meta.SetProperty(kNsDM, "videoFieldOrder", "Upper");
    case 6:
    case 9:
      return meta.SetProperty(kNsDM, "videoFieldOrder", "Lower");
    default:
      break;
  }
}

// Without a display size, pixels are square.
void SetAspect(const MatroskaTrack& track, TXMPMeta& meta) {
  constexpr std::uint64_t kMaxSide = 0xFFFF'FFFF;
  constexpr std::uint64_t kUnknown = 4;
  if (track.displayUnit == kUnknown || track.displayWidth > kMaxSide ||
      track.displayHeight > kMaxSide) {
    return;
  }
  const bool set = track.displayWidth != 0 && track.displayHeight != 0;
  const std::uint64_t width = set ? track.displayWidth * track.height : 1;
  const std::uint64_t height = set ? track.displayHeight * track.width : 1;
  // Display sizes are rounded, so square pixels can be off by one.
  constexpr double kMaxRounding = 0.005;
  const double aspect =
      static_cast<double>(width) / static_cast<double>(std::max<std::uint64_t>(height, 1));
  if (std::fabs(aspect - 1) <= kMaxRounding) return SetPixelAspectRatio(meta, 1, 1);
  // The configuration of the codec has the exact ratio.
  if (!meta.HasProperty(kNsDM, "videoPixelAspectRatio")) SetPixelAspectRatio(meta, width, height);
}

// VP9: marker 2 bits, profile 2, of profile 3 a zero, existing frame 1, type 1, shown 1, error 1;
// of a key frame the sync code 24, of profiles 2 and 3 the depth, colour space 3.
void SetVP9Frame(ByteReader frame, TXMPMeta& meta) {
  constexpr unsigned kSyncCode = 0x498342;
  BitReader bits(frame);
  if (bits.Bits(2) != 2) return;
  const unsigned low = bits.Bits(1);
  const unsigned profile = bits.Bits(1) << 1 | low;
  if (profile == 3) bits.Skip(1);
  const bool existing = bits.Flag();
  const bool delta = bits.Flag();
  bits.Skip(2);
  if (existing || delta || bits.Bits(24) != kSyncCode) return;
  const unsigned depth = profile < 2 ? 8 : bits.Flag() ? 12 : 10;
  const unsigned space = bits.Bits(3);
  if (!bits.Good()) return;
  SetPixelDepth(meta, depth);
  constexpr unsigned kPrimaries[] = {0, 5, 1, 6, 0, 9, 0, 0};
  SetColorSpace(meta, kPrimaries[space], 0);
}

void SetFirstFrame(const MatroskaTrack& track, ByteReader frame, TXMPMeta& meta) {
  if (track.codec == "V_VP9") return SetVP9Frame(frame, meta);
  if (track.codec == "V_MPEG4/ISO/AVC") return SetAVCFrame(ReaderOf(track.setup), frame, meta);
  if (track.codec != "V_MPEG2") return;
  // The headers are in both.
  std::string stream = track.setup;
  stream += frame.Text();
  const VideoFacts facts = ReadMPEG2(ReaderOf(stream));
  if (facts.fieldOrder != nullptr) meta.SetProperty(kNsDM, "videoFieldOrder", facts.fieldOrder);
}

void SetSound(const MatroskaTrack& track, TXMPMeta& meta) {
  if (track.codec == kWaveCodec) return SetWaveFormat(ReadWaveFormat(ReaderOf(track.setup)), meta);
  const std::string name = NameOf(track.codec, kSounds);
  meta.SetProperty(kNsDM, "audioCompressor", name);
  constexpr double kMaxRate = 1e7;
  if (track.sampleRate >= 1 && track.sampleRate < kMaxRate) {
    SetAudioSampleRate(meta, static_cast<std::uint64_t>(std::lround(track.sampleRate)));
  }
  SetAudioChannels(meta, track.channels);
  if (name != "PCM") {
    meta.SetProperty(kNsDM, "audioSampleType", "Compressed");
  } else if (track.codec == "A_PCM/FLOAT/IEEE") {
    meta.SetProperty(kNsDM, "audioSampleType", track.sampleBits == 32 ? "32Float" : "Other");
  } else {
    SetAudioSampleBits(meta, track.sampleBits);
  }
}

}  // namespace

Rate MatroskaTrack::FrameRate() const {
  constexpr std::uint64_t kSecond = 1'000'000'000;
  return frameNanoseconds == 0 ? Rate() : Normalise({kSecond, frameNanoseconds});
}

std::vector<MatroskaTrack> ReadMatroskaTracks(FileWindow& file, const EbmlElement& tracks) {
  std::vector<MatroskaTrack> list;
  EbmlElements elements(file, tracks);
  while (const auto element = elements.Next()) {
    if (element->id == kTrackEntry && list.size() < kMaxTracks) {
      list.push_back(ReadTrack(file, *element));
    }
  }
  return list;
}

bool NeedsFirstFrame(const MatroskaTrack& track) {
  const bool depth = track.codec == "V_VP9" && track.depth == 0;
  return depth || track.codec == "V_MPEG2" || track.codec == "V_MPEG4/ISO/AVC";
}

void SetMatroskaVideo(const MatroskaTrack& track, ByteReader frame, TXMPMeta& meta) {
  SetFrameSize(meta, track.width, track.height);
  SetFrameRate(meta, track.FrameRate());
  SetVideoCodec(track, meta);
  SetFirstFrame(track, frame, meta);
  if (track.depth != 0) SetPixelDepth(meta, track.depth);
  SetFieldOrder(track, meta);
  SetColorSpace(meta, track.primaries, track.matrix);
  SetAspect(track, meta);
}

void SetMatroskaAudio(const std::vector<MatroskaTrack>& tracks, TXMPMeta& meta) {
  constexpr std::uint64_t kAudio = 2;
  const MatroskaTrack* first = nullptr;
  unsigned count = 0;
  bool eachMono = true;
  for (const MatroskaTrack& track : tracks) {
    if (track.type != kAudio) continue;
    if (first == nullptr) first = &track;
    eachMono = eachMono && track.channels == 1;
    ++count;
  }
  if (first == nullptr) return;
  SetSound(*first, meta);
  if (eachMono) SetAudioChannels(meta, count);
}

}  // namespace Sorvik::xmp
