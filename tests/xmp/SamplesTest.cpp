// SPDX-License-Identifier: MIT
// XMP files of many writers, compared with the output of an independent reader.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "xmp/Namespaces.h"
#include "xmp/XMPMeta.h"

namespace {

using namespace Sorvik::xmp;
using sorvik_test::ReadSample;

struct Compared {
  const char* tag;  // "[group] name" in the other reader's output
  const char* schema;
  const char* name;
};

// Texts and lists, which the other reader prints unmodified, and dates.
constexpr Compared kCompared[] = {
    {"[XMP-dc] Title", kNsDC, "title"},
    {"[XMP-dc] Description", kNsDC, "description"},
    {"[XMP-dc] Rights", kNsDC, "rights"},
    {"[XMP-dc] Creator", kNsDC, "creator"},
    {"[XMP-dc] Subject", kNsDC, "subject"},
    {"[XMP-dc] Format", kNsDC, "format"},
    {"[XMP-xmp] CreateDate", kNsXMP, "CreateDate"},
    {"[XMP-xmp] ModifyDate", kNsXMP, "ModifyDate"},
    {"[XMP-xmp] MetadataDate", kNsXMP, "MetadataDate"},
    {"[XMP-xmp] CreatorTool", kNsXMP, "CreatorTool"},
    {"[XMP-xmp] Label", kNsXMP, "Label"},
    {"[XMP-xmp] Rating", kNsXMP, "Rating"},
    {"[XMP-tiff] Make", kNsTIFF, "Make"},
    {"[XMP-tiff] Model", kNsTIFF, "Model"},
    {"[XMP-aux] SerialNumber", kNsAux, "SerialNumber"},
    {"[XMP-crs] WhiteBalance", kNsCRS, "WhiteBalance"},
    {"[XMP-xmpDM] VideoFrameRate", kNsDM, "videoFrameRate"},
    {"[XMP-xmpDM] VideoFieldOrder", kNsDM, "videoFieldOrder"},
    {"[XMP-xmpDM] AudioSampleRate", kNsDM, "audioSampleRate"},
    {"[XMP-xmpDM] AudioSampleType", kNsDM, "audioSampleType"},
    {"[XMP-xmpDM] AudioChannelType", kNsDM, "audioChannelType"},
    {"[XMP-xmpDM] Scene", kNsDM, "scene"},
    {"[XMP-xmpDM] ShotName", kNsDM, "shotName"},
    {"[XMP-xmpDM] ShotDate", kNsDM, "shotDate"},
    {"[XMP-xmpDM] LogComment", kNsDM, "logComment"},
    {"[XMP-xmpDM] Good", kNsDM, "good"},
};

// Structures, in the form "{Scale=...,Value=...}".
struct ComparedStruct {
  const char* tag;
  const char* name;
  const char* fieldSchema;
  std::vector<std::pair<const char*, const char*>> fields;  // (theirs, ours), in their order
};
const ComparedStruct kComparedStructs[] = {
    {"[XMP-xmpDM] VideoFrameSize",
     "videoFrameSize",
     kNsDimensions,
     {{"H", "h"}, {"Unit", "unit"}, {"W", "w"}}},
    {"[XMP-xmpDM] StartTimecode",
     "startTimecode",
     kNsDM,
     {{"TimeFormat", "timeFormat"}, {"TimeValue", "timeValue"}}},
    {"[XMP-xmpDM] AltTimecode",
     "altTimecode",
     kNsDM,
     {{"TimeFormat", "timeFormat"}, {"TimeValue", "timeValue"}}},
};

// Parses the lines of a reference file by "[group] name".
std::map<std::string, std::string> ParseReference(const std::string& text) {
  std::map<std::string, std::string> values;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const auto colon = line.find(": ");
    if (!line.starts_with('[') || colon == line.npos) continue;
    std::istringstream head(line.substr(0, colon));
    std::string group, name;
    head >> group >> name;
    // An item of a language alternative.
    if (name == "Title-x-repair") name = "Title";
    values[group + " " + name] = line.substr(colon + 2);
  }
  return values;
}

