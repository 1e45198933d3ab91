// SPDX-License-Identifier: MIT
#include "xmp/readers/ClipRecord.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "foundation/ByteReader.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"
#include "foundation/platform/FileSystem.h"
#include "xmp/Namespaces.h"
#include "xmp/readers/CameraXml.h"
#include "xmp/readers/NonRealTimeMetaReader.h"
#include "xmp/readers/P2ClipReader.h"

namespace Sorvik::xmp {
namespace {

using foundation::EqualIgnoringCase;
using foundation::HasExtension;

// What a clip record adds to the facts of the media.
bool WantsRecord(const WantedProperties& wanted) {
  constexpr std::pair<const char*, const char*> kProperties[] = {
      {kNsTIFF, "Make"},        {kNsTIFF, "Model"},        {kNsTIFF, "software"},
      {kNsAux, "SerialNumber"}, {kNsDM, "cameraModel"},    {kNsDM, "startTimecode"},
      {kNsDC, "identifier"},    {kNsDC, "title"},          {kNsDC, "description"},
      {kNsDC, "creator"},       {kNsXMP, "CreateDate"},    {kNsXMP, "ModifyDate"},
      {kNsEXIF, "GPSLatitude"}, {kNsEXIF, "GPSLongitude"}, {kNsEXIF, "GPSAltitude"},
      {kNsDM, "good"},          {kNsDM, "scene"},          {kNsDM, "takeNumber"},
  };
  return std::any_of(std::begin(kProperties), std::end(kProperties), [&](const auto& property) {
    return wanted.Wants(property.first, property.second);
  });
}

// The record in CONTENTS/CLIP of a file such as CONTENTS/AUDIO/0001AB00.MXF; empty for other paths.
std::string P2RecordOf(std::string_view path) {
  constexpr std::array<std::string_view, 3> kFolders = {"VIDEO", "AUDIO", "AVCLIP"};
  constexpr std::size_t kClipName = 6;
  const std::string_view folder = foundation::ParentFolder(path);
  const std::string_view contents = foundation::ParentFolder(folder);
  const std::string_view name = foundation::FileStem(foundation::FileName(path));
  const bool isMedia = std::ranges::any_of(kFolders, [folder](std::string_view known) {
    return EqualIgnoringCase(foundation::FileName(folder), known);
  });
  if (!isMedia || name.size() < kClipName ||
      !EqualIgnoringCase(foundation::FileName(contents), "CONTENTS")) {
    return {};
  }
  return std::string(contents) + "/CLIP/" + std::string(name.substr(0, kClipName)) + ".XML";
}

// Without the end of a component of a clip, such as "V01".
std::string_view WithoutComponent(std::string_view stem) {
  constexpr std::size_t kEnd = 3;
  if (stem.size() <= kEnd) return stem;
  const std::string_view end = stem.substr(stem.size() - kEnd);
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  const bool isComponent = (end[0] == 'V' || end[0] == 'A') && isDigit(end[1]) && isDigit(end[2]);
  return isComponent ? stem.substr(0, stem.size() - kEnd) : stem;
}

std::string SonyRecordOf(std::string_view path) {
  const bool isMxf = HasExtension(path, ".MXF");
  std::string_view stem = path.substr(0, path.size() - foundation::FileExtension(path).size());
  const std::string_view card =
      foundation::FileName(foundation::ParentFolder(foundation::ParentFolder(path)));
  if (isMxf && EqualIgnoringCase(card, "CLPR")) stem = WithoutComponent(stem);
  return std::string(stem) + "M01.XML";
}

}  // namespace

bool AddClipRecord(const std::string& path, const WantedProperties& wanted, ReaderOutput& output) {
  const bool isMxf = HasExtension(path, ".MXF");
  if ((!isMxf && !HasExtension(path, ".MP4")) || !WantsRecord(wanted)) return false;
  const std::string p2Record = isMxf ? P2RecordOf(path) : std::string();
  const std::string record = p2Record.empty() ? SonyRecordOf(path) : p2Record;
  if (!foundation::MayExistOnCard(record)) return false;
  const auto bytes = platform::ReadHead(record, kMaxClipXmlBytes + 1);
  if (!bytes) return false;
  const std::string_view text = foundation::ByteReader(*bytes).Text();
  TXMPMeta facts;
  if (!(p2Record.empty() ? ReadNonRealTimeMeta(text, facts) : ReadP2Clip(text, facts)))
    return false;
  TXMPMeta dates;
  dates.TakeFrom(facts, kNsXMP, "CreateDate");
  dates.TakeFrom(facts, kNsXMP, "ModifyDate");
  output.overriding.push_back({NativeOrigin::kRecord, std::move(dates)});
  output.completing.push_back({NativeOrigin::kRecord, std::move(facts)});
  return true;
}

}  // namespace Sorvik::xmp
