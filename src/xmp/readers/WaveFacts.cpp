// SPDX-License-Identifier: MIT
#include "xmp/readers/WaveFacts.h"

#include <charconv>

#include "foundation/XmlTree.h"
#include "xmp/Namespaces.h"
#include "xmp/readers/CodecNames.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;
using foundation::ReaderOf;
using foundation::XmlElement;

constexpr std::uint16_t kPCM = 1;
constexpr std::uint16_t kFloat = 3;
constexpr std::uint16_t kExtensible = 0xFFFE;
// 'fmt ': tag, channels, samples per second, bytes per second, bytes per block, bits per sample;
// extensible formats add sizes, speaker positions and a sub-format that begins with the actual tag.
constexpr std::uint64_t kSubFormat = 24;

// 'bext': fixed-length texts, then numbers.
constexpr std::uint64_t kDescription = 0;
constexpr std::uint64_t kDescriptionLength = 256;
constexpr std::uint64_t kOriginationDate = 320;
constexpr std::uint64_t kOriginationTime = 330;
constexpr std::uint64_t kTimeReference = 338;  // samples since midnight
constexpr std::uint64_t kBroadcastLength = 602;

constexpr std::uint64_t kMaxIXMLBytes = std::uint64_t{1} << 20;
constexpr std::uint64_t kSecondsOfDay = 86400;

std::uint64_t NumberOf(std::string_view text) {
  std::uint64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() ? value : 0;
}

// "30000/1001", or "25".
Rate RateOf(std::string_view text) {
  const std::size_t slash = text.find('/');
  if (slash == std::string_view::npos) return Rate{NumberOf(text), 1};
  return Rate{NumberOf(text.substr(0, slash)), NumberOf(text.substr(slash + 1))};
}

void SetTimecode(std::uint64_t samples, std::uint64_t samplesPerSecond, Rate rate, bool drop,
                 TXMPMeta& meta) {
  rate = Normalise(rate);
  // Limits of a day of audio, within which the product fits.
  if (!rate.Known() || rate.num > 1'000'000 || samplesPerSecond == 0 ||
      samplesPerSecond > 1'000'000 || samples / samplesPerSecond >= kSecondsOfDay) {
    return;
  }
  const std::uint64_t frames = samples * rate.num / (samplesPerSecond * rate.den);
  const auto base = static_cast<unsigned>((rate.num + rate.den / 2) / rate.den);
  if (base != 0) SetStartTimecode(meta, TimecodeOfFrames(frames, base, drop), rate);
}

}  // namespace

WaveFormat ReadWaveFormat(ByteReader bytes) {
  WaveFormat format;
  format.tag = bytes.U16LE(0).value_or(0);
  format.channels = bytes.U16LE(2).value_or(0);
  format.rate = bytes.U32LE(4).value_or(0);
  format.blockBytes = bytes.U16LE(12).value_or(0);
  format.bits = bytes.U16LE(14).value_or(0);
  if (format.tag == kExtensible) format.tag = bytes.U16LE(kSubFormat).value_or(kExtensible);
  return format;
}

void SetWaveFormat(const WaveFormat& format, TXMPMeta& meta) {
  SetAudioSampleRate(meta, format.rate);
  SetAudioChannels(meta, format.channels);
  meta.SetProperty(kNsDM, "audioCompressor", std::string(WaveFormatName(format.tag)));
  if (format.tag == kPCM) {
    SetAudioSampleBits(meta, format.bits);
  } else if (format.tag == kFloat) {
    meta.SetProperty(kNsDM, "audioSampleType", format.bits == 32 ? "32Float" : "Other");
  } else {
    meta.SetProperty(kNsDM, "audioSampleType", "Compressed");
  }
}

