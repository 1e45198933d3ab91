// SPDX-License-Identifier: MIT
#include "xmp/readers/WaveFacts.h"

#include "xmp/Namespaces.h"
#include "xmp/readers/CodecNames.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using formats::sound::NumberAtStart;
using foundation::ByteReader;

constexpr std::uint16_t kPCM = 1;
constexpr std::uint16_t kFloat = 3;
constexpr std::uint16_t kExtensible = 0xFFFE;
// 'fmt ': tag, channels, samples per second, bytes per second, bytes per block, bits per sample;
// extensible formats add sizes, speaker positions and a sub-format that begins with the actual tag.
constexpr std::uint64_t kSubFormat = 24;

constexpr std::uint64_t kSecondsOfDay = 86400;

// "30000/1001", or "25".
Rate RateOf(std::string_view text) {
  const std::size_t slash = text.find('/');
  if (slash == std::string_view::npos) return DecimalFraction(text);
  return Rate{NumberAtStart(text.substr(0, slash)), NumberAtStart(text.substr(slash + 1))};
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
      broadcast_ = formats::sound::ParseBroadcastExtension(
          ChunkBytes(file, chunk, formats::sound::kBroadcastExtensionSize));
      break;
    case FourCC("iXML"):
      hasIXML_ = true;
      if (chunk.size > formats::sound::kMaxIXmlSize) break;
      ixml_ = formats::sound::ParseIXml(ChunkBytes(file, chunk, chunk.size).Text());
      break;
    default:
      break;
  }
}

bool WaveFacts::Store(std::uint64_t fileBytes, TXMPMeta& meta) const {
  if (broadcast_) StoreBroadcast(meta);
  if (format_) {
    SetWaveFormat(*format_, meta);
    const bool plain = format_->tag == kPCM || format_->tag == kFloat;
    const std::uint64_t samples =
        plain && format_->blockBytes != 0 ? dataBytes_ / format_->blockBytes : samples_;
    if (samples != 0) {
      SetDuration(meta, samples, Rate{format_->rate, 1});
      SetFileDataRate(meta, fileBytes, samples, format_->rate);
    }
  }
  if (ixml_) StoreIXML(meta);
  StoreStart(meta);
  return format_ || broadcast_ || hasIXML_;
}

void WaveFacts::StoreBroadcast(TXMPMeta& meta) const {
  const auto text = [this](std::string_view name) {
    return NativeText(broadcast_->DescriptionValue(name));
  };
  meta.SetLocalizedText(kNsDC, "description", "x-default", NativeText(broadcast_->description));
  std::string date = broadcast_->date + "T" + broadcast_->time;
  if (date.size() == 19) date[13] = date[16] = ':';  // other separators are allowed
  meta.SetProperty(kNsXMP, "CreateDate", ExifDate(date));
  meta.SetProperty(kNsBext, "originator", NativeText(broadcast_->originator));
  meta.SetProperty(kNsBext, "originatorReference", NativeText(broadcast_->originatorReference));
  meta.SetProperty(kNsBext, "timeReference", std::to_string(broadcast_->timeReference));
  meta.SetProperty(kNsDM, "scene", text("SCENE"));
  meta.SetProperty(kNsDM, "takeNumber", text("TAKE"));
  meta.SetProperty(kNsDM, "tapeName", text("TAPE"));
  meta.SetProperty(kNsDM, "logComment", text("NOTE"));
}

void WaveFacts::StoreIXML(TXMPMeta& meta) const {
  meta.SetProperty(kNsDM, "tapeName", ixml_->tape);
  meta.SetProperty(kNsDM, "scene", ixml_->scene);
  meta.SetProperty(kNsDM, "takeNumber", ixml_->take);
  meta.SetProperty(kNsDM, "logComment", ixml_->note);
  meta.SetProperty(kNsDM, "shotLocation", ixml_->location);
  if (ixml_->noGood) meta.SetProperty(kNsDM, "good", "False");
  if (ixml_->circled) meta.SetProperty(kNsDM, "good", "True");
}

// The rate is that of iXML, else "sSPEED=025.000-ND" in the description. Without one, the time has
// no timecode.
void WaveFacts::StoreStart(TXMPMeta& meta) const {
  std::uint64_t samples = ixml_ ? ixml_->timeStamp : 0;
  std::uint64_t perSecond = ixml_ ? ixml_->timeStampRate : 0;
  if (samples == 0 && broadcast_) {
    samples = broadcast_->timeReference;
    if (format_) perSecond = format_->rate;
  }
  if (perSecond == 0 && format_) perSecond = format_->rate;
  if (ixml_ && !ixml_->timecodeRate.empty()) {
    return SetTimecode(samples, perSecond, RateOf(ixml_->timecodeRate), ixml_->dropFrame, meta);
  }
  if (!broadcast_) return;
  const std::string_view speed = broadcast_->DescriptionValue("SPEED");
  const std::size_t dash = speed.find('-');
  if (dash == std::string_view::npos) return;
  SetTimecode(samples, perSecond, RateOf(speed.substr(0, dash)),
              speed.substr(dash + 1).starts_with("DF"), meta);
}

}  // namespace Sorvik::xmp
