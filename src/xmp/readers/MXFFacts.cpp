// SPDX-License-Identifier: MIT
#include "xmp/readers/MXFFacts.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <string>

#include "SorvikProvider/foundation/UTF16String.h"
#include "xmp/Namespaces.h"
#include "xmp/readers/MXFLabels.h"

namespace Sorvik::xmp::mxf {

namespace {

// Static local tags.
enum Tag : std::uint16_t {
  kDataDefinition = 0x0201,
  kComponentDuration = 0x0202,
  kComponents = 0x1001,
  kSourcePackageID = 0x1101,
  kSourceTrackID = 0x1102,
  kStartPosition = 0x1201,
  kTimecodeStart = 0x1501,
  kTimecodeBase = 0x1502,
  kTimecodeDrop = 0x1503,
  kSampleRate = 0x3001,
  kContainerDuration = 0x3002,
  kEssenceContainer = 0x3004,
  kPictureCoding = 0x3201,
  kStoredHeight = 0x3202,
  kStoredWidth = 0x3203,
  kSampledHeight = 0x3204,
  kSampledWidth = 0x3205,
  kDisplayHeight = 0x3208,
  kDisplayWidth = 0x3209,
  kFrameLayout = 0x320C,
  kVideoLineMap = 0x320D,
  kAspectRatio = 0x320E,
  kFieldDominance = 0x3212,
  kColorPrimaries = 0x3219,
  kCodingEquations = 0x321A,
  kComponentDepth = 0x3301,
  kLastModified = 0x3B02,
  kIdentifications = 0x3B06,
  kCompanyName = 0x3C01,
  kProductName = 0x3C02,
  kVersionString = 0x3C04,
  kWriterModified = 0x3C06,
  kSoundBits = 0x3D01,
  kSoundRate = 0x3D03,
  kSoundCoding = 0x3D06,
  kSoundChannels = 0x3D07,
  kSubDescriptors = 0x3F01,
  kPackageUID = 0x4401,
  kPackageName = 0x4402,
  kTracks = 0x4403,
  kPackageModified = 0x4404,
  kPackageCreated = 0x4405,
  kUserComments = 0x4406,
  kDescriptor = 0x4701,
  kTrackID = 0x4801,
  kTrackSequence = 0x4803,
  kEditRate = 0x4B01,
  kOrigin = 0x4B02,
  kTaggedName = 0x5001,
  kTaggedValue = 0x5003,
};
// BitRate of the MPEG picture descriptor has no static tag.
constexpr Key kBitRateItem{{0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x05, 0x04, 0x01, 0x06, 0x02,
                            0x01, 0x0B, 0x00, 0x00}};

// A package of a 16-channel recorder has 19 tracks, a header of an editor some 70 descriptors.
constexpr std::size_t kMaxTracks = 256;
constexpr std::size_t kMaxDescriptors = 256;
constexpr std::size_t kMaxComments = 64;
// From material to file to tape package is two steps.
constexpr int kMaxPackageSteps = 4;

Rate RateAt(ByteReader item) {
  const auto num = item.U32BE(0).value_or(0);
  const auto den = item.U32BE(4).value_or(0);
  // Signed in the file: negative values are treated as unknown.
  if (num > INT32_MAX || den > INT32_MAX) return Rate();
  return Rate{num, den};
}

std::optional<std::int64_t> I64At(ByteReader item) {
  const auto value = item.U64BE(0);
  if (!value) return std::nullopt;
  return static_cast<std::int64_t>(*value);
}

std::optional<DateTime> DateAt(ByteReader item) {
  const auto view = item.ViewAt<8>(0);
  if (!view) return std::nullopt;
  const auto at = [&view](std::size_t i) { return std::to_integer<unsigned>((*view)[i]); };
  DateTime date;
  date.year = at(0) << 8 | at(1);
  date.month = at(2);
  date.day = at(3);
  date.hour = at(4);
  date.minute = at(5);
  date.second = at(6);
  date.millisecond = at(7) * 4;  // in 1/250 s
  if (!date.Valid()) return std::nullopt;
  return date;
}

std::string TextOf(ByteReader item, bool bigEndian = true) {
  std::u16string text;
  for (std::uint64_t at = 0;; at += 2) {
    const auto unit = item.U16(at, bigEndian);
    if (!unit || *unit == 0) break;
    text.push_back(static_cast<char16_t>(*unit));
  }
  return Hestra::MakeStdString(text);
}

// The value of a tagged value: byte order and type, then UTF-16.
std::string IndirectText(ByteReader item) {
  constexpr std::uint64_t kPrefix = 17;
  if (item.Matches(0, "B")) return TextOf(item.Clip(kPrefix));
  if (item.Matches(0, "L")) return TextOf(item.Clip(kPrefix), false);
  return {};
}

std::string HexText(ByteReader item) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const std::byte b : item.Bytes()) {
    text.push_back(kDigits[std::to_integer<unsigned>(b) >> 4]);
    text.push_back(kDigits[std::to_integer<unsigned>(b) & 0x0F]);
  }
  return text;
}

