// SPDX-License-Identifier: MIT
#include "xmp/readers/NonRealTimeMetaReader.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "SorvikProvider/foundation/UTF16String.h"
#include "formats/sony/ClipRecord.h"
#include "foundation/XmlTree.h"
#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/CameraXml.h"
#include "xmp/readers/SonyCard.h"

namespace Sorvik::xmp {
namespace {

using formats::sony::Material;
using foundation::XmlElement;

const XmlElement& kMissingElement = *new XmlElement;  // workers may still read it at exit

const XmlElement& ChildOf(const XmlElement& element, std::string_view name) {
  const XmlElement* child = element.Child(name);
  return child == nullptr ? kMissingElement : *child;
}

std::string_view Trimmed(std::string_view text) {
  const auto begin = text.find_first_not_of(" \t\r\n");
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1);
}

std::string_view AttributeOf(const XmlElement& element, std::string_view name) {
  return Trimmed(element.Attribute(name));
}

// Returns the element's own attribute, otherwise the field of the material list.
std::string TextOr(std::string_view own, const Material* material, std::string Material::*field) {
  if (!own.empty() || material == nullptr) return std::string(own);
  return material->*field;
}

// A text that writers store as the element's text, in a child "Alias" or as an attribute in ASCII.
std::string_view LocalText(const XmlElement& element) {
  for (const std::string_view text :
       {element.TextOf("Alias"), element.Text(), AttributeOf(element, "usAscii"),
        AttributeOf(element, "name")}) {
    if (!text.empty()) return text;
  }
  return {};
}

// "MPEG2HD35_1440_1080_MP@HL": codec, width, height, profile. Not all tokens contain a size.
std::optional<std::pair<std::uint64_t, std::uint64_t>> SizeInToken(std::string_view token) {
  const auto first = token.find('_');
  if (first == token.npos) return std::nullopt;
  const auto second = token.find('_', first + 1);
  if (second == token.npos) return std::nullopt;
  const auto third = std::min(token.find('_', second + 1), token.size());
  const auto width = ParseUnsigned(token.substr(first + 1, second - first - 1));
  const auto height = ParseUnsigned(token.substr(second + 1, third - second - 1));
  if (!width || !height || *width == 0 || *height == 0) return std::nullopt;
  return std::pair(*width, *height);
}

// Facts from which others are derived. Each is taken from the clip's own XML if present.
struct ClipFormat {
  std::string rateText;  // "59.94i"; for slow and quick motion, the rate of the format
  std::string codec;
  std::string aspectRatio;
  unsigned timecodeBase = 0;  // attribute "tcFps": 24, 25 or 30
  bool halfStep = false;      // two frames share a timecode number
  Rate rate;
};

// Without a rate text, timecode bases of 24 and 30 mean the NTSC rates: the cameras that omit it
// hardly ever record true 24 or 30.
Rate RateOfTimecode(const ClipFormat& format) {
  const std::uint64_t frames = std::uint64_t{format.timecodeBase} * (format.halfStep ? 2 : 1);
  if (frames == 0) return {};
  return frames % 25 == 0 ? Rate{frames, 1} : Rate{frames * 1000, 1001};
}

ClipFormat FormatOf(const XmlElement& root, const Material* material) {
  ClipFormat format;
  const XmlElement& video = ChildOf(root, "VideoFormat");
  const XmlElement& frame = ChildOf(video, "VideoFrame");
  format.rateText = TextOr(AttributeOf(frame, "formatFps"), material, &Material::frameRate);
  format.codec = TextOr(AttributeOf(frame, "videoCodec"), material, &Material::videoType);
  format.aspectRatio = TextOr(AttributeOf(ChildOf(video, "VideoLayout"), "aspectRatio"), material,
                              &Material::aspectRatio);
  const XmlElement& table = ChildOf(root, "LtcChangeTable");
  const auto base = ParseUnsigned(AttributeOf(table, "tcFps"));
  if (base && (*base == 24 || *base == 25 || *base == 30)) {
    format.timecodeBase = static_cast<unsigned>(*base);
  }
  format.halfStep = AttributeOf(table, "halfStep") == "true";
  format.rate = FrameRateOfText(format.rateText);
  if (!format.rate.Known()) format.rate = RateOfTimecode(format);
  return format;
}

bool IsStandardDefinition(std::string_view codec) {
  return codec.starts_with("DV25") || codec.starts_with("DV50") || codec.starts_with("IMX");
}

void SetSize(const ClipFormat& format, const XmlElement& layout, TXMPMeta& native) {
  auto width = ParseUnsigned(AttributeOf(layout, "pixel"));
  auto height = ParseUnsigned(AttributeOf(layout, "numOfVerticalLine"));
  if (!width || !height) {
    const auto size = SizeInToken(format.codec);
    width = size ? std::optional(size->first) : std::nullopt;
    height = size ? std::optional(size->second) : std::nullopt;
  }
  const bool standard = !width && IsStandardDefinition(format.codec);
  const unsigned lines = TimecodeBaseOf(format.rate) % 25 == 0 ? 576 : 480;
  if (standard && format.rate.Known()) {
    width = 720;
    height = lines;
  }
  if (!width || !height || *width > UINT32_MAX || *height > UINT32_MAX) return;
  SetFrameSize(native, static_cast<std::uint32_t>(*width), static_cast<std::uint32_t>(*height));

  if (const auto shape = ParseNumberPair(AttributeOf(layout, "pixelAspect"), ':')) {
    SetPixelAspectRatio(native, shape->first, shape->second);
  } else if (const auto pixel = SDPixelAspectRatio(lines, format.aspectRatio); standard && pixel) {
    SetPixelAspectRatio(native, pixel->first, pixel->second);
  } else if (!standard) {
    SetPixelAspectRatioOf(native, *width, *height, format.aspectRatio);
  }
}

void SetVideo(const ClipFormat& format, const XmlElement& video, TXMPMeta& native) {
  native.SetProperty(kNsDM, "videoCompressor", format.codec);
  SetSize(format, ChildOf(video, "VideoLayout"), native);
  if (format.rate.Known()) SetFrameRate(native, format.rate);
  const auto interlaced = IsInterlacedText(format.rateText);
  if (!interlaced) return;
  const char* fields = IsStandardDefinition(format.codec) ? "Lower" : "Upper";
  // The field order of IMX differs from that of DV, and isn't stored.
  if (*interlaced && format.codec.starts_with("IMX")) return;
  native.SetProperty(kNsDM, "videoFieldOrder", *interlaced ? fields : "Progressive");
}

void SetAudio(const XmlElement& audio, const Material* material, TXMPMeta& native) {
  const XmlElement& port = ChildOf(audio, "AudioRecPort");
  const std::string codec = TextOr(AttributeOf(port, "audioCodec"), material, &Material::audioType);
  native.SetProperty(kNsDM, "audioCompressor", codec);
  if (codec.starts_with("LPCM")) {
    const auto bits = ParseUnsigned(std::string_view(codec).substr(4));
    if (bits && *bits <= 64) SetAudioSampleBits(native, static_cast<unsigned>(*bits));
  } else if (codec.starts_with("AAC")) {
    native.SetProperty(kNsDM, "audioSampleType", "Compressed");
  }
  if (const auto rate = ParseUnsigned(AttributeOf(port, "samplingRate"))) {
    SetAudioSampleRate(native, *rate);
  }
  const auto channels =
      ParseUnsigned(TextOr(AttributeOf(audio, "numOfChannel"), material, &Material::channels));
  SetCameraChannels(native, channels.value_or(0));
}

// Four bytes in hexadecimal, as in the longitudinal timecode word.
std::optional<std::array<std::byte, 4>> BytesOfWord(std::string_view text) {
  if (text.size() != 8) return std::nullopt;
  std::array<std::byte, 4> bytes{};
  for (std::size_t i = 0; i < text.size(); ++i) {
    static constexpr std::string_view kDigits = "0123456789ABCDEF";
    const char upper =
        text[i] >= 'a' && text[i] <= 'f' ? static_cast<char>(text[i] - 'a' + 'A') : text[i];
    const auto digit = kDigits.find(upper);
    if (digit == kDigits.npos) return std::nullopt;
    bytes[i / 2] = bytes[i / 2] << 4 | static_cast<std::byte>(digit);
  }
  return bytes;
}

// The word is frames, seconds, minutes, hours in BCD. Bits not needed for digits are flags (SMPTE
// 12M): drop frame, and with half steps the frame of the pair.
std::optional<Timecode> TimecodeOfWord(std::string_view text, const ClipFormat& format) {
  const auto bytes = BytesOfWord(text);
  if (!bytes) return std::nullopt;
  const auto frames = FromBCD((*bytes)[0], 0x3F);
  const auto seconds = FromBCD((*bytes)[1], 0x7F);
  const auto minutes = FromBCD((*bytes)[2], 0x7F);
  const auto hours = FromBCD((*bytes)[3], 0x3F);
  if (!frames || !seconds || !minutes || !hours) return std::nullopt;
  if (*frames >= format.timecodeBase || *seconds > 59 || *minutes > 59 || *hours > 23) {
    return std::nullopt;
  }
  const bool drop = format.timecodeBase == 30 && ((*bytes)[0] & std::byte{0x40}) != std::byte{0};
  Timecode timecode{*hours, *minutes, *seconds, *frames, drop};
  if (format.halfStep) {
    const std::byte pair = format.timecodeBase == 25 ? (*bytes)[3] : (*bytes)[1];
    timecode.frames = 2 * timecode.frames + ((pair & std::byte{0x80}) != std::byte{0} ? 1 : 0);
  }
  return timecode;
}

void SetTimecode(const ClipFormat& format, const XmlElement& table, TXMPMeta& native) {
  // Frame pairs on a base of 24 have no timecode format.
  if (format.timecodeBase == 0 || (format.halfStep && format.timecodeBase == 24)) return;
  const XmlElement* start = nullptr;
  for (const XmlElement* change : table.ChildrenNamed("LtcChange")) {
    if (start == nullptr) start = change;
    if (AttributeOf(*change, "frameCount") != "0") continue;
    start = change;
    break;
  }
  if (start == nullptr) return;
  const auto timecode = TimecodeOfWord(AttributeOf(*start, "value"), format);
  if (!timecode) return;
  // Clips of 50 and more frames per second count on the base of 25 or 30, except with half steps.
  const std::uint64_t base = std::uint64_t{format.timecodeBase} * (format.halfStep ? 2 : 1);
  const bool ntsc = base % 25 != 0 && format.rate.den == 1001;
  SetStartTimecode(native, *timecode, ntsc ? Rate{base * 1000, 1001} : Rate{base, 1});
}

std::string_view ItemOf(const XmlElement& group, std::string_view name) {
  for (const XmlElement* item : group.ChildrenNamed("Item")) {
    if (AttributeOf(*item, "name") == name) return AttributeOf(*item, "value");
  }
  return {};
}

// "34;42;19.831": degrees, minutes, seconds.
void SetCoordinate(const XmlElement& group, const std::string& name, unsigned largest,
                   TXMPMeta& native) {
  const std::string_view reference = ItemOf(group, name + "Ref");
  std::string_view text = ItemOf(group, name);
  if (reference.size() != 1) return;
  std::array<Rate, 3> parts;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const auto end = i + 1 < parts.size() ? text.find(';') : text.size();
    if (end == text.npos) return;
    const auto number = ParseDecimal(text.substr(0, end));
    if (!number) return;
    parts[i] = *number;
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  if (parts[0].num > largest * parts[0].den) return;
  SetGPSCoordinate(native, "GPS" + name, parts, reference.front());
}

void SetLocation(const XmlElement& record, TXMPMeta& native) {
  for (const XmlElement* group : record.ChildrenNamed("Group")) {
    if (AttributeOf(*group, "name") != "ExifGPS") continue;
    // "V" means that the receiver had no fix.
    if (ItemOf(*group, "Status") == "V") return;
    SetCoordinate(*group, "Latitude", 90, native);
    SetCoordinate(*group, "Longitude", 180, native);
    SetGPSAltitude(native, ItemOf(*group, "Altitude"));
    const std::string_view reference = ItemOf(*group, "AltitudeRef");
    if (native.HasProperty(kNsEXIF, "GPSAltitude") && !reference.empty()) {
      native.SetProperty(kNsEXIF, "GPSAltitudeRef", std::string(reference));
    }
    return;
  }
}

// The lens, the capture rate (which differs from the frame rate in slow and quick motion), and how
// the picture was recorded.
void SetCapture(const XmlElement& root, TXMPMeta& native) {
  native.SetProperty(kNsAux, "Lens", std::string(AttributeOf(ChildOf(root, "Lens"), "modelName")));
  const XmlElement& frame = ChildOf(ChildOf(root, "VideoFormat"), "VideoFrame");
  native.SetProperty(kNsNonRealTimeMeta, "captureFps",
                     std::string(AttributeOf(frame, "captureFps")));
  for (const XmlElement* group : ChildOf(root, "AcquisitionRecord").ChildrenNamed("Group")) {
    if (AttributeOf(*group, "name") != "CameraUnitMetadataSet") continue;
    for (const char* item : {"CaptureGammaEquation", "CaptureColorPrimaries"}) {
      native.SetProperty(kNsNonRealTimeMeta, item, std::string(ItemOf(*group, item)));
    }
  }
}

void SetDevice(const XmlElement& root, TXMPMeta& native) {
  // "Device" is a separate recorder if there is one.
  const XmlElement& camera = ChildOf(root, "Camera");
  const XmlElement& device = &camera == &kMissingElement ? ChildOf(root, "Device") : camera;
  const std::string model(AttributeOf(device, "modelName"));
  native.SetProperty(kNsDM, "cameraModel", model);
  native.SetProperty(kNsTIFF, "Model", model);
  native.SetProperty(kNsTIFF, "Make", std::string(AttributeOf(device, "manufacturer")));
  native.SetProperty(kNsTIFF, "software",
                     std::string(AttributeOf(ChildOf(device, "Element"), "software")));
  const std::string_view serial = AttributeOf(device, "serialNo");
  // All bits set or zero: not initialised in the factory.
  if (serial == "4294967295" || serial == "0") return;
  native.SetProperty(kNsAux, "SerialNumber", std::string(serial));
}

struct MetaRow {
  std::string_view meta;
  const char* property;
};
constexpr MetaRow kMetaRows[] = {
    {"Scene", "scene"},
    {"Shot", "shotNumber"},
    {"Take", "takeNumber"},
    {"CameraIndex", "camera"},
    {"DirectorOfPhotographyName", "artist"},
};

void SetUserMetadata(const XmlElement& root, TXMPMeta& native) {
  if (AttributeOf(ChildOf(root, "TargetMaterial"), "status") == "NG") {
    native.SetProperty(kNsDM, "good", "False");
  }
  for (const XmlElement* meta : ChildOf(root, "UserDescriptiveMetadata").ChildrenNamed("Meta")) {
    const std::string_view name = AttributeOf(*meta, "name");
    const std::string content(AttributeOf(*meta, "content"));
    if (content.empty()) continue;
    if (name == "Circle") native.SetProperty(kNsDM, "good", "True");
    for (const MetaRow& row : kMetaRows) {
      if (row.meta == name && !native.HasProperty(kNsDM, row.property)) {
        native.SetProperty(kNsDM, row.property, content);
      }
    }
  }
}

void SetTexts(const XmlElement& root, bool onXDCAMEX, TXMPMeta& native) {
  const std::string title(LocalText(ChildOf(root, "Title")));
  if (!title.empty()) {
    native.SetLocalizedText(kNsDC, "title", "x-default", title);
    if (onXDCAMEX) native.SetProperty(kNsDM, "shotName", title);
  }
  if (const std::string text(LocalText(ChildOf(root, "Description"))); !text.empty()) {
    native.SetLocalizedText(kNsDC, "description", "x-default", text);
  }
  if (const std::string creator(LocalText(ChildOf(root, "Creator"))); !creator.empty()) {
    native.AppendArrayItem(kNsDC, "creator", ArrayForm::kSeq, creator);
  }
  const std::string updated(AttributeOf(root, "lastUpdate"));
  native.SetProperty(kNsXMP, "ModifyDate", updated);
  native.SetProperty(kNsXMP, "MetadataDate", updated);
  native.SetProperty(kNsXMP, "CreateDate",
                     std::string(AttributeOf(ChildOf(root, "CreationDate"), "value")));
}

void ReadRoot(const XmlElement& root, const Material* material, bool onXDCAMEX, TXMPMeta& native) {
  const ClipFormat format = FormatOf(root, material);
  SetTexts(root, onXDCAMEX, native);
  native.SetProperty(
      kNsDC, "identifier",
      TextOr(AttributeOf(ChildOf(root, "TargetMaterial"), "umidRef"), material, &Material::umid));
  SetVideo(format, ChildOf(root, "VideoFormat"), native);
  SetAudio(ChildOf(root, "AudioFormat"), material, native);
  SetTimecode(format, ChildOf(root, "LtcChangeTable"), native);
  const auto frames = ParseUnsigned(
      TextOr(AttributeOf(ChildOf(root, "Duration"), "value"), material, &Material::duration));
  if (frames && format.rate.Known()) SetDuration(native, *frames, format.rate);
  SetDevice(root, native);
  SetCapture(root, native);
  SetLocation(ChildOf(root, "AcquisitionRecord"), native);
  SetUserMetadata(root, native);
}

bool WantsAny(const WantedProperties& wanted, std::initializer_list<const char*> names) {
  return std::any_of(names.begin(), names.end(),
                     [&wanted](const char* name) { return wanted.Wants(kNsDM, name); });
}

// Whether a wanted property depends on the material list.
bool WantsMaterial(const XmlElement& root, const WantedProperties& wanted) {
  const auto lacks = [](const XmlElement& element, std::string_view attribute) {
    return AttributeOf(element, attribute).empty();
  };
  const XmlElement& video = ChildOf(root, "VideoFormat");
  const XmlElement& frame = ChildOf(video, "VideoFrame");
  const XmlElement& audio = ChildOf(root, "AudioFormat");
  if (lacks(ChildOf(root, "TargetMaterial"), "umidRef") && wanted.Wants(kNsDC, "identifier")) {
    return true;
  }
  if (lacks(ChildOf(root, "Duration"), "value") && WantsAny(wanted, {"duration"})) return true;
  const bool lacksVideo = lacks(frame, "formatFps") || lacks(frame, "videoCodec") ||
                          lacks(ChildOf(video, "VideoLayout"), "aspectRatio");
  if (lacksVideo &&
      WantsAny(wanted, {"videoFrameRate", "videoFrameSize", "videoCompressor", "videoFieldOrder",
                        "videoPixelAspectRatio", "startTimecode", "duration"})) {
    return true;
  }
  const bool lacksAudio =
      lacks(ChildOf(audio, "AudioRecPort"), "audioCodec") || lacks(audio, "numOfChannel");
  return lacksAudio && WantsAny(wanted, {"audioSampleType", "audioChannelType", "audioCompressor"});
}

bool IsRoot(std::string_view name) { return name == "NonRealTimeMeta"; }

bool Recognises(const ReaderInput& input) { return IsRoot(XmlRootName(input.head)); }

void Read(const ReaderInput& input, const WantedProperties& wanted, ReaderOutput& output) {
  const auto document = ParseClipXml(input);
  if (!document || !IsRoot(document->Root().Name())) return;
  const XmlElement& root = document->Root();
  const bool onXDCAMEX = IsOnXDCAMEX(input.path);
  std::shared_ptr<const Material> material;
  if (!input.path.empty() && WantsMaterial(root, wanted)) material = MaterialOfClip(input.path);
  ReadRoot(root, nullptr, onXDCAMEX, output.native);
  if (material != nullptr) {
    // The record's facts and those that need the list, such as a rate that both describe.
    TXMPMeta both;
    ReadRoot(root, material.get(), onXDCAMEX, both);
    both.RemoveEqual(output.native);
    output.overriding.push_back({NativeOrigin::kIndex, std::move(both)});
  }
  output.origin = NativeOrigin::kRecord;
  output.hasNative = true;
  output.nativeIdentityWins = onXDCAMEX;
  // Providers of cards on which cameras cut takes need the same record.
  if (!onXDCAMEX && !input.path.empty()) formats::sony::ClipRecord::Keep(input.path, root);
  if (!onXDCAMEX || !wanted.Wants(kNsDC, "relation")) return;
  const std::string take = TakeOfClip(input.path);
  if (take.empty()) return;
  TXMPMeta index;
  index.AppendArrayItem(kNsDC, "relation", ArrayForm::kBag, take);
  output.overriding.push_back({NativeOrigin::kIndex, std::move(index)});
}

}  // namespace

bool ReadNonRealTimeMeta(std::string_view bytes, TXMPMeta& native) {
  const auto document = foundation::ParseXml(bytes);
  if (!document || !IsRoot(document->Root().Name())) return false;
  ReadRoot(document->Root(), nullptr, false, native);
  return true;
}

void AddNonRealTimeFacts(TXMPMeta&& document, TXMPMeta& meta) {
  for (const char* name : {"CreateDate", "ModifyDate"}) {
    std::string date;
    if (document.GetProperty(kNsXMP, name, &date) && !date.empty()) {
      meta.SetProperty(kNsXMP, name, date);
    }
  }
  meta.FillFrom(document);
}

const Reader kNonRealTimeMetaReader = {"NonRealTimeMeta", Recognises, Read};

}  // namespace Sorvik::xmp