// Normalises the values of both readers: trimmed, line ends as dots, the same date format, an empty
// list as an empty text.
std::string Normalise(std::string text) {
  const auto first = text.find_first_not_of(" ");
  if (first == text.npos || text == "[]") return {};
  text = text.substr(first, text.find_last_not_of(" ") - first + 1);
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\n' || c == '\t'; }, '.');
  const bool date = text.size() >= 10 && std::isdigit(text[0]) && std::isdigit(text[3]) &&
                    (text[4] == '-' || text[4] == ':') && text[7] == text[4];
  if (date) {
    text[4] = text[7] = '-';
    if (text.size() > 10 && text[10] == 'T') text[10] = ' ';
  }
  return text;
}

// Formats the property like the reference.
std::string Format(const TXMPMeta& meta, const char* schema, const char* name) {
  std::string value;
  XMP_OptionBits options = 0;
  if (!meta.GetProperty(schema, name, &value, &options)) return "<none>";
  if ((options & kXMP_PropArrayIsAlternate) != 0) {
    meta.GetLocalizedText(schema, name, nullptr, "x-default", nullptr, &value);
    return value;
  }
  if ((options & kXMP_PropValueIsArray) == 0) return value;
  std::string list;
  for (int i = 1; meta.GetArrayItem(schema, name, i, &value); ++i) {
    list += (i == 1 ? "" : ",") + value;
  }
  return "[" + list + "]";
}

std::string Format(const TXMPMeta& meta, const ComparedStruct& compared) {
  std::string all;
  for (const auto& [theirs, ours] : compared.fields) {
    std::string value;
    if (!meta.GetStructField(kNsDM, compared.name, compared.fieldSchema, ours, &value)) continue;
    all += (all.empty() ? "" : ",") + std::string(theirs) + "=" + value;
  }
  return all.empty() ? "<none>" : "{" + all + "}";
}

std::vector<std::string> SampleNames() {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& file : std::filesystem::directory_iterator(SORVIK_SAMPLES_DIR "/xmp", error)) {
    const std::string name = file.path().filename();
    const std::string extension = file.path().extension();
    const bool plain = extension == ".xmp" || extension == ".xml" || extension == ".rdf";
    if (plain && !name.starts_with("ORACLE-")) names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

// Compares one sample and returns the number of compared values.
int CompareSample(const TXMPMeta& meta, const std::map<std::string, std::string>& reference) {
  int compared = 0;
  const auto compare = [&](const char* tag, const std::string& ours) {
    const auto theirs = reference.find(tag);
    const std::string expected = theirs == reference.end() ? "<none>" : theirs->second;
    EXPECT_EQ(Normalise(ours), Normalise(expected)) << tag;
    if (theirs != reference.end()) ++compared;
  };
  for (const Compared& row : kCompared) compare(row.tag, Format(meta, row.schema, row.name));
  for (const ComparedStruct& row : kComparedStructs) compare(row.tag, Format(meta, row));
  return compared;
}

// Reads the reference of a sample. The other reader doesn't support all encodings, but the same
// text exists in another one.
std::map<std::string, std::string> ReferenceOf(const std::string& name) {
  const bool recoded = name.starts_with("derived-nle-export-");
  const std::string text = recoded ? "derived-nle-export-utf16le-bom.xmp" : name;
  return ParseReference(ReadSample("xmp/ORACLE-" + text + ".txt").value_or(""));
}

TEST(XMPSamples, MatchAnIndependentReader) {
  const auto names = SampleNames();
  if (names.empty()) GTEST_SKIP() << "samples not found";
  int compared = 0;
  for (const std::string& name : names) {
    SCOPED_TRACE(name);
    const auto reference = ReferenceOf(name);
    const std::string bytes = *ReadSample("xmp/" + name);
    TXMPMeta meta;
    const auto parse = [&] {
      meta.ParseFromBuffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    };
    if (name.starts_with("pdfbox-invalidxmp_") && name.ends_with("root.xml")) {
      EXPECT_THROW(parse(), XMP_Error);
      continue;
    }
    ASSERT_NO_THROW(parse());
    // The other reader rejects some of these.
    if (!reference.empty()) compared += CompareSample(meta, reference);
    EXPECT_FALSE(meta.Empty());
  }
  EXPECT_GT(compared, 340);
}

}  // namespace
