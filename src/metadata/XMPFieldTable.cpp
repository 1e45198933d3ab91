// SPDX-License-Identifier: MIT
#include "metadata/XMPFieldTable.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

#include "metadata/FieldRules.h"
#include "metadata/MachineRecord.h"
#include "metadata/MachineRules.h"
#include "xmp/Namespaces.h"

namespace Sorvik::XMPSupport {
namespace {

using namespace xmp;  // NOLINT(google-build-using-namespace): the namespaces are the table's column

constexpr char kNone[] = "";

}  // namespace

// The index of a row is the number of its field: rows are never moved or removed.
// clang-format off
constexpr XMPCrossReference kXMPCrossReference[kFieldCount] = {
    {"Name", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/Name=Name", kNone},
    {"Path", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/FilePath=File Path", kNone},
    {"ExtraPath", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/ExtraPath=Additional File Path", kNone},
    {"creator", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/Creator=Creator", kNsDC},
    {"identifier", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/Identifier=Identifier", kNsDC},
    {"description", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/Description=Description", kNsDC},
    {"relation", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/Relations=Relations", kNsDC},
    {"CreateDate", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/CreationDate=Date Created", kNsXMP},
    {"CreatorTool", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/CreateTool=Creation Tool", kNsXMP},
    {"Label", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/Label=Label", kNsXMP},
    {"MetadataDate", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/MetadataDate=Metadata Date", kNsXMP},
    {"ModifyDate", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/ModifyDate=Date Modified", kNsXMP},
    {"Nickname", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/Nickname=Nickname", kNsXMP},
    {"Rating", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/Rating=Rating", kNsXMP},
    {"projectRef", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/projectRef=Project Reference", kNsDM},
    {"videoFrameRate", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/videoFrameRate=Frame Rate", kNsDM},
    {"videoFrameSize", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/videoFrameSize=Frame Size", kNsDM},
    {"videoPixelDepth", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/videoPixelDepth=Pixel Depth", kNsDM},
    {"videoPixelAspectRatio", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/videoPixelAspectRatio=Pixel Aspect Ratio", kNsDM},
    {"videoColorSpace", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/videoColorSpace=Color Space", kNsDM},
    {"videoAlphaMode", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/videoAlphaMode=Alpha Mode", kNsDM},
    {"videoAlphaUnityIsTransparent", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/videoAlphaUnityIsTransparent=Alpha Unity Is Transparent", kNsDM},
    {"videoCompressor", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/videoCompressor=Video Compressor", kNsDM},
    {"videoFieldOrder", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/videoFieldOrder=Video Field Order", kNsDM},
    {"pullDown", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/pullDown=Pulldown", kNsDM},
    {"audioSampleRate", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/audioSampleRate=Audio Sample Rate", kNsDM},
    {"audioSampleType", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/audioSampleType=Audio Sample Type", kNsDM},
    {"audioChannelType", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/audioChannelType=Audio Channel Type", kNsDM},
    {"audioCompressor", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/audioCompressor=Audio Compressor", kNsDM},
    {"speakerPlacement", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/speakerPlacement=Speaker Placement", kNsDM},
    {"fileDataRate", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/fileDataRate=File Data Rate", kNsDM},
    {"startTimecode", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/startTimeCode=Start Timecode", kNsDM},
    {"duration", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/duration=Duration", kNsDM},
    {"scale", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/scale=Timescale", kNsDM},
    {"good", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/good=Good", kNsDM},
    {"scene", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/scene=Scene", kNsDM},
    {"shotName", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/shotName=Shot Name", kNsDM},
    {"shotNumber", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/shotNumber=Shot Number", kNsDM},
    {"takeNumber", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/takeNumber=Take Number", kNsDM},
    {"shotLocation", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/shotLocation=Shot Location", kNsDM},
    {"shotDay", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/shotDay=Day of Shoot", kNsDM},
    {"shotDate", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/shotDate=Shot Date", kNsDM},
    {"camera", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/camera=Camera", kNsDM},
    {"cameraModel", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/cameraModel=Camera Model", kNsDM},
    {"cameraMove", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/cameraMove=Camera Move", kNsDM},
    {"comment", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/comment=Comment", kNsDM},
    {"logComment", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/logComment=Log Comment", kNsDM},
    {"videoModDate", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/videoModDate=Video Modification Date", kNsDM},
    {"audioModDate", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/audioModDate=Audio Modification Date", kNsDM},
    {"metadataModDate", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/metadataModDate=Metadata Modification Date", kNsDM},
    {"artist", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/artist=Artist", kNsDM},
    {"album", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/album=Album", kNsDM},
    {"trackNumber", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/trackNumber=Track Number", kNsDM},
    {"genre", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/genre=Genre", kNsDM},
    {"copyright", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/copyright=Copyright", kNsDM},
    {"releaseDate", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/releaseDate=Release Date", kNsDM},
    {"composer", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/composer=Composer", kNsDM},
    {"engineer", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/engineer=Engineer", kNsDM},
    {"tempo", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/tempo=Tempo", kNsDM},
    {"instrument", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/instrument=Instrument", kNsDM},
    {"introTime", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/introTime=Intro Time", kNsDM},
    {"outCue", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/outCue=Out Cue", kNsDM},
    {"relativeTimestamp", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/relativeTimestamp=Relative Timestamp", kNsDM},
    {"loop", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/loop=Loop", kNsDM},
    {"numberOfBeats", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/numberOfBeats=Number of Beats", kNsDM},
    {"frameCount", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/frameCount=Frame Count", kNone},
    {"SerialNumber", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/serialNumber=Serial Number", kNsAux},
    {"Make", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/make=Make", kNsTIFF},
    {"Model", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/model=Model", kNsTIFF},
    {"GPSAltitude", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/altitude=Altitude", kNsEXIF},
    {"GPSAltitudeRef", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/altitudeRef=Altitude Ref.", kNsEXIF},
    {"GPSLatitude", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/latitude=Latitude", kNsEXIF},
    {"GPSLongitude", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/longitude=Longitude", kNsEXIF},
    {"GPSProcessingMethod", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/GPSProcessingMethod=GPS Processing Method", kNsEXIF},
    {"software", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/software=Software", kNsTIFF},
    {"WhiteBalance", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/WhiteBalance=White Balance", kNsCRS},
    {"ProxyPath", "$$$/Ortlane/Provider/XMPFilesMetadata/Column/ProxyPath=Proxy Path", kNone},
};
// clang-format on

namespace {

// Returns the row of the field `name`. A name that isn't in the table doesn't compile.
consteval std::size_t RowOf(std::string_view name) {
  std::size_t row = 0;
  while (name != kXMPCrossReference[row].propertyName) ++row;  // past the end: not a constant
  return row;
}

struct FieldRule {
  Text (*convert)(const SXMPMeta& meta, const XMPCrossReference& row) = FieldRules::Unmodified;
  // The property that `convert` reads instead of the row's own; null if it reads the row's own.
  const char* schemaNS = nullptr;
  const char* propertyName = nullptr;
};

// Rows without an entry here are shown unmodified.
constexpr std::array<FieldRule, kFieldCount> MakeRules() {
  using namespace FieldRules;  // NOLINT(google-build-using-namespace): the column of rules
  std::array<FieldRule, kFieldCount> rules{};
  rules[RowOf("Name")] = {Title, kNsDC, "title"};
  rules[RowOf("Path")] = {SetByProviders};
  rules[RowOf("ExtraPath")] = {SetByProviders};
  rules[RowOf("ProxyPath")] = {SetByProviders};
  rules[RowOf("creator")] = {FirstItem};
  rules[RowOf("description")] = {AlternativeText};
  rules[RowOf("relation")] = {JoinedList};
  rules[RowOf("projectRef")] = {Project};
  rules[RowOf("videoFrameSize")] = {FrameSize};
  rules[RowOf("videoPixelAspectRatio")] = {AspectRatio};
  rules[RowOf("videoAlphaUnityIsTransparent")] = {Boolean};
  rules[RowOf("good")] = {Boolean};
  rules[RowOf("loop")] = {Boolean};
  rules[RowOf("fileDataRate")] = {DataRate};
  rules[RowOf("GPSAltitude")] = {Ratio};
  rules[RowOf("startTimecode")] = {StartTimecode};
  rules[RowOf("duration")] = {Duration};
  rules[RowOf("scale")] = {Scale, kNsDM, "duration"};
  rules[RowOf("frameCount")] = {FrameCount, kNsDM, "duration"};
  return rules;
}

constexpr std::array<FieldRule, kFieldCount> kRules = MakeRules();

using MachineRuleTable = std::array<const MachineRule*, kFieldCount>;

// Rows without an entry here are texts.
constexpr MachineRuleTable MakeMachineRules() {
  using namespace MachineRules;  // NOLINT(google-build-using-namespace): the column of rules
  MachineRuleTable rules{};
  for (const MachineRule*& rule : rules) rule = &kText;
  rules[RowOf("Name")] = &kAlternativeText;
  rules[RowOf("creator")] = &kFirstItem;
  rules[RowOf("description")] = &kAlternativeText;
  rules[RowOf("relation")] = &kList;
  rules[RowOf("CreateDate")] = &kTime;
  rules[RowOf("MetadataDate")] = &kTime;
  rules[RowOf("ModifyDate")] = &kTime;
  rules[RowOf("Rating")] = &kReal;
  rules[RowOf("projectRef")] = &kProject;
  rules[RowOf("videoFrameRate")] = &kFrameRate;
  rules[RowOf("videoFrameSize")] = &kFrameSize;
  rules[RowOf("videoPixelAspectRatio")] = &kFraction;
  rules[RowOf("videoAlphaUnityIsTransparent")] = &kBoolean;
  rules[RowOf("audioSampleRate")] = &kInteger;
  rules[RowOf("fileDataRate")] = &kDataRate;
  rules[RowOf("startTimecode")] = &kTimecode;
  rules[RowOf("duration")] = &kDuration;
  rules[RowOf("scale")] = &kScale;
  rules[RowOf("good")] = &kBoolean;
  rules[RowOf("takeNumber")] = &kInteger;
  rules[RowOf("shotDate")] = &kTime;
  rules[RowOf("videoModDate")] = &kTime;
  rules[RowOf("audioModDate")] = &kTime;
  rules[RowOf("metadataModDate")] = &kTime;
  rules[RowOf("trackNumber")] = &kInteger;
  rules[RowOf("releaseDate")] = &kTime;
  rules[RowOf("tempo")] = &kReal;
  rules[RowOf("loop")] = &kBoolean;
  rules[RowOf("numberOfBeats")] = &kReal;
  rules[RowOf("frameCount")] = &kFrameCount;
  rules[RowOf("GPSAltitude")] = &kFraction;
  rules[RowOf("GPSAltitudeRef")] = &kInteger;
  rules[RowOf("GPSLatitude")] = &kCoordinate;
  rules[RowOf("GPSLongitude")] = &kCoordinate;
  return rules;
}

constexpr MachineRuleTable kMachineRules = MakeMachineRules();

}  // namespace

XMPFieldBits ParseFields(const FieldNameSet& fields) {
  XMPFieldBits bits;
  for (std::size_t row = 0; row < kFieldCount; ++row) {
    if (fields.contains(kXMPCrossReference[row].propertyName)) bits.set(row);
  }
  return bits;
}

FieldValueMap ConvertFields(const SXMPMeta& meta, const XMPFieldBits& fields) {
  FieldValueMap values;
  MachineRecord record;
  const bool isRecording = MachineValueScope::IsActive();
  for (std::size_t row = 0; row < kFieldCount; ++row) {
    if (!fields.test(row)) continue;
    const XMPCrossReference& reference = kXMPCrossReference[row];
    if (auto text = kRules[row].convert(meta, reference)) {
      if (isRecording) {
        record.Add(reference.propertyName, *text,
                   kMachineRules[row]->fromProperty(meta, reference));
      }
      values[reference.propertyName] = any_regular_t(std::move(*text));
    }
  }
  MachineRecord::AddTo(values, std::move(record));
  return values;
}

MachineFields ConvertToMachineValues(const SXMPMeta& meta, const XMPFieldBits& fields) {
  MachineFields values;
  for (std::size_t row = 0; row < kFieldCount; ++row) {
    const XMPCrossReference& reference = kXMPCrossReference[row];
    if (!fields.test(row) || kRules[row].convert == FieldRules::SetByProviders) continue;
    MachineValue value = kMachineRules[row]->fromProperty(meta, reference);
    if (value.index() != 0) values.emplace(reference.propertyName, std::move(value));
  }
  return values;
}

MachineValue MachineValueOfText(std::string_view field, const std::string& text) {
  for (std::size_t row = 0; row < kFieldCount; ++row) {
    if (field == kXMPCrossReference[row].propertyName) return kMachineRules[row]->fromText(text);
  }
  return text;
}

WantedProperties PropertiesOf(const XMPFieldBits& fields) {
  auto wanted = WantedProperties::None();
  for (std::size_t row = 0; row < kFieldCount; ++row) {
    if (!fields.test(row)) continue;
    const XMPCrossReference& own = kXMPCrossReference[row];
    if (kRules[row].propertyName != nullptr) {
      wanted.Add(kRules[row].schemaNS, kRules[row].propertyName);
    } else if (own.schemaNS[0] != '\0') {
      wanted.Add(own.schemaNS, own.propertyName);
    }
  }
  return wanted;
}

}  // namespace Sorvik::XMPSupport