// Converts a count of units of rate `from` to units of rate `to`. Counts and parts of rates are
// below 2^31.
std::uint64_t Rescale(std::uint64_t units, const Rate& from, const Rate& to) {
  if (!from.Known() || !to.Known() || from == to) return units;
  return static_cast<std::uint64_t>(static_cast<double>(units) * static_cast<double>(from.den) /
                                    static_cast<double>(from.num) * static_cast<double>(to.num) /
                                    static_cast<double>(to.den));
}

bool AllZero(ByteReader bytes) {
  return std::ranges::all_of(bytes.Bytes(), [](std::byte b) { return b == std::byte{0}; });
}

bool IsSound(SetKind kind) {
  return kind == SetKind::kGenericSound || kind == SetKind::kAES3Sound ||
         kind == SetKind::kWaveSound;
}

bool IsPicture(SetKind kind) {
  return kind == SetKind::kGenericPicture || kind == SetKind::kCDCIPicture ||
         kind == SetKind::kRGBAPicture || kind == SetKind::kMPEGPicture;
}

// The display size, otherwise the sampled size, otherwise the stored size, which may include
// padding.
std::uint32_t Side(const LocalSet& picture, std::initializer_list<std::uint16_t> tags) {
  constexpr std::uint32_t kMaxSide = 0xFFFF;
  for (const std::uint16_t tag : tags) {
    const std::uint32_t side = picture.Item(tag).U32BE(0).value_or(0);
    if (side != 0 && side <= kMaxSide) return side;
  }
  return 0;
}

enum Layout : unsigned { kFull = 0, kSeparate = 1, kSingleField = 2, kMixed = 3, kSegmented = 4 };

const char* FieldOrder(const LocalSet& picture, unsigned layout, std::uint32_t height) {
  if (layout == kFull || layout == kSegmented) return "Progressive";
  if (layout != kSeparate && layout != kMixed) return nullptr;
  bool upper = height != 480 && height != 486;
  const ByteReader map = picture.Item(kVideoLineMap);
  const std::uint32_t first = map.U32BE(8).value_or(0);
  const std::uint32_t second = map.U32BE(12).value_or(0);
  // The first lines of the two fields have different parity if the upper field is first.
  if (first != 0 && second != 0) upper = (first & 1) != (second & 1);
  if (picture.Item(kFieldDominance).U8(0) == 2) upper = !upper;
  // Some writers store a wrong line map for standard-definition DV.
  if (IsDV(picture.Reference(kPictureCoding)) && height <= 576) upper = false;
  return upper ? "Upper" : "Lower";
}