void WaveFacts::Take(FileWindow& file, const RiffChunk& chunk) {
  switch (chunk.id) {
    case FourCC("fmt "):
      format_ = ReadWaveFormat(ChunkBytes(file, chunk, 40));
      break;
    case FourCC("data"):
      // In RF64 files the size is in 'ds64', which comes first.
      if (dataBytes_ == 0) dataBytes_ = chunk.size;
      break;
    case FourCC("fact"):
      if (samples_ == 0) samples_ = ChunkBytes(file, chunk, 4).U32LE(0).value_or(0);
      break;
    case FourCC("ds64"): {
      const ByteReader sizes = ChunkBytes(file, chunk, 24);
      dataBytes_ = sizes.U64LE(8).value_or(0);
      samples_ = sizes.U64LE(16).value_or(0);
      break;
    }
    case FourCC("bext"):
      broadcast_ = ChunkBytes(file, chunk, kBroadcastLength).Text();
      break;
    case FourCC("iXML"):
      if (chunk.size <= kMaxIXMLBytes) ixml_ = ChunkBytes(file, chunk, kMaxIXMLBytes).Text();
      break;
    default:
      break;
  }
}

bool WaveFacts::Store(TXMPMeta& meta) const {
  if (!broadcast_.empty()) StoreBroadcast(meta);
  if (format_) {
    SetWaveFormat(*format_, meta);
    const bool plain = format_->tag == kPCM || format_->tag == kFloat;
    const std::uint64_t samples =
        plain && format_->blockBytes != 0 ? dataBytes_ / format_->blockBytes : samples_;
    if (samples != 0) SetDuration(meta, samples, Rate{format_->rate, 1});
  }
  if (!ixml_.empty()) StoreIXML(meta);
  return format_ || !broadcast_.empty() || !ixml_.empty();
}

void WaveFacts::StoreBroadcast(TXMPMeta& meta) const {
  const ByteReader bext = ReaderOf(broadcast_);
  const std::string description = NativeText(bext.TextAt(kDescription, kDescriptionLength));
  if (!description.empty()) {
    meta.SetLocalizedText(kNsDC, "description", "x-default", description);
  }
  std::string date(bext.TextAt(kOriginationDate, 10));
  date.append("T").append(bext.TextAt(kOriginationTime, 8));
  if (date.size() == 19) date[13] = date[16] = ':';  // other separators are allowed
  meta.SetProperty(kNsXMP, "CreateDate", ExifDate(date));
}

void WaveFacts::StoreIXML(TXMPMeta& meta) const {
  const auto document =
      foundation::ParseXml(ixml_, {.bytes = kMaxIXMLBytes, .depth = 32, .nodes = 20'000});
  if (!document) return;
  const XmlElement& root = document->Root();
  const auto text = [](const XmlElement& element, std::string_view name) {
    return std::string(element.TextOf(name));
  };
  meta.SetProperty(kNsDM, "tapeName", text(root, "TAPE"));
  meta.SetProperty(kNsDM, "scene", text(root, "SCENE"));
  meta.SetProperty(kNsDM, "takeNumber", text(root, "TAKE"));
  meta.SetProperty(kNsDM, "logComment", text(root, "NOTE"));
  if (text(root, "CIRCLED") == "TRUE") meta.SetProperty(kNsDM, "good", "True");

  const XmlElement* speed = root.Child("SPEED");
  if (speed == nullptr) return;
  std::uint64_t samples = NumberOf(speed->TextOf("TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO")) |
                          NumberOf(speed->TextOf("TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_HI")) << 32;
  if (samples == 0) samples = ReaderOf(broadcast_).U64LE(kTimeReference).value_or(0);
  std::uint64_t perSecond = NumberOf(speed->TextOf("TIMESTAMP_SAMPLE_RATE"));
  if (perSecond == 0) perSecond = NumberOf(speed->TextOf("FILE_SAMPLE_RATE"));
  if (perSecond == 0 && format_) perSecond = format_->rate;
  SetTimecode(samples, perSecond, RateOf(speed->TextOf("TIMECODE_RATE")),
              speed->TextOf("TIMECODE_FLAG") == "DF", meta);
}

}  // namespace Sorvik::xmp
