// SPDX-License-Identifier: MIT
#include "xmp/readers/IsoSampleEntry.h"

#include <bit>
#include <iterator>

#include "xmp/Namespaces.h"
#include "xmp/readers/BitReader.h"
#include "xmp/readers/CodecNames.h"
#include "xmp/readers/NativeText.h"

namespace Sorvik::xmp {

namespace {

using foundation::ByteReader;

// Offsets in a sample description, which begins with its size, type, 6 reserved bytes and the index
// of its data reference.
constexpr std::uint64_t kType = 4;
constexpr std::uint64_t kVersion = 16;
// Audio.
constexpr std::uint64_t kChannels = 24;
constexpr std::uint64_t kSampleBits = 26;
constexpr std::uint64_t kSampleRate = 32;  // 16.16
constexpr std::uint64_t kSoundBoxes = 36;
constexpr std::uint64_t kSoundBoxesV1 = 52;
constexpr std::uint64_t kRateV2 = 40;  // 64-bit float
constexpr std::uint64_t kChannelsV2 = 48;
constexpr std::uint64_t kSampleBitsV2 = 56;
// Timecode.
constexpr std::uint64_t kTimecodeFlags = 20;
constexpr std::uint64_t kTimecodeScale = 24;
constexpr std::uint64_t kFrameDuration = 28;
constexpr std::uint64_t kFramesPerSecond = 32;
constexpr std::uint64_t kTimecodeBoxes = 34;

struct Sound {
  std::uint32_t type = 0;
  std::uint64_t rate = 0;
  unsigned bits = 0;
  unsigned channels = 0;
};

// Returns the offset after a descriptor length: seven bits per byte, the eighth set if another byte
// follows.
std::uint64_t OffsetAfterLength(ByteReader bytes, std::uint64_t at) {
  constexpr unsigned kMaxBytes = 4;
  for (unsigned i = 1; i < kMaxBytes && (bytes.U8(at).value_or(0) & 0x80) != 0; ++i) ++at;
  return at + 1;
}

// From the configuration of the decoder; 0 if unknown. Sample entries of MP4 files contain two
// channels for any number, and no rate above 65535.
struct Decoder {
  unsigned channels = 0;
  std::uint64_t rate = 0;
  std::uint32_t type = 0;  // the sample description that would name the codec
};

// ISO/IEC 14496-3, 1.6.2: the audio specific configuration.
Decoder ReadAudioConfiguration(ByteReader bytes) {
  constexpr std::uint32_t kRates[] = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                      22050, 16000, 12000, 11025, 8000,  7350};
  constexpr unsigned kExplicitRate = 15;
  constexpr unsigned kParametricStereo = 29;  // one channel decoded to two
  Decoder decoder;
  BitReader bits(bytes);
  const unsigned type = bits.Bits(5);
  if (type == kParametricStereo) return decoder;
  if (type == 31) bits.Skip(6);
  const unsigned rate = bits.Bits(4);
  if (rate < std::size(kRates)) decoder.rate = kRates[rate];
  if (rate == kExplicitRate) decoder.rate = bits.Bits(24);
  const unsigned configuration = bits.Bits(4);
  if (!bits.Good() || configuration > 7) return Decoder();
  decoder.channels = configuration == 7 ? 8 : configuration;
  return decoder;
}

// The offset of the decoder configuration in an elementary stream descriptor, which begins with the
// type of the object (ISO/IEC 14496-1, 7.2.6); 0 if there is none.
std::uint64_t FindDecoderConfiguration(ByteReader esds) {
  constexpr std::uint64_t kFlags = 4;  // of the box
  const auto at = [&esds](std::uint64_t place) { return esds.U8(place).value_or(0); };
  if (at(kFlags) != 3) return 0;  // ES_Descriptor
  std::uint64_t place = OffsetAfterLength(esds, kFlags + 1);
  const unsigned parts = at(place + 2);
  place += 3;
  if ((parts & 0x80) != 0) place += 2;
  if ((parts & 0x40) != 0) place += std::uint64_t{1} + at(place);
  if ((parts & 0x20) != 0) place += 2;
  if (at(place) != 4) return 0;  // DecoderConfigDescriptor
  return OffsetAfterLength(esds, place + 1);
}

Decoder ReadStreamDescriptor(ByteReader esds) {
  constexpr unsigned kMPEG4Audio = 0x40;
  const std::uint64_t place = FindDecoderConfiguration(esds);
  Decoder decoder;
  if (place == 0) return decoder;
  const unsigned object = esds.U8(place).value_or(0);
  if (object == 0x69 || object == 0x6B) decoder.type = FourCC(".mp3");
  if (object == 0xA5) decoder.type = FourCC("ac-3");
  if (object == 0xA6) decoder.type = FourCC("ec-3");
  constexpr std::uint64_t kSpecific = 13;
  if (object != kMPEG4Audio || esds.U8(place + kSpecific) != 5) return decoder;
  return ReadAudioConfiguration(esds.Clip(OffsetAfterLength(esds, place + kSpecific + 1)));
}

// Version and flags, type and length of the block; sizes of blocks and frames, 20 bits rate, 3 bits
// channels (RFC 9639, 8.2).
Decoder ReadFLAC(ByteReader dfLa) {
  Decoder decoder;
  constexpr std::uint64_t kRate = 18;
  BitReader bits(dfLa.Clip(kRate));
  decoder.rate = bits.Bits(20);
  decoder.channels = bits.Bits(3) + 1;
  return bits.Good() ? decoder : Decoder();
}

// The channels of AC-3 and of the first stream of Enhanced AC-3 (ETSI TS 102 366, annex F),
// `before` bits after the start of the box.
unsigned ChannelsOfAC3(ByteReader box, unsigned before) {
  constexpr unsigned kMain[] = {2, 1, 2, 3, 3, 4, 4, 5};
  BitReader bits(box);
  bits.Skip(before);
  const unsigned main = kMain[bits.Bits(3)];
  const unsigned effects = bits.Bits(1);
  return bits.Good() ? main + effects : 0;
}

// In QuickTime files the descriptor is one level deeper.
Decoder ReadDecoder(ByteReader entry, std::uint64_t boxes) {
  FileWindow memory(entry);
  const IsoBox all{0, boxes, entry.Size()};
  const auto bytesOf = [&entry](const IsoBox& box) { return entry.Clip(box.body, box.Size()); };
  if (const auto ac3 = FindBox(memory, all, FourCC("dac3"))) {
    return {ChannelsOfAC3(bytesOf(*ac3), 10)};
  }
  if (const auto ac3 = FindBox(memory, all, FourCC("dec3"))) {
    return {ChannelsOfAC3(bytesOf(*ac3), 28)};
  }
  if (const auto flac = FindBox(memory, all, FourCC("dfLa"))) return ReadFLAC(bytesOf(*flac));
  auto esds = FindBox(memory, all, FourCC("esds"));
  if (!esds) {
    const auto wave = FindBox(memory, all, FourCC("wave"));
    if (wave) esds = FindBox(memory, *wave, FourCC("esds"));
  }
  return esds ? ReadStreamDescriptor(bytesOf(*esds)) : Decoder();
}

Sound ReadSound(ByteReader entry) {
  Sound sound;
  const unsigned version = entry.U16BE(kVersion).value_or(0);
  sound.type = OriginalFormat(entry, version == 1 ? kSoundBoxesV1 : kSoundBoxes);
  sound.channels = entry.U16BE(kChannels).value_or(0);
  sound.bits = entry.U16BE(kSampleBits).value_or(0);
  sound.rate = entry.U32BE(kSampleRate).value_or(0) >> 16;
  // 3GPP TS 26.244, 6.5: entries of AMR contain two channels, but the codec has one.
  if (sound.type == FourCC("samr") || sound.type == FourCC("sawb")) {
    sound.channels = 1;
    return sound;
  }
  if (version != 2) {
    if (entry.Size() <= kSoundBoxes) return sound;
    const Decoder decoder = ReadDecoder(entry, version == 1 ? kSoundBoxesV1 : kSoundBoxes);
    if (decoder.channels != 0) sound.channels = decoder.channels;
    if (sound.rate == 0) sound.rate = decoder.rate;
    if (decoder.type != 0) {
      sound.type = decoder.type;
      sound.channels = decoder.channels;  // two in the entry for any number
    }
    return sound;
  }

  const double rate = std::bit_cast<double>(entry.U64BE(kRateV2).value_or(0));
  sound.rate = rate >= 1 && rate < 1e7 ? static_cast<std::uint64_t>(rate + 0.5) : 0;
  sound.channels = entry.U32BE(kChannelsV2).value_or(0);
  sound.bits = entry.U32BE(kSampleBitsV2).value_or(0);
  return sound;
}

}  // namespace