// Companies that write MXF in cameras, as spelled in the files.
const char* MakerOf(std::string_view company) {
  constexpr const char* kMakers[] = {"Sony", "Panasonic",    "Canon",   "JVC", "Ikegami",
                                     "ARRI", "Grass Valley", "Hitachi", "RED"};
  for (const char* maker : kMakers) {
    const std::string_view name(maker);
    if (company.size() < name.size()) continue;
    const bool same = std::ranges::equal(company.substr(0, name.size()), name,
                                         [](char a, char b) { return (a | 32) == (b | 32); });
    if (same && (company.size() == name.size() || company[name.size()] == ' ')) return maker;
  }
  return nullptr;
}

}  // namespace

std::vector<Facts::Track> Facts::TracksOf(const LocalSet& package) const {
  std::vector<Track> tracks;
  for (const Key& id : package.References(kTracks, kMaxTracks)) {
    Track track;
    track.set = header_.Find(id);
    if (track.set == nullptr) continue;
    track.sequence = header_.Find(track.set->Reference(kTrackSequence));
    track.rate = RateAt(track.set->Item(kEditRate));
    if (track.sequence != nullptr) tracks.push_back(track);
  }
  return tracks;
}

std::optional<Facts::Track> Facts::FindTrack(const LocalSet& package, Essence essence) const {
  // Data definitions: 01 03 02 01 01 (and 02, 03) timecode, 01 03 02 02 01 picture, 02 sound.
  constexpr std::uint8_t kPrefix[] = {0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01,
                                      0x01, 0x01, 0x01, 0x03, 0x02};
  for (const Track& track : TracksOf(package)) {
    const auto definition = track.sequence->Reference(kDataDefinition);
    if (!definition || !definition->Begins(kPrefix)) continue;
    const std::uint8_t group = definition->bytes[11];
    const std::uint8_t kind = definition->bytes[12];
    const bool fits = essence == Essence::kTimecode
                          ? group == 1
                          : group == 2 && kind == static_cast<std::uint8_t>(essence);
    if (fits) return track;
  }
  return std::nullopt;
}

std::optional<Facts::Track> Facts::MainTrack() const {
  const LocalSet* material = header_.First(SetKind::kMaterialPackage);
  if (material == nullptr) return std::nullopt;
  if (auto picture = FindTrack(*material, Essence::kPicture)) return picture;
  return FindTrack(*material, Essence::kSound);
}

// A track may have a single component without a sequence.
const LocalSet* Facts::FirstComponent(const Track& track) const {
  if (track.sequence->Kind() != SetKind::kSequence) return track.sequence;
  for (const Key& id : track.sequence->References(kComponents, 1)) return header_.Find(id);
  return nullptr;
}

std::optional<Facts::Clip> Facts::SourceClipOf(const Track& track) const {
  const LocalSet* component = FirstComponent(track);
  if (component == nullptr || component->Kind() != SetKind::kSourceClip) return std::nullopt;
  const ByteReader umid = component->Item(kSourcePackageID);
  const auto start = KeyAt(umid, 0);
  const auto end = KeyAt(umid, 16);
  if (!start || !end || AllZero(umid)) return std::nullopt;
  Clip clip;
  clip.package = *start;
  clip.packageEnd = *end;
  clip.track = component->Item(kSourceTrackID).U32BE(0).value_or(0);
  clip.start = I64At(component->Item(kStartPosition)).value_or(0);
  return clip;
}

const LocalSet* Facts::PackageOf(const Clip& clip) const {
  for (const LocalSet& set : header_.Sets()) {
    if (set.Kind() != SetKind::kSourcePackage) continue;
    const ByteReader umid = set.Item(kPackageUID);
    if (KeyAt(umid, 0) == clip.package && KeyAt(umid, 16) == clip.packageEnd) return &set;
  }
  return nullptr;
}

std::optional<std::uint64_t> Facts::LengthOf(const Track& track) const {
  auto length = I64At(track.sequence->Item(kComponentDuration));
  if (!length || *length < 0) return std::nullopt;
  const std::int64_t origin = I64At(track.set->Item(kOrigin)).value_or(0);
  if (origin > 0 && origin < *length) *length -= origin;  // frames before the start of the clip
  return static_cast<std::uint64_t>(*length);
}

