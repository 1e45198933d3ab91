// SPDX-License-Identifier: MIT
#include "xmp/readers/P2ClipReader.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/XmlTree.h"
#include "xmp/Namespaces.h"
#include "xmp/NativeValues.h"
#include "xmp/readers/CameraXml.h"

namespace Sorvik::xmp {
namespace {

using foundation::XmlElement;

// Represents missing elements, so that the mapping needs no null checks.
const XmlElement& kMissingElement = *new XmlElement;  // workers may still read it at exit

const XmlElement& ChildOf(const XmlElement& element, std::string_view name) {
  const XmlElement* child = element.Child(name);
  return child == nullptr ? kMissingElement : *child;
}

// Names with a trailing dot occur without it as well.
std::string_view TextIgnoringDot(const XmlElement& element, const std::string& name) {
  const std::string_view dotted = DescendantText(element, name + ".");
  return dotted.empty() ? DescendantText(element, name) : dotted;
}

// Facts from which others are derived.
struct ClipFormat {
  Rate rate;  // frames per second, from the edit unit
  std::string_view codec;
  std::string_view codecClass;
  std::string_view rateText;  // "50i"
  std::string_view aspectRatio;
  unsigned lines = 0;

  bool Is(std::string_view family) const { return codec.starts_with(family); }
  bool IsDV() const { return Is("DV25_") || Is("DV50_"); }
};

constexpr unsigned kLineCounts[] = {1080, 720, 480, 576};

// "AVC-I_1080/50i": the line count follows the family. Standard definition may omit it
// ("DV25_411"); it is then derived from the rate.
unsigned LinesOf(const ClipFormat& format) {
  const auto bar = format.codec.find('_');
  if (bar == format.codec.npos) return 0;
  const std::string_view rest = format.codec.substr(bar + 1);
  for (const unsigned lines : kLineCounts) {
    if (rest.starts_with(std::to_string(lines) + "/")) return lines;
  }
  if (!format.IsDV() || !format.rate.Known()) return 0;
  return TimecodeBaseOf(format.rate) % 25 == 0 ? 576 : 480;
}

// DV100 and the half-rate class of AVC-Intra store fewer columns than they display (SMPTE 370M for
// DV100). 0 if the codec isn't known.
unsigned WidthOf(const ClipFormat& format) {
  const bool full = format.Is("AVC-G") || format.Is("AVC-LongG") ||
                    (format.Is("AVC-I_") && format.codecClass != "50");
  const bool half = format.Is("AVC-I_") || format.Is("DV100_");
  switch (format.lines) {
    case 1080:
      if (full) return 1920;
      // The rate of the recording, not that of the frames carried in it.
      if (format.Is("DV100_"))
        return format.codec.find("/59.94") == format.codec.npos ? 1440 : 1280;
      return half ? 1440 : 0;
    case 720:
      if (full) return 1280;
      return half ? 960 : 0;
    case 480:
    case 576:
      return format.IsDV() ? 720 : 0;
    default:
      return 0;
  }
}

ClipFormat FormatOf(const XmlElement& content, const XmlElement& video) {
  ClipFormat format;
  if (const auto unit = ParseNumberPair(content.TextOf("EditUnit"), '/')) {
    format.rate = {unit->second, unit->first};
  }
  const XmlElement& codec = ChildOf(video, "Codec");
  format.codec = codec.Text();
  format.codecClass = codec.Attribute("Class");
  format.rateText = video.TextOf("FrameRate");
  if (!format.rate.Known()) format.rate = FrameRateOfText(format.rateText);
  format.aspectRatio = video.TextOf("AspectRatio");
  format.lines = LinesOf(format);
  return format;
}

void SetPicture(const ClipFormat& format, const XmlElement& video, TXMPMeta& native) {
  const auto width = ParseUnsigned(video.TextOf("ActivePixel"));
  const auto height = ParseUnsigned(video.TextOf("ActiveLine"));
  if (width && height && *width <= UINT32_MAX && *height <= UINT32_MAX) {
    SetFrameSize(native, static_cast<std::uint32_t>(*width), static_cast<std::uint32_t>(*height));
    return;
  }
  const unsigned columns = WidthOf(format);
  if (columns == 0) return;
  SetFrameSize(native, columns, format.lines);
  if (format.IsDV()) {
    if (const auto shape = SDPixelAspectRatio(format.lines, format.aspectRatio)) {
      SetPixelAspectRatio(native, shape->first, shape->second);
    }
    return;
  }
  // High definition is 16:9 by default.
  SetPixelAspectRatioOf(native, columns, format.lines,
                        format.aspectRatio.empty() ? "16:9" : format.aspectRatio);
}

void SetVideo(const ClipFormat& format, const XmlElement& video, TXMPMeta& native) {
  if (format.rate.Known()) SetFrameRate(native, format.rate);
  native.SetProperty(kNsDM, "videoCompressor", std::string(format.codec));
  SetPicture(format, video, native);
  const auto interlaced = IsInterlacedText(format.rateText);
  if (!interlaced) return;
  if (!*interlaced) {
    native.SetProperty(kNsDM, "videoFieldOrder", "Progressive");
  } else if (format.IsDV()) {
    native.SetProperty(kNsDM, "videoFieldOrder", "Lower");
  } else if (format.lines == 1080) {
    native.SetProperty(kNsDM, "videoFieldOrder", "Upper");
  }
}

// "hh:mm:ss:ff". Rates above 30 count frames on half their base unless a frame number exceeds it.
void SetTimecode(const ClipFormat& format, const XmlElement& video, TXMPMeta& native) {
  const std::string_view text = video.TextOf("StartTimecode");
  if (text.size() != 11) return;
  std::array<unsigned, 4> parts{};
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const auto number = ParseUnsigned(text.substr(3 * i, 2));
    if (!number || (i > 0 && text[3 * i - 1] != ':' && text[3 * i - 1] != ';')) return;
    parts[i] = static_cast<unsigned>(*number);
  }
  Rate rate = format.rate;
  unsigned base = TimecodeBaseOf(rate);
  if (base > 30 && base % 2 == 0 && parts[3] < base / 2) {
    base /= 2;
    rate.den *= 2;
  }
  if (parts[0] > 23 || parts[1] > 59 || parts[2] > 59 || (base != 0 && parts[3] >= base)) return;
  const XmlElement& rateElement = ChildOf(video, "FrameRate");
  const bool flag =
      rateElement.Attribute("DropFrameFlag") == "true" || video.TextOf("TimecodeType") == "Drop";
  // Drop frame exists only for the bases of 30 and 60.
  const bool drop = flag && base % 30 == 0 && base != 0;
  SetStartTimecode(native, {parts[0], parts[1], parts[2], parts[3], drop}, rate);
}

void SetAudio(const XmlElement& essence, TXMPMeta& native) {
  const auto channels = essence.ChildrenNamed("Audio");
  if (channels.empty()) return;
  const XmlElement& first = *channels.front();
  if (const auto perSecond = ParseUnsigned(first.TextOf("SamplingRate"))) {
    SetAudioSampleRate(native, *perSecond);
  }
  if (const auto bits = ParseUnsigned(first.TextOf("BitsPerSample")); bits && *bits <= 64) {
    SetAudioSampleBits(native, static_cast<unsigned>(*bits));
  }
  // Each channel is a separate file on a card; the sibling document counts them in one element.
  const auto counted = ParseUnsigned(first.TextOf("Channel"));
  SetCameraChannels(native, counted.value_or(channels.size()));
  if (!counted) native.SetProperty(kNsDM, "audioCompressor", "PCM");
}

// Shot completion splits at these characters, so an id that contains one is unusable there.
bool IsUsableId(std::string_view id) {
  return !id.empty() && id.find_first_of(":; \t\r\n") == id.npos;
}

void SetRelation(const XmlElement& content, TXMPMeta& native) {
  const XmlElement* relation = content.Child("Relation");
  if (relation == nullptr) return;
  const auto add = [&native](const char* key, std::string_view id) {
    if (!IsUsableId(id)) return;
    native.AppendArrayItem(kNsDC, "relation", ArrayForm::kBag, key + std::string(id));
  };
  const XmlElement& connection = ChildOf(*relation, "Connection");
  add("globalShotID:", relation->TextOf("GlobalShotID"));
  add("topGlobalClipID:", ChildOf(connection, "Top").TextOf("GlobalClipID"));
  add("previousGlobalClipID:", ChildOf(connection, "Previous").TextOf("GlobalClipID"));
  add("nextGlobalClipID:", ChildOf(connection, "Next").TextOf("GlobalClipID"));
}

// Parses "N 34 42 19.8", "34.5S", "-135.49": an optional letter or sign, then degrees and
// optionally minutes and seconds, separated by any characters other than digits and points.
void SetCoordinate(std::string_view text, std::string_view name, char positive, char negative,
                   unsigned largest, TXMPMeta& native) {
  char reference = '\0';
  const auto takeLetter = [&](char c) {
    if (c != positive && c != negative) return false;
    reference = c;
    return true;
  };
  if (!text.empty() && takeLetter(text.front())) text.remove_prefix(1);
  if (!text.empty() && takeLetter(text.back())) text.remove_suffix(1);
  if (text.starts_with('-') || text.starts_with('+')) {
    reference = text.front() == '-' ? negative : positive;
    text.remove_prefix(1);
  }
  std::vector<Rate> numbers;
  while (!text.empty()) {
    const auto begin = std::min(text.find_first_of("0123456789."), text.size());
    text.remove_prefix(begin);
    const auto end = std::min(text.find_first_not_of("0123456789."), text.size());
    if (end == 0) break;
    const auto number = ParseDecimal(text.substr(0, end));
    if (!number || numbers.size() == 3) return;
    numbers.push_back(*number);
    text.remove_prefix(end);
  }
  if (reference == '\0' || numbers.empty()) return;
  if (numbers[0].num > largest * numbers[0].den) return;
  numbers.resize(3, Rate{0, 1});
  SetGPSCoordinate(native, name, {numbers[0], numbers[1], numbers[2]}, reference);
}

void SetLocation(const XmlElement& metadata, TXMPMeta& native) {
  const XmlElement* location = FindDescendant(metadata, "Location");
  if (location == nullptr) return;
  native.SetProperty(kNsDM, "shotLocation", std::string(location->TextOf("PlaceName")));
  native.SetProperty(kNsEXIF, "GPSProcessingMethod", std::string(location->TextOf("Source")));
  SetGPSAltitude(native, location->TextOf("Altitude"));
  SetCoordinate(location->TextOf("Latitude"), "GPSLatitude", 'N', 'S', 90, native);
  SetCoordinate(location->TextOf("Longitude"), "GPSLongitude", 'E', 'W', 180, native);
}

// Returns the memo with the lowest number, the first of duplicates.
std::string_view FirstMemo(const XmlElement& metadata) {
  const XmlElement* list = FindDescendant(metadata, "MemoList");
  if (list == nullptr) return {};
  std::string_view text;
  std::optional<std::uint64_t> lowest;
  for (const XmlElement* memo : list->ChildrenNamed("Memo")) {
    const std::uint64_t number = ParseUnsigned(memo->Attribute("MemoID")).value_or(UINT64_MAX);
    if (lowest && number >= *lowest) continue;
    lowest = number;
    text = memo->TextOf("Text");
  }
  return text;
}

void SetDates(const XmlElement& metadata, TXMPMeta& native) {
  const std::string started(DescendantText(metadata, "StartDate"));
  const std::string created(DescendantText(metadata, "CreationDate"));
  const std::string updated(DescendantText(metadata, "LastUpdateDate"));
  native.SetProperty(kNsXMP, "CreateDate", created.empty() ? started : created);
  native.SetProperty(kNsXMP, "ModifyDate", updated);
  native.SetProperty(kNsXMP, "MetadataDate", updated);
  native.SetProperty(kNsDM, "shotDate", started);
}

void SetDescription(const XmlElement& content, TXMPMeta& native) {
  const XmlElement& metadata = ChildOf(content, "ClipMetadata");
  const auto set = [&native](const char* schema, const char* name, std::string_view text) {
    native.SetProperty(schema, name, std::string(text));
  };
  set(kNsDM, "shotName", metadata.TextOf("UserClipName"));
  set(kNsDM, "scene", TextIgnoringDot(metadata, "SceneNo"));
  set(kNsDM, "takeNumber", TextIgnoringDot(metadata, "TakeNo"));
  set(kNsDM, "artist", DescendantText(metadata, "Shooter"));
  set(kNsDM, "comment", FirstMemo(metadata));
  if (const std::string creator(DescendantText(metadata, "Creator")); !creator.empty()) {
    native.AppendArrayItem(kNsDC, "creator", ArrayForm::kSeq, creator);
  }
  const XmlElement& device = ChildOf(metadata, "Device");
  set(kNsTIFF, "Make", device.TextOf("Manufacturer"));
  set(kNsTIFF, "Model", device.TextOf("ModelName"));
  set(kNsDM, "cameraModel", device.TextOf("ModelName"));
  set(kNsAux, "SerialNumber", TextIgnoringDot(device, "SerialNo"));
  const std::string_view mark = DescendantText(content, "ShotMark");
  if (mark == "true") set(kNsDM, "good", "True");
  if (mark == "false") set(kNsDM, "good", "False");
  const auto rating = ParseUnsigned(DescendantText(content, "Rating"));
  if (rating && *rating >= 1 && *rating <= 5) set(kNsXMP, "Rating", std::to_string(*rating));
}

void SetIdentity(const XmlElement& content, TXMPMeta& native) {
  const std::string name(content.TextOf("ClipName"));
  if (!name.empty()) native.SetLocalizedText(kNsDC, "title", "x-default", name);
  native.SetProperty(kNsDC, "identifier", std::string(content.TextOf("GlobalClipID")));
  SetRelation(content, native);
  const std::string_view frames = content.TextOf("Duration");
  const std::string unit(content.TextOf("EditUnit"));
  if (!ParseUnsigned(frames) || unit.empty()) return;
  native.SetStructField(kNsDM, "duration", kNsDM, "value", std::string(frames));
  native.SetStructField(kNsDM, "duration", kNsDM, "scale", unit);
}

void ReadRoot(const XmlElement& root, TXMPMeta& native) {
  const XmlElement& content = ChildOf(root, "ClipContent");
  const XmlElement& essence = ChildOf(content, "EssenceList");
  const XmlElement& video = ChildOf(essence, "Video");
  const ClipFormat format = FormatOf(content, video);
  SetIdentity(content, native);
  if (&video != &kMissingElement) SetVideo(format, video, native);
  SetTimecode(format, video, native);
  SetAudio(essence, native);
  const XmlElement& metadata = ChildOf(content, "ClipMetadata");
  SetDates(metadata, native);
  SetLocation(metadata, native);
  SetDescription(content, native);
}

bool IsRoot(std::string_view name) { return name == "P2Main" || name == "ClipMain"; }

bool Recognises(const ReaderInput& input) { return IsRoot(XmlRootName(input.head)); }

void Read(const ReaderInput& input, const WantedProperties&, ReaderOutput& output) {
  const auto document = ParseClipXml(input);
  if (!document || !IsRoot(document->Root().Name())) return;
  ReadRoot(document->Root(), output.native);
  output.origin = NativeOrigin::kRecord;
  output.hasNative = true;
  output.nativeIdentityWins = document->Root().Name() == "P2Main";
}

}  // namespace

bool ReadP2Clip(std::string_view bytes, TXMPMeta& native) {
  const auto document = foundation::ParseXml(bytes);
  if (!document || !IsRoot(document->Root().Name())) return false;
  ReadRoot(document->Root(), native);
  return true;
}

const Reader kP2ClipReader = {"P2 clip", Recognises, Read};

}  // namespace Sorvik::xmp