void SetAudioEntries(const std::vector<IsoTrack>& tracks, TXMPMeta& meta) {
  Sound first;
  unsigned channels = 0;
  bool eachMono = true;
  for (const IsoTrack& track : tracks) {
    if (track.handler != FourCC("soun") || track.entry.empty()) continue;
    const Sound sound = ReadSound(foundation::ReaderOf(track.entry));
    if (first.type == 0) first = sound;
    eachMono = eachMono && sound.channels == 1;
    ++channels;
  }
  if (first.type == 0) return;

  const std::string name = AudioCodecName(first.type);
  meta.SetProperty(kNsDM, "audioCompressor", name);
  SetAudioSampleRate(meta, first.rate);
  // Several tracks with more than one channel are languages or mixes; only the first is used.
  SetAudioChannels(meta, eachMono ? channels : first.channels);
  if (name != "PCM") {
    meta.SetProperty(kNsDM, "audioSampleType", "Compressed");
  } else if (const unsigned bits = PCMBits(first.type, first.bits); IsFloatPCM(first.type)) {
    meta.SetProperty(kNsDM, "audioSampleType", bits == 32 ? "32Float" : "Other");
  } else {
    SetAudioSampleBits(meta, bits);
  }
}

std::uint32_t VideoFormatOf(ByteReader esds) {
  const std::uint64_t place = FindDecoderConfiguration(esds);
  const unsigned object = place == 0 ? 0 : esds.U8(place).value_or(0);
  if (object >= 0x60 && object <= 0x65) return FourCC("m2v1");
  if (object == 0x6A) return FourCC("mp1v");
  return object == 0x6C ? FourCC("jpeg") : 0;
}