std::optional<Facts::Duration> Facts::GetDuration() const {
  const auto track = MainTrack();
  if (!track) return std::nullopt;
  if (const auto length = LengthOf(*track); length && track->rate.Known()) {
    return Duration{*length, track->rate};
  }
  const auto clip = SourceClipOf(*track);
  const LocalSet* package = clip ? PackageOf(*clip) : nullptr;
  if (package != nullptr) {
    for (const Track& source : TracksOf(*package)) {
      if (source.set->Item(kTrackID).U32BE(0) != clip->track) continue;
      if (const auto length = LengthOf(source); length && source.rate.Known()) {
        return Duration{*length, source.rate};
      }
    }
  }
  for (const LocalSet* descriptor : Descriptors()) {
    const auto length = I64At(descriptor->Item(kContainerDuration));
    const Rate rate = RateAt(descriptor->Item(kSampleRate));
    if (length && *length > 0 && rate.Known()) {
      return Duration{static_cast<std::uint64_t>(*length), rate};
    }
  }
  return std::nullopt;
}

std::vector<const LocalSet*> Facts::Descriptors() const {
  std::vector<const LocalSet*> all;
  // Returns false for duplicates, so that many packages with one descriptor cost no more.
  const auto add = [&all](const LocalSet* set) {
    if (set == nullptr || std::ranges::find(all, set) != all.end()) return false;
    all.push_back(set);
    return true;
  };
  for (const LocalSet& set : header_.Sets()) {
    if (set.Kind() != SetKind::kSourcePackage) continue;
    if (all.size() >= kMaxDescriptors) break;
    const LocalSet* descriptor = header_.Find(set.Reference(kDescriptor));
    if (!add(descriptor) || descriptor->Kind() != SetKind::kMultipleDescriptor) continue;
    for (const Key& id : descriptor->References(kSubDescriptors, kMaxDescriptors)) {
      add(header_.Find(id));
    }
  }
  return all;
}

std::optional<Facts::Start> Facts::PackageTimecode(const LocalSet& package) const {
  const auto track = FindTrack(package, Essence::kTimecode);
  if (!track) return std::nullopt;
  const LocalSet* component = FirstComponent(*track);
  if (component == nullptr || component->Kind() != SetKind::kTimecodeComponent) {
    return std::nullopt;
  }
  const auto frames = I64At(component->Item(kTimecodeStart));
  const unsigned base = component->Item(kTimecodeBase).U16BE(0).value_or(0);
  if (!frames || *frames < 0 || base == 0) return std::nullopt;
  const bool drop = component->Item(kTimecodeDrop).U8(0).value_or(0) != 0;
  return Start{static_cast<std::uint64_t>(*frames), base, drop, track->rate};
}

// The material package's own timecode. Without one, the first timecode on the path from material to
// file to tape package, offset by the start of the clip in its source. Editors store only that one.
std::optional<Facts::Start> Facts::StartTimecode() const {
  const LocalSet* package = header_.First(SetKind::kMaterialPackage);
  if (auto start = PackageTimecode(*package)) return start;
  std::optional<Track> track = MainTrack();
  std::uint64_t offset = 0;
  for (int step = 0; step < kMaxPackageSteps && track; ++step) {
    const auto clip = SourceClipOf(*track);
    package = clip ? PackageOf(*clip) : nullptr;
    if (package == nullptr) break;
    // Positions are in units of the referring track.
    const auto start = PackageTimecode(*package);
    if (clip->start > 0 && clip->start < INT32_MAX) {
      offset += start ? Rescale(static_cast<std::uint64_t>(clip->start), track->rate, start->rate)
                      : static_cast<std::uint64_t>(clip->start);
    }
    if (start) return Start{start->frames + offset, start->base, start->drop, start->rate};
    track = FindTrack(*package, Essence::kPicture);
    if (!track) track = FindTrack(*package, Essence::kSound);
  }
  return std::nullopt;
}

