// SPDX-License-Identifier: MIT
// The lists for editing programs, read back by readers of their own: OpenTimelineIO by a table of
// the fields that its library demands, EDL and ALE by small parsers, FCPXML by its elements.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "support/Cards.h"
#include "support/MadeMedia.h"
#include "support/ModernCards.h"
#include "support/Program.h"
#include "support/TempTree.h"

namespace {

using namespace sorvik_test;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

std::vector<std::string> Split(const std::string& text, const std::string& separator) {
  std::vector<std::string> parts;
  std::size_t from = 0;
  for (std::size_t at = text.find(separator); at != text.npos; at = text.find(separator, from)) {
    parts.push_back(text.substr(from, at - from));
    from = at + separator.size();
  }
  parts.push_back(text.substr(from));
  return parts;
}

// Frames at 25 per second.
long FramesOf(const std::string& timecode) {
  int hours = 0, minutes = 0, seconds = 0, frames = 0;
  EXPECT_EQ(std::sscanf(timecode.c_str(), "%2d:%2d:%2d:%2d", &hours, &minutes, &seconds, &frames),
            4)
      << timecode;
  return ((hours * 60L + minutes) * 60 + seconds) * 25 + frames;
}

class JoinLists : public testing::Test {
 protected:
  // A shot of three clips on two cards with continuous timecode from 10:20:00:00, and a clip on
  // its own.
  void SetUp() override {
    auto clips = P2Shot({"0001AA", "0002AA", "0003AA"}, "S1");
    for (const char* card : {"one", "two"}) MakeP2Card(tree_, card);
    for (std::size_t i = 0; i < clips.size(); ++i) {
      clips[i].frames = kLengths[i];
      clips[i].userName = "Ferry &amp; &lt;quay&gt;";  // in XML
      clips[i].start = kStarts[i];
      Add(i == 1 ? "two" : "one", clips[i]);
    }
    Add("one", {.id = "0009ZZ"});
  }

  void Add(const std::string& card, const P2Clip& clip) {
    AddP2Clip(tree_, card, clip);
    for (const char* channel : {"00", "01"}) {
      tree_.File(card + "/CONTENTS/AUDIO/" + clip.id + channel + ".MXF", "sound");
    }
  }

  std::string Join(const std::vector<std::string>& more) {
    std::vector<std::string> arguments = {"join", tree_.Path("one")};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const ProgramResult result = RunSorvik(arguments);
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    return result.output;
  }