std::uint32_t OriginalFormat(ByteReader entry, std::uint64_t boxes) {
  const std::uint32_t type = entry.U32BE(kType).value_or(0);
  if (type >> 8 != FourCC("enc") || entry.Size() <= boxes) return type;
  FileWindow memory(entry);
  const auto sinf = FindBox(memory, IsoBox{0, boxes, entry.Size()}, FourCC("sinf"));
  const auto frma = sinf ? FindBox(memory, *sinf, FourCC("frma")) : std::nullopt;
  return frma ? entry.U32BE(frma->body).value_or(type) : type;
}

TimecodeEntry ReadTimecodeEntry(ByteReader entry) {
  TimecodeEntry result;
  result.base = entry.U8(kFramesPerSecond).value_or(0);
  result.drop = (entry.U32BE(kTimecodeFlags).value_or(0) & 1) != 0;
  result.rate = {entry.U32BE(kTimecodeScale).value_or(0), entry.U32BE(kFrameDuration).value_or(0)};
  // Some cameras round 29.97 down to 29 frames.
  constexpr std::uint64_t kMaxBase = 255;
  if (result.rate.Known()) {
    const std::uint64_t base = (result.rate.num + result.rate.den / 2) / result.rate.den;
    result.statedBase = result.base;
    if (base != 0 && base <= kMaxBase) result.base = static_cast<unsigned>(base);
  }

  FileWindow memory(entry);
  IsoBoxes boxes(memory, kTimecodeBoxes, entry.Size());
  while (const auto box = boxes.Next()) {
    if (box->type != FourCC("name")) continue;
    // Length, language, text.
    const ByteReader body = entry.Clip(box->body, box->Size());
    result.reel = NativeText(body.TextAt(4, body.U16BE(0).value_or(0)));
  }
  return result;
}

}  // namespace Sorvik::xmp