void Facts::StoreDates(TXMPMeta& meta) const {
  const LocalSet* material = header_.First(SetKind::kMaterialPackage);
  const LocalSet* preface = header_.First(SetKind::kPreface);
  const LocalSet* writer = header_.First(SetKind::kIdentification);
  const auto date = [](const LocalSet* set, std::uint16_t tag) {
    return set == nullptr ? std::optional<DateTime>() : DateAt(set->Item(tag));
  };
  auto created = date(material, kPackageCreated);
  if (!created) created = date(preface, kLastModified);
  if (!created) created = date(writer, kWriterModified);
  auto modified = date(preface, kLastModified);
  if (!modified) modified = date(material, kPackageModified);
  // The standard requires UTC, but cameras write local time: no time zone is stored.
  if (created) meta.SetProperty(kNsXMP, "CreateDate", DateText(*created));
  if (modified) meta.SetProperty(kNsXMP, "ModifyDate", DateText(*modified));
}

void Facts::StoreWriter(TXMPMeta& meta) const {
  // The last identification is the latest writer; the first is the creator of the file.
  const LocalSet* first = header_.First(SetKind::kIdentification);
  if (first == nullptr) return;
  const LocalSet* last = first;
  if (const LocalSet* preface = header_.First(SetKind::kPreface)) {
    for (const Key& id : preface->References(kIdentifications, kMaxTracks)) {
      if (const LocalSet* set = header_.Find(id)) last = set;
    }
  }
  std::string tool;
  for (const std::uint16_t tag : {kCompanyName, kProductName, kVersionString}) {
    const std::string part = TextOf(last->Item(tag));
    if (!tool.empty() && !part.empty()) tool += ' ';
    tool += part;
  }
  meta.SetProperty(kNsXMP, "CreatorTool", tool);
  meta.SetProperty(kNsTIFF, "software", tool);
  const char* maker = MakerOf(TextOf(first->Item(kCompanyName)));
  if (maker == nullptr) return;
  const std::string product = TextOf(first->Item(kProductName));
  meta.SetProperty(kNsTIFF, "Make", maker);
  meta.SetProperty(kNsTIFF, "Model", product);
  meta.SetProperty(kNsDM, "cameraModel", product);
}

void Facts::StorePicture(const LocalSet& picture, const std::optional<Key>& container,
                         TXMPMeta& meta) const {
  const unsigned layout = picture.Item(kFrameLayout).U8(0).value_or(0xFF);
  const std::uint32_t width = Side(picture, {kDisplayWidth, kSampledWidth, kStoredWidth});
  std::uint32_t height = Side(picture, {kDisplayHeight, kSampledHeight, kStoredHeight});
  // Fields are stored separately: the sizes are those of one field.
  if (layout == kSeparate || layout == kSingleField || layout == kSegmented) height *= 2;
  SetFrameSize(meta, width, height);
  const Rate aspect = RateAt(picture.Item(kAspectRatio));
  if (aspect.Known()) SetPixelAspectRatio(meta, aspect.num * height, aspect.den * width);
  SetPixelDepth(meta, picture.Item(kComponentDepth).U32BE(0).value_or(0));
  if (const char* order = FieldOrder(picture, layout, height)) {
    meta.SetProperty(kNsDM, "videoFieldOrder", order);
  }
  const char* codec = PictureCodingName(picture.Reference(kPictureCoding));
  if (codec == nullptr) codec = ContainerName(picture.Reference(kEssenceContainer));
  if (codec == nullptr) codec = ContainerName(container);
  if (codec != nullptr) meta.SetProperty(kNsDM, "videoCompressor", codec);
  // Primaries that are present decide: wide-gamut video often has the equations of BT.709.
  const auto primaries = picture.Reference(kColorPrimaries);
  const auto equations = picture.Reference(kCodingEquations);
  if (const char* space = ColorSpaceName(primaries ? primaries : equations)) {
    meta.SetProperty(kNsDM, "videoColorSpace", space);
  }
  const std::uint32_t bits = picture.Item(header_.TagOf(kBitRateItem)).U32BE(0).value_or(0);
  constexpr std::uint32_t kBitsInMegabyte = 8'000'000;
  if (bits == 0) return;
  const std::uint32_t divisor = std::gcd(bits, kBitsInMegabyte);
  meta.SetProperty(
      kNsDM, "fileDataRate",
      std::to_string(bits / divisor) + "/" + std::to_string(kBitsInMegabyte / divisor));
}