  static constexpr int kLengths[] = {100, 50, 75};
  static constexpr const char* kStarts[] = {"10:20:00:00", "10:20:04:00", "10:20:06:00"};
  const TempTree tree_;
};

// The members that the library demands, by schema; a type of nlohmann::json each.
using Members = std::map<std::string, json::value_t>;
const std::map<std::string, Members> kSchemas = {
    {"Timeline.1", {{"tracks", json::value_t::object}}},
    {"Stack.1", {{"children", json::value_t::array}}},
    {"Track.1", {{"children", json::value_t::array}, {"kind", json::value_t::string}}},
    {"Clip.2",
     {{"media_references", json::value_t::object},
      {"active_media_reference_key", json::value_t::string}}},
    {"ExternalReference.1", {{"target_url", json::value_t::string}}},
    {"MissingReference.1", {}},
    {"ImageSequenceReference.1",
     {{"target_url_base", json::value_t::string},
      {"name_prefix", json::value_t::string},
      {"name_suffix", json::value_t::string},
      {"start_frame", json::value_t::number_unsigned},
      {"frame_step", json::value_t::number_unsigned},
      {"rate", json::value_t::number_unsigned},
      {"frame_zero_padding", json::value_t::number_unsigned},
      {"missing_frame_policy", json::value_t::string}}},
    {"TimeRange.1", {{"start_time", json::value_t::object}, {"duration", json::value_t::object}}},
    {"RationalTime.1",
     {{"rate", json::value_t::number_unsigned}, {"value", json::value_t::number_unsigned}}},
    {"SerializableCollection.1", {{"children", json::value_t::array}}},
};

// Checks each object with a schema below `node`, except free metadata.
void CheckSchemas(const json& node) {
  if (node.is_array()) {
    for (const json& item : node) CheckSchemas(item);
  }
  if (!node.is_object()) return;
  if (node.contains("OTIO_SCHEMA")) {
    const auto schema = kSchemas.find(node["OTIO_SCHEMA"]);
    ASSERT_NE(schema, kSchemas.end()) << node["OTIO_SCHEMA"];
    for (const auto& [name, type] : schema->second) {
      ASSERT_TRUE(node.contains(name)) << schema->first << " without " << name;
      EXPECT_EQ(node[name].type(), type) << schema->first << "." << name;
    }
  }
  for (const auto& [name, value] : node.items()) {
    if (name != "metadata") CheckSchemas(value);
  }
}

TEST_F(JoinLists, OpenTimelineIO) {
  const json timeline = json::parse(Join({"0001AA", "--format", "otio"}));
  CheckSchemas(timeline);
  EXPECT_EQ(timeline["OTIO_SCHEMA"], "Timeline.1");
  EXPECT_EQ(timeline["name"], "Ferry & <quay>");
  EXPECT_EQ(timeline["global_start_time"]["value"], 930000);
  EXPECT_EQ(timeline["global_start_time"]["rate"], 25);
  EXPECT_EQ(timeline["metadata"]["sorvik"]["key"], "0001AA");
  const json& tracks = timeline["tracks"]["children"];
  ASSERT_EQ(tracks.size(), 3u);
  EXPECT_EQ(tracks[0]["kind"], "Video");
  EXPECT_EQ(tracks[2]["kind"], "Audio");
  EXPECT_EQ(tracks[2]["name"], "A2");
  for (const json& track : tracks) {
    ASSERT_EQ(track["children"].size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
      const json& clip = track["children"][i];
      const json& reference = clip["media_references"][clip["active_media_reference_key"]];
      EXPECT_EQ(clip["source_range"]["start_time"]["value"], FramesOf(kStarts[i]));
      EXPECT_EQ(clip["source_range"]["duration"]["value"], kLengths[i]);
      EXPECT_EQ(reference["available_range"], clip["source_range"]);
    }
  }
  EXPECT_EQ(tracks[0]["children"][1]["media_references"]["DEFAULT_MEDIA"]["target_url"],
            "file://" + tree_.Path("two/CONTENTS/VIDEO/0002AA.MXF"));
  const json card = json::parse(Join({"--format", "otio"}));
  CheckSchemas(card);
  EXPECT_EQ(card["OTIO_SCHEMA"], "SerializableCollection.1");
  EXPECT_EQ(card["children"].size(), 2u);
}

TEST_F(JoinLists, MissingPartInTheMiddle) {
  fs::remove_all(tree_.Path("two"));
  const std::string card = tree_.Path("one");
  for (const char* format : {"ffconcat", "otio", "ale", "edl", "fcpxml", "csv"}) {
    const std::string list = tree_.Path("list");
    const ProgramResult refused =
        RunSorvik({"join", card, "0001AA", "--format", format, "-o", list});
    EXPECT_EQ(refused.exitCode, 1) << format;
    EXPECT_THAT(refused.errors, HasSubstr("is missing (use --allow-gaps)"));
    EXPECT_FALSE(fs::exists(list));
  }
  // The timecodes around the hole give its length, so that nothing after it moves.
  const json timeline = json::parse(Join({"0001AA", "--format", "otio", "--allow-gaps"}));
  CheckSchemas(timeline);
  EXPECT_EQ(timeline["metadata"]["sorvik"]["complete"], false);
  const json& hole = timeline["tracks"]["children"][0]["children"][1];
  EXPECT_EQ(hole["media_references"]["DEFAULT_MEDIA"]["OTIO_SCHEMA"], "MissingReference.1");
  EXPECT_EQ(hole["source_range"]["duration"]["value"], 50);
  const ProgramResult edl = RunSorvik({"join", card, "0001AA", "--format", "edl", "--allow-gaps"});
  EXPECT_THAT(edl.output, HasSubstr("002  BL       AA/V"));
  // Once for all tracks.
  EXPECT_EQ(edl.errors, "sorvik: " + card + ": part '060A2B340002AA' of '0001AA' is missing\n");
  EXPECT_THAT(Join({"0001AA", "--format", "fcpxml", "--allow-gaps"}), HasSubstr("<gap "));
  tree_.Folder("l");
  Join({"0001AA", "--format", "ffconcat", "--allow-gaps", "-o", tree_.Path("l/shot.ffconcat")});
  std::ifstream file(tree_.Path("l/shot.ffconcat"));
  const std::string list{std::istreambuf_iterator<char>(file), {}};
  EXPECT_THAT(list, HasSubstr("duration 6.000000\n# missing: "));
}

// An event of CMX 3600, by the columns of the format.
struct EdlEvent {
  std::string number, reel, channel, cut;
  long in, out, recordIn, recordOut;
};

std::vector<EdlEvent> ParseEdl(const std::string& text) {
  std::vector<EdlEvent> events;
  for (const std::string& line : Split(text, "\r\n")) {
    if (line.empty() || line[0] < '0' || line[0] > '9') continue;
    EXPECT_EQ(line.size(), 29u + 4 * 12 - 1) << line;
    const auto column = [&line](std::size_t at, std::size_t size) {
      std::string cell = line.substr(at, size);
      cell.erase(cell.find_last_not_of(' ') + 1);
      return cell;
    };
    events.push_back({column(0, 3), column(5, 8), column(14, 5), column(20, 1),
                      FramesOf(column(29, 11)), FramesOf(column(41, 11)), FramesOf(column(53, 11)),
                      FramesOf(column(65, 11))});
  }
  return events;
}

TEST_F(JoinLists, EditDecisionList) {
  const std::string text = Join({"0001AA", "--format", "edl"});
  EXPECT_TRUE(text.starts_with("TITLE: Ferry & <quay>\r\nFCM: NON-DROP FRAME\r\n\r\n"));
  const std::vector<EdlEvent> events = ParseEdl(text);
  ASSERT_EQ(events.size(), 3u);
  long record = FramesOf("01:00:00:00");
  for (std::size_t i = 0; i < events.size(); ++i) {
    EXPECT_EQ(events[i].number, "00" + std::to_string(i + 1));
    EXPECT_EQ(events[i].reel, "000" + std::to_string(i + 1) + "AA");
    EXPECT_EQ(events[i].channel, "AA/V");
    EXPECT_EQ(events[i].cut, "C");
    EXPECT_EQ(events[i].in, FramesOf(kStarts[i]));
    EXPECT_EQ(events[i].out, events[i].in + kLengths[i]);
    EXPECT_EQ(events[i].recordIn, record);
    EXPECT_EQ(events[i].recordOut, record + kLengths[i]);
    record = events[i].recordOut;
  }
  EXPECT_THAT(text, HasSubstr("* SOURCE FILE: 0002AA.MXF\r\n"));
  EXPECT_EQ(ParseEdl(Join({"--format", "edl"})).size(), 4u);
}

TEST_F(JoinLists, AvidLogExchange) {
  const auto sections = Split(Join({"--format", "ale"}), "\r\n\r\n");
  ASSERT_EQ(sections.size(), 3u);
  EXPECT_EQ(sections[0],
            "Heading\r\nFIELD_DELIM\tTABS\r\nVIDEO_FORMAT\t1080\r\n"
            "AUDIO_FORMAT\t48khz\r\nFPS\t25");
  const auto columns = Split(sections[1], "\r\n");
  ASSERT_EQ(columns[0], "Column");
  const auto names = Split(columns[1], "\t");
  auto data = Split(sections[2], "\r\n");
  ASSERT_EQ(data.front(), "Data");
  std::vector<std::map<std::string, std::string>> rows;
  for (std::size_t i = 1; i + 1 < data.size(); ++i) {
    const auto cells = Split(data[i], "\t");
    ASSERT_EQ(cells.size(), names.size()) << data[i];
    rows.emplace_back();
    for (std::size_t j = 0; j < cells.size(); ++j) rows.back()[names[j]] = cells[j];
  }
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[1]["Name"], "0002AA");
  EXPECT_EQ(rows[1]["Tracks"], "VA1A2");
  EXPECT_EQ(rows[1]["Start"], kStarts[1]);
  EXPECT_EQ(rows[1]["End"], kStarts[2]);
  EXPECT_EQ(rows[1]["Source Path"], tree_.Path("two/CONTENTS/VIDEO"));
  EXPECT_EQ(rows[1]["Clip"], "Ferry & <quay>");
  EXPECT_EQ(rows[3]["Name"], "0009ZZ");
}

