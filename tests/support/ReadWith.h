// SPDX-License-Identifier: MIT
// Runs a metadata reader on bytes in memory and prints the result, one property a line.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "xmp/Namespaces.h"
#include "xmp/Reader.h"

namespace sorvik_test {

// A file in memory that counts its reads.
class MemoryFile : public Sorvik::xmp::FileBytes {
 public:
  explicit MemoryFile(std::string_view bytes) : bytes_(Sorvik::foundation::ReaderOf(bytes)) {}

  std::uint64_t Size() const noexcept override { return bytes_.Size(); }
  std::vector<std::byte> Read(std::uint64_t offset, std::size_t count) const override {
    ++reads;
    const auto part = bytes_.Clip(offset, count).Bytes();
    most = std::max(most, part.size());
    return {part.begin(), part.end()};
  }

  mutable int reads = 0;
  mutable std::size_t most = 0;  // the longest read

 private:
  Sorvik::foundation::ByteReader bytes_;
};

struct ReadResult {
  bool recognised = false;
  Sorvik::xmp::ReaderOutput output;
  int reads = 0;  // besides the head
  std::size_t longestRead = 0;

  std::string Get(std::string_view schema, std::string_view name) const {
    std::string value;
    output.native.GetProperty(schema, name, &value);
    return value;
  }
  std::string Field(std::string_view structure, std::string_view fieldSchema,
                    std::string_view field) const {
    std::string value;
    output.native.GetStructField(Sorvik::xmp::kNsDM, structure, fieldSchema, field, &value);
    return value;
  }
};

inline ReadResult ReadWith(
    const Sorvik::xmp::Reader& reader, std::string_view bytes, std::string path = {},
    const Sorvik::xmp::WantedProperties& wanted = Sorvik::xmp::WantedProperties::All()) {
  ReadResult result;
  const MemoryFile file(bytes);
  const Sorvik::xmp::ReaderInput input{
      std::move(path), file, Sorvik::foundation::ReaderOf(bytes.substr(0, Sorvik::xmp::kHeadSize))};
  result.recognised = reader.recognises(input);
  reader.read(input, wanted, result.output);
  Sorvik::xmp::TXMPMeta native;
  for (const auto& facts : result.output.overriding) native.FillFrom(facts.properties);
  native.FillFrom(result.output.native);
  for (const auto& facts : result.output.completing) native.FillFrom(facts.properties);
  result.output.native = std::move(native);
  result.reads = file.reads;
  result.longestRead = file.most;
  return result;
}

// Runs a reader on damaged variants of a file: truncated at each byte, and with each byte changed
// to values that make invalid lengths. It must only return, whatever the result.
inline void ReadDamaged(const Sorvik::xmp::Reader& reader, const std::string& bytes) {
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    ReadWith(reader, std::string_view(bytes).substr(0, size));
  }
  std::string changed = bytes;
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    for (const char value : {'\0', '\1', '\x7F', '\xFF'}) {
      changed[at] = value;
      ReadWith(reader, changed);
    }
    changed[at] = bytes[at];
  }
}

// The media properties in a fixed order, such as "videoFrameRate=25", one a line, without those
// that are missing.
inline std::string Facts(const ReadResult& result) {
  using namespace Sorvik::xmp;
  std::string all;
  const auto line = [&all](std::string_view name, const std::string& value) {
    if (!value.empty()) all.append(name).append("=").append(value).append("\n");
  };
  const std::pair<const char*, const char*> kSimple[] = {
      {kNsDC, "identifier"},
      {kNsXMP, "CreateDate"},
      {kNsXMP, "ModifyDate"},
      {kNsXMP, "CreatorTool"},
      {kNsDM, "videoFrameRate"},
      {kNsDM, "videoPixelDepth"},
      {kNsDM, "videoPixelAspectRatio"},
      {kNsDM, "videoColorSpace"},
      {kNsDM, "videoCompressor"},
      {kNsDM, "videoFieldOrder"},
      {kNsDM, "audioSampleRate"},
      {kNsDM, "audioSampleType"},
      {kNsDM, "audioChannelType"},
      {kNsDM, "audioCompressor"},
      {kNsDM, "fileDataRate"},
      {kNsDM, "shotDate"},
      {kNsDM, "shotName"},
      {kNsDM, "cameraModel"},
      {kNsDM, "comment"},
      {kNsTIFF, "Make"},
      {kNsTIFF, "Model"},
      {kNsTIFF, "software"},
      {kNsAux, "SerialNumber"},
      {kNsEXIF, "GPSAltitude"},
      {kNsEXIF, "GPSAltitudeRef"},
      {kNsEXIF, "GPSLatitude"},
      {kNsEXIF, "GPSLongitude"},
      {kNsCRS, "WhiteBalance"},
  };
  for (const auto& [schema, name] : kSimple) line(name, result.Get(schema, name));
  const std::string width = result.Field("videoFrameSize", kNsDimensions, "w");
  if (!width.empty()) {
    line("videoFrameSize", width + "x" + result.Field("videoFrameSize", kNsDimensions, "h") + " " +
                               result.Field("videoFrameSize", kNsDimensions, "unit"));
  }
  const std::string time = result.Field("startTimecode", kNsDM, "timeValue");
  if (!time.empty()) {
    line("startTimecode", time + " " + result.Field("startTimecode", kNsDM, "timeFormat"));
  }
  const std::string frames = result.Field("duration", kNsDM, "value");
  if (!frames.empty()) line("duration", frames + " @ " + result.Field("duration", kNsDM, "scale"));
  return all;
}

// The descriptive properties in the same form.
inline std::string TextFacts(const ReadResult& result) {
  using namespace Sorvik::xmp;
  std::string all;
  const auto line = [&all](std::string_view name, const std::string& value) {
    if (!value.empty()) all.append(name).append("=").append(value).append("\n");
  };
  for (const char* name : {"title", "description", "rights"}) {
    std::string value;
    result.output.native.GetLocalizedText(kNsDC, name, "", "x-default", nullptr, &value);
    line(name, value);
  }
  for (std::int32_t i = 1;; ++i) {
    std::string value;
    if (!result.output.native.GetArrayItem(kNsDC, "creator", i, &value)) break;
    line("creator", value);
  }
  const std::pair<const char*, const char*> kSimple[] = {
      {kNsEXIF, "DateTimeOriginal"},
      {kNsEXIF, "GPSProcessingMethod"},
      {kNsDM, "copyright"},
      {kNsDM, "camera"},
      {kNsDM, "tapeName"},
      {kNsDM, "scene"},
      {kNsDM, "shotNumber"},
      {kNsDM, "takeNumber"},
      {kNsDM, "good"},
      {kNsDM, "director"},
      {kNsDM, "directorPhotography"},
      {kNsDM, "artist"},
      {kNsDM, "album"},
      {kNsDM, "genre"},
      {kNsDM, "composer"},
      {kNsDM, "engineer"},
      {kNsDM, "logComment"},
      {kNsDM, "releaseDate"},
      {kNsDM, "trackNumber"},
      {kNsDM, "altTapeName"},
  };
  for (const auto& [schema, name] : kSimple) line(name, result.Get(schema, name));
  return all;
}

}  // namespace sorvik_test