void Facts::StoreSound(const std::vector<const LocalSet*>& descriptors, TXMPMeta& meta) const {
  const LocalSet* first = nullptr;
  std::uint64_t channels = 0;
  // Cameras describe each channel separately.
  for (const LocalSet* descriptor : descriptors) {
    if (!IsSound(descriptor->Kind())) continue;
    if (first == nullptr) first = descriptor;
    channels += descriptor->Item(kSoundChannels).U32BE(0).value_or(0);
  }
  if (first == nullptr) return;
  const Rate rate = RateAt(first->Item(kSoundRate));
  if (rate.Known()) SetAudioSampleRate(meta, rate.num / rate.den);
  const char* codec = SoundCodingName(first->Reference(kSoundCoding));
  const bool plain = std::string_view(codec) == "PCM";
  if (plain) {
    SetAudioSampleBits(meta, first->Item(kSoundBits).U32BE(0).value_or(0));
  } else {
    meta.SetProperty(kNsDM, "audioSampleType", "Compressed");
  }
  SetAudioChannels(meta, static_cast<unsigned>(std::min<std::uint64_t>(channels, 0xFFFF)));
  meta.SetProperty(kNsDM, "audioCompressor", codec);
}

void Facts::StoreComment(TXMPMeta& meta) const {
  const LocalSet* material = header_.First(SetKind::kMaterialPackage);
  for (const Key& id : material->References(kUserComments, kMaxComments)) {
    const LocalSet* set = header_.Find(id);
    if (set == nullptr || set->Kind() != SetKind::kTaggedValue) continue;
    const std::string name = TextOf(set->Item(kTaggedName));
    if (name != "Comment" && name != "Comments") continue;
    meta.SetProperty(kNsDM, "comment", IndirectText(set->Item(kTaggedValue)));
    return;
  }
}

// The package of the tape or film that the clip was recorded on.
void Facts::StoreTape(TXMPMeta& meta) const {
  for (const LocalSet& set : header_.Sets()) {
    if (set.Kind() != SetKind::kSourcePackage) continue;
    const LocalSet* descriptor = header_.Find(set.Reference(kDescriptor));
    if (descriptor == nullptr || descriptor->Kind() != SetKind::kTapeDescriptor) continue;
    return meta.SetProperty(kNsDM, "tapeName", TextOf(set.Item(kPackageName)));
  }
}

void Facts::Store(const std::optional<Key>& container, TXMPMeta& meta) const {
  const LocalSet* material = header_.First(SetKind::kMaterialPackage);
  if (material == nullptr) return;
  const ByteReader umid = material->Item(kPackageUID).Clip(0, 32);
  if (umid.Size() == 32 && !AllZero(umid)) {
    meta.SetProperty(kNsDC, "identifier", HexText(umid));
  }
  StoreDates(meta);
  StoreWriter(meta);
  StoreComment(meta);
  StoreTape(meta);
  Rate rate;
  // In an audio file, too, the material package contains the frame rate.
  if (const auto track = FindTrack(*material, Essence::kPicture)) {
    rate = track->rate;
    SetFrameRate(meta, rate);
  }
  if (const auto start = StartTimecode()) {
    const Rate counted = rate.Known() ? rate : start->rate;
    SetStartTimecode(meta, TimecodeOfFrames(start->frames, start->base, start->drop), counted);
  }
  const auto descriptors = Descriptors();
  for (const LocalSet* descriptor : descriptors) {
    if (!IsPicture(descriptor->Kind())) continue;
    StorePicture(*descriptor, container, meta);
    break;
  }
  StoreSound(descriptors, meta);
}

}  // namespace Sorvik::xmp::mxf