// The attributes of the elements with that name, in document order.
std::vector<std::map<std::string, std::string>> ElementsNamed(const std::string& xml,
                                                              const std::string& name) {
  std::vector<std::map<std::string, std::string>> elements;
  const std::regex element("<" + name + "((?: [a-zA-Z]+=\"[^\"]*\")*) ?/?>");
  const std::regex attribute(" ([a-zA-Z]+)=\"([^\"]*)\"");
  for (std::sregex_iterator at(xml.begin(), xml.end(), element), end; at != end; ++at) {
    const std::string attributes = (*at)[1];
    elements.emplace_back();
    for (std::sregex_iterator one(attributes.begin(), attributes.end(), attribute); one != end;
         ++one) {
      elements.back()[(*one)[1]] = (*one)[2];
    }
  }
  return elements;
}

TEST_F(JoinLists, FinalCutProXml) {
  const std::string xml = Join({"0001AA", "--format", "fcpxml"});
  EXPECT_TRUE(xml.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n"));
  EXPECT_EQ(ElementsNamed(xml, "fcpxml").at(0)["version"], "1.10");
  EXPECT_EQ(ElementsNamed(xml, "format").at(0)["frameDuration"], "1/25s");
  EXPECT_EQ(ElementsNamed(xml, "project").at(0)["name"], "Ferry &amp; &lt;quay&gt;");
  auto sequence = ElementsNamed(xml, "sequence").at(0);
  EXPECT_EQ(sequence["tcStart"], "37200s");
  EXPECT_EQ(sequence["duration"], "9s");
  EXPECT_EQ(sequence["tcFormat"], "NDF");
  std::map<std::string, std::map<std::string, std::string>> assets;
  for (auto& asset : ElementsNamed(xml, "asset")) assets[asset["id"]] = asset;
  EXPECT_EQ(assets.size(), 9u);
  EXPECT_EQ(ElementsNamed(xml, "media-rep").size(), 9u);
  std::vector<std::string> offsets;
  for (auto& clip : ElementsNamed(xml, "asset-clip")) {
    ASSERT_TRUE(assets.contains(clip["ref"]));
    EXPECT_EQ(clip["start"], assets[clip["ref"]]["start"]);
    EXPECT_EQ(clip["duration"], assets[clip["ref"]]["duration"]);
    if (clip["lane"].empty()) offsets.push_back(clip["offset"]);
  }
  EXPECT_THAT(offsets, ElementsAre("37200s", "37204s", "37206s"));
}

TEST_F(JoinLists, ImageSequences) {
  for (const char* frame : {"0007", "0008"}) {
    tree_.File(std::string("dng/A001_") + frame + ".DNG", "frame");
  }
  // Its rate is unknown: none of the formats can give its length.
  const std::string head = tree_.Path("dng/A001_0007.DNG");
  for (const char* format : {"otio", "edl", "fcpxml"}) {
    const ProgramResult result = RunSorvik({"join", tree_.Path("dng"), head, "--format", format});
    EXPECT_EQ(result.exitCode, 1) << format;
    EXPECT_THAT(result.output, IsEmpty());
  }
  const ProgramResult ffconcat =
      RunSorvik({"join", tree_.Path("dng"), head, "--format", "ffconcat"});
  EXPECT_THAT(ffconcat.errors, HasSubstr("use the format otio"));
}

TEST_F(JoinLists, SoundAlone) {
  tree_.File("sound/T01.wav", MadeMedia(".wav"));  // 100 samples
  const std::string folder = tree_.Path("sound");
  const json timeline =
      json::parse(RunSorvik({"join", folder, "T01.wav", "--format", "otio"}).output);
  CheckSchemas(timeline);
  const json& track = timeline["tracks"]["children"][0];
  EXPECT_EQ(track["kind"], "Audio");
  EXPECT_EQ(track["children"][0]["source_range"]["duration"]["value"], 100);
  EXPECT_EQ(track["children"][0]["source_range"]["duration"]["rate"], 48000);
  for (const char* format : {"ale", "edl", "fcpxml"}) {
    EXPECT_EQ(RunSorvik({"join", folder, "T01.wav", "--format", format}).exitCode, 1) << format;
  }
}

TEST_F(JoinLists, HostileNames) {
  const std::string name = "A_0001C313A260711_101700EJ_CANON";
  MakeCanonFlatCard(tree_, "flat", {"it's\nfile /etc/passwd.MP4"});
  const std::string key = "it's\nfile /etc/passwd.MP4";
  const ProgramResult refused =
      RunSorvik({"join", tree_.Path("flat"), key, "--format", "ffconcat"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.output, IsEmpty());
  MakeCanonFlatCard(tree_, "quoted", {"it's.MP4"});
  const ProgramResult quoted =
      RunSorvik({"join", tree_.Path("quoted"), "it's.MP4", "--format", "ffconcat"});
  EXPECT_THAT(quoted.output,
              HasSubstr("\nfile '" + tree_.Path("quoted") + "/CONTENTS/CLIPS001/it'\\''s.MP4'\n"));
  EXPECT_THAT(quoted.output, HasSubstr("-safe 0"));
}

TEST_F(JoinLists, UsageErrors) {
  const std::string card = tree_.Path("one");
  EXPECT_EQ(RunSorvik({"join", card, "0001AA"}).exitCode, 2);
  EXPECT_EQ(RunSorvik({"join", card, "0001AA", "--format", "mov"}).exitCode, 2);
  EXPECT_EQ(RunSorvik({"join", card, "--format", "ffconcat"}).exitCode, 2);
  EXPECT_EQ(RunSorvik({"join", card, "--format", "edl", "--json"}).exitCode, 2);
  EXPECT_EQ(RunSorvik({"join", card, "0404XX", "--format", "otio"}).exitCode, 1);
  // Separate tracks need several lists.
  EXPECT_EQ(RunSorvik({"join", card, "0001AA", "--format", "ffconcat"}).exitCode, 1);
  const std::string file = tree_.Path("one/CONTENTS/CLIP/0001AA.XML");
  EXPECT_EQ(RunSorvik({"join", card, "0001AA", "--format", "otio", "-o", file}).exitCode, 1);
}

}  // namespace
