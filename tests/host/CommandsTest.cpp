// SPDX-License-Identifier: MIT
// The commands of sorvik on a generated P2 card and on plain folders.
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "support/AllCards.h"
#include "support/Program.h"
#include "support/TempTree.h"

namespace sorvik_test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using Arguments = std::vector<std::string>;

constexpr char kP2[] = "com.halvane.Merisk.ProviderP2";
constexpr char kDirectory[] = "com.halvane.Merisk.WinProviderDirectory";

std::size_t LineCount(const std::string& text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

Json RunJson(Arguments arguments, int exitCode = 0) {
  arguments.push_back("--json");
  const ProgramResult result = RunSorvik(arguments);
  EXPECT_EQ(result.exitCode, exitCode) << arguments.front() << ": " << result.errors;
  EXPECT_EQ(LineCount(result.output), 1U) << "one document on one line";
  return Json::parse(result.output, nullptr, false);
}

std::set<std::string> Keys(const Json& object) {
  std::set<std::string> keys;
  for (const auto& item : object.items()) keys.insert(item.key());
  return keys;
}

std::string ReadFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

class OnCard : public testing::Test {
 protected:
  void SetUp() override {
    card_ = tree_.Path("CARD");
    const std::string make = "bash " SORVIK_SOURCE_DIR "/tools/make-sample-card " + card_;
    ASSERT_EQ(std::system(make.c_str()), 0);
  }

  TempTree tree_;
  std::string card_;
};

TEST_F(OnCard, WhoListsProvidersBestFirst) {
  const Json who = RunJson({"who", card_});
  ASSERT_EQ(who.size(), 2U);
  EXPECT_EQ(who[0], Json({{"identification", kP2}, {"name", "Panasonic P2"}, {"score", 100}}));
  EXPECT_EQ(who[1]["identification"], kDirectory);
  EXPECT_EQ(who[1]["score"], 30);
}

TEST_F(OnCard, LsPrintsTheProviderMapUnchanged) {
  const Json all = RunJson({"ls", card_});
  EXPECT_EQ(Keys(all), (std::set<std::string>{"entries", "path", "provider"}));
  EXPECT_EQ(all["path"], card_);
  EXPECT_EQ(all["provider"], kP2);
  EXPECT_EQ(Keys(all["entries"]), (std::set<std::string>{"0001AB", "0002CC", "0003ED"}));

  const Json chosen = RunJson({"ls", card_, "--fields", "ExtraPath,Name"});
  const Json& gull = chosen["entries"]["0002CC"];
  EXPECT_EQ(gull["Name"], "Gull on the pier");
  EXPECT_TRUE(gull["ExtraPath"].is_array());

  // The directory provider also claims the path; only it has values of these types.
  const Json folder =
      RunJson({"ls", card_, "--provider", "WinProviderDirectory", "--fields=Name,ExtraPath,26"});
  const Json& file = folder["entries"]["LASTCLIP.TXT"];
  EXPECT_EQ(folder["provider"], kDirectory);
  EXPECT_EQ(file["26"], Json({{"bytes", 16}}));
  EXPECT_TRUE(file["ExtraPath"].is_null());

  const Json none = RunJson({"ls", card_, "--provider", kDirectory, "--fields", ""});
  EXPECT_EQ(none["entries"]["CONTENTS"], Json::object());
}

TEST_F(OnCard, EntryAndOwnerFindTheClip) {
  const Json entry = RunJson({"entry", card_, "0003ED"});
  EXPECT_EQ(Keys(entry["entries"]), std::set<std::string>{"0003ED"});
  EXPECT_EQ(entry["entries"]["0003ED"]["Path"], card_ + "/CONTENTS/VIDEO/0003ED.MXF");

  const std::string sound = card_ + "/CONTENTS/AUDIO/0001AB00.MXF";
  const Json owner = RunJson({"owner", sound});
  EXPECT_EQ(Keys(owner), (std::set<std::string>{"fields", "key", "path", "provider"}));
  EXPECT_EQ(owner["key"], "0001AB");
  EXPECT_EQ(owner["path"], card_);
  EXPECT_EQ(owner["provider"], kP2);
  EXPECT_EQ(RunJson({"owner", sound, "--clips-only"}, 1)["error"]["message"],
            "belongs to no clip (in card " + card_ + ": Panasonic P2)");
}

// The key of such a clip is its first file, as it is for a loose file.
TEST_F(OnCard, OwnerOfTheFileThatIsTheKeyHasTheFieldsOfTheEntry) {
  const std::string first = tree_.File("red/A1.RDC/A1_001.R3D", "RED");
  tree_.File("red/A1.RDC/A1_002.R3D", "RED");
  tree_.File("red/A1.RDC/A1.RMD", "RMD");
  const Json owner = RunJson({"owner", first});
  EXPECT_EQ(owner["path"], tree_.Path("red"));
  const Json entry = RunJson({"entry", tree_.Path("red"), first});
  EXPECT_EQ(owner["fields"]["ExtraPath"], entry["entries"][first]["ExtraPath"]);
  EXPECT_EQ(RunSorvik({"entry", tree_.Path("red"), first}).output.find("this part alone"),
            std::string::npos)
      << "the name of the clip is that of its first part";
}

TEST_F(OnCard, EveryFormOfAKeyFindsTheEntry) {
  const std::string record = card_ + "/CONTENTS/CLIP/0002CC.XML";
  for (const std::string key : {"0002CC", "0002CC.MXF", "CONTENTS/VIDEO/0002CC.MXF",
                                "Gull on the pier", "0002CC00.MXF", record.c_str()}) {
    EXPECT_EQ(Keys(RunJson({"entry", card_, key})["entries"]), std::set<std::string>{"0002CC"})
        << key;
  }
  EXPECT_EQ(RunSorvik({"files", card_, "Harbour walk"}).output.substr(0, card_.size()), card_);
  // CONTENTS/VIDEO belongs to all clips.
  const ProgramResult several = RunSorvik({"entry", card_, "CONTENTS/VIDEO"});
  EXPECT_EQ(several.exitCode, 1);
  EXPECT_EQ(several.errors,
            "sorvik: " + card_ + ": key 'CONTENTS/VIDEO' is ambiguous: 0001AB, 0002CC, 0003ED\n");
}

// Every key that a table shows is accepted, for all structures.
TEST(Commands, ShownKeysAreAccepted) {
  TempTree tree;
  for (const MadeCard& card : MakeAllCards(tree)) {
    const std::string table =
        RunSorvik({"ls", card.root, "--tsv", "--provider", card.providerId, "--fields", ""}).output;
    std::istringstream lines(table);
    std::string key;
    std::getline(lines, key);
    EXPECT_EQ(key, "Key");
    std::size_t count = 0;
    for (; std::getline(lines, key); ++count) {
      EXPECT_EQ(key.find(card.root), std::string::npos) << key << " isn't short";
      const ProgramResult entry =
          RunSorvik({"entry", card.root, key, "--provider", card.providerId, "--json"});
      EXPECT_EQ(entry.exitCode, 0) << card.providerId << ": " << entry.errors;
    }
    EXPECT_GT(count, 0U) << card.providerId;
  }
}

TEST_F(OnCard, EntryShowsNameAndDurationOfTheListing) {
  const std::string listed = RunSorvik({"ls", card_, "--tsv", "--fields", "duration"}).output;
  EXPECT_NE(listed.find("0003ED\t00:05:43:12\n"), std::string::npos) << listed;
  const std::string first = RunSorvik({"entry", card_, "0003ED", "--fields", "duration"}).output;
  EXPECT_NE(first.find("  00:05:43:12\n"), std::string::npos) << first;
  EXPECT_NE(first.find("this part alone: 00:04:59:07\n"), std::string::npos) << first;
  // A part that the listing doesn't contain.
  const std::string second = RunSorvik({"entry", card_, "0004FA", "--fields", "duration"}).output;
  EXPECT_NE(second.find("this part alone: 00:00:44:05\n"), std::string::npos) << second;
}

TEST_F(OnCard, TablesHaveCompleteValuesForMachines) {
  tree_.File("PLAIN/a, \"b\".mov", std::string(1234, 'x'));
  tree_.File("PLAIN/c\td.mov", "x");
  const std::string csv =
      RunSorvik({"ls", tree_.Path("PLAIN"), "--csv", "--fields", "Name,size"}).output;
  EXPECT_EQ(csv,
            "Key,Name,Size\r\n\"a, \"\"b\"\".mov\",\"a, \"\"b\"\".mov\",1234\r\n"
            "c\td.mov,c\td.mov,1\r\n");
  const std::string tsv =
      RunSorvik({"ls", tree_.Path("PLAIN"), "--tsv", "--fields", "Name,size"}).output;
  EXPECT_NE(tsv.find("\nc\\td.mov\tc\\td.mov\t1\n"), std::string::npos) << tsv;

  EXPECT_TRUE(RunSorvik({card_ + "/CONTENTS", "--csv"}).output.starts_with("Key,"))
      << "no heading for a card nearby";

  const std::string table = RunSorvik({"ls", card_}).output;
  EXPECT_TRUE(
      table.starts_with("Key     Name              Start Timecode  Duration     Frame Rate"));
  EXPECT_NE(table.find("2026-05-14T11:20:05+02:00"), std::string::npos);
  EXPECT_EQ(table.find("Relations"), std::string::npos);
  const std::string all = RunSorvik({"ls", card_, "--all"}).output;
  EXPECT_EQ(all.find("Album"), std::string::npos) << "a column without values";
  EXPECT_NE(RunSorvikOnTerminal({"ls", card_}).output.find("2026-05-14 "), std::string::npos);
}

TEST_F(OnCard, FieldsAreFoundByNameAndLabelInAnyCase) {
  const Json byLabel =
      RunJson({"ls", card_, "--fields", "DURATION,date created", "--provider", "p2"});
  EXPECT_EQ(byLabel["entries"]["0001AB"]["duration"], "00:00:29:07");
  EXPECT_TRUE(byLabel["entries"]["0001AB"].contains("CreateDate"));
  const Json sizes = RunJson({"ls", card_, "--fields", "size", "--provider", "directory"});
  EXPECT_EQ(sizes["entries"]["LASTCLIP.TXT"]["26"], Json({{"bytes", 16}}));
  EXPECT_TRUE(
      RunSorvik({"ls", card_, "--fields", "size", "--tsv"}).output.starts_with("Key\tSize\n"))
      << "a field of another provider";
  const ProgramResult unknown = RunSorvik({"ls", card_, "--fields", "duratoin"});
  EXPECT_EQ(unknown.exitCode, 2);
  EXPECT_NE(unknown.errors.find("unknown field 'duratoin' (nearest: duration"), std::string::npos)
      << unknown.errors;
  for (const Json& field : RunJson({"fields"})) {
    EXPECT_NE(field["meaning"], "") << field["name"] << " has no description";
  }
}

TEST_F(OnCard, SeveralOperandsGiveOneDocumentPerLine) {
  const std::string clip = card_ + "/CONTENTS/CLIP/0001AB.XML";
  const ProgramResult owners = RunSorvik({"owner", clip, tree_.Path("none"), clip, "--ndjson"});
  EXPECT_EQ(owners.exitCode, 1);
  std::istringstream lines(owners.output);
  std::vector<Json> documents;
  for (std::string line; std::getline(lines, line);) documents.push_back(Json::parse(line));
  ASSERT_EQ(documents.size(), 3U);
  EXPECT_EQ(documents[0]["key"], "0001AB");
  EXPECT_EQ(documents[1]["error"]["path"], tree_.Path("none"));
  EXPECT_EQ(documents[2], documents[0]);
  EXPECT_EQ(RunSorvik({"owner", clip, clip, "--json"}).exitCode, 2);

  fs::create_directory(tree_.Path("out"));
  EXPECT_EQ(
      RunSorvik({"thumb", card_, "0001AB", "Gull on the pier", "-o", tree_.Path("out")}).exitCode,
      0);
  EXPECT_TRUE(fs::exists(tree_.Path("out/0002CC.png")));
}

TEST_F(OnCard, PlacesListsBrowsableEntries) {
  const Json places = RunJson({"places", card_, "--provider", kDirectory});
  EXPECT_EQ(places["provider"], kDirectory);
  EXPECT_EQ(Keys(places["entries"]), std::set<std::string>{"CONTENTS"});
  EXPECT_EQ(Keys(places["entries"]["CONTENTS"]), (std::set<std::string>{"Name", "Path"}));
}

TEST_F(OnCard, FilesListsEachExistingFileOnce) {
  const Json clip = RunJson({"files", card_, "0002CC"});
  EXPECT_EQ(clip.size(), 5U) << "essence, two channels, record and icon; no folder";
  tree_.File("CARD/CONTENTS/VOICE/NOTE.WAV");
  fs::remove(card_ + "/CONTENTS/ICON/0001AB.BMP");
  const std::vector<std::string> all = RunJson({"files", card_});
  const std::set<std::string> unique(all.begin(), all.end());
  EXPECT_EQ(all.size(), unique.size());
  EXPECT_EQ(unique.size(), 21U) << "all below CONTENTS, and LASTCLIP.TXT";
  EXPECT_TRUE(unique.contains(card_ + "/CONTENTS/VOICE/NOTE.WAV"));
  for (const std::string& file : all) EXPECT_TRUE(fs::is_regular_file(file)) << file;

  const ProgramResult terminated = RunSorvik({"files", card_, "-0"});
  EXPECT_EQ(std::count(terminated.output.begin(), terminated.output.end(), '\0'), 21);
  EXPECT_EQ(LineCount(terminated.output), 0U);
}

TEST_F(OnCard, ThumbIsTopDownWithStraightAlpha) {
  const std::string out = tree_.Path("out.png");
  EXPECT_EQ(RunSorvik({"thumb", card_, "0001AB", "-o", out}).exitCode, 0);
  GdkPixbuf* picture = gdk_pixbuf_new_from_file(out.c_str(), nullptr);
  ASSERT_NE(picture, nullptr);
  EXPECT_EQ(gdk_pixbuf_get_width(picture), 80);
  EXPECT_EQ(gdk_pixbuf_get_height(picture), 60);
  const guint8* pixels = gdk_pixbuf_read_pixels(picture);
  const auto last = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(picture)) * 59;
  EXPECT_GT(pixels[2], pixels[0] + 30) << "blue sky above";
  EXPECT_GT(pixels[last + 1], pixels[last + 2]) << "green ground below";
  g_object_unref(picture);

  EXPECT_EQ(RunSorvik({"thumb", "--folder", "--size", "32x32", "-o", "-"}).output.substr(0, 4),
            "\x89PNG");
}

TEST_F(OnCard, SheetIsSelfContained) {
  tree_.File("PLAIN/<b>&.mov");
  const std::string out = tree_.Path("sheet.html");
  EXPECT_EQ(RunSorvik({"sheet", card_, "-o", out, "--fields", "videoFrameRate"}).exitCode, 0);
  const std::string card = ReadFile(out);
  EXPECT_EQ(card.find("http"), std::string::npos);
  for (const char* part :
       {"Gull on the pier", "src=\"data:image/jpeg;base64,/9j/", "10:09:40:00",
        "<dt>Frame Rate</dt><dd class=\"short\">25</dd>", "type=\"search\"", "<html lang=\"en\">",
        "<dt>Key</dt><dd class=\"short\">0002CC</dd>",
        "/CONTENTS/VIDEO/0002CC.MXF\">0002CC.MXF</a>", "Total duration: 0:06:21"}) {
    EXPECT_NE(card.find(part), std::string::npos) << part;
  }
  EXPECT_EQ(RunSorvik({"sheet", tree_.Path("PLAIN"), "-o", out}).exitCode, 0);
  EXPECT_FALSE(fs::exists(tree_.Path("sheet_files")));
  const std::string plain = ReadFile(out);
  EXPECT_NE(plain.find("&lt;b&gt;&amp;.mov"), std::string::npos);
  EXPECT_EQ(plain.find("<b>"), std::string::npos);
}

TEST(Commands, PicturesOfALargeSheetAreFiles) {
  TempTree tree;
  for (int i = 0; i <= 1000; ++i) tree.File("many/" + std::to_string(i) + ".mov");
  const std::string out = tree.Path("sheet.html");
  ASSERT_EQ(RunSorvik({"sheet", tree.Path("many"), "-o", out}).exitCode, 0);
  const std::string page = ReadFile(out);
  EXPECT_EQ(page.find("data:image"), std::string::npos);
  EXPECT_NE(page.find("data-src=\"./sheet_files/1001.png\""), std::string::npos);
  EXPECT_EQ(ReadFile(tree.Path("sheet_files/1001.png")).substr(0, 4), "\x89PNG");
}

TEST_F(OnCard, CheckReportsOwnersRolesAndMissingFiles) {
  tree_.File("CARD/CONTENTS/VIDEO/holiday.jpg");
  const Json complete = RunJson({"check", card_, "--files"});
  EXPECT_EQ(complete["complete"], true);
  std::map<std::string, Json> files;
  for (const Json& file : complete["files"]) files[file["path"]] = file;
  EXPECT_EQ(files.size(), 22U);
  EXPECT_EQ(files[card_ + "/CONTENTS/VIDEO/0004FA.MXF"]["owners"], Json({"0003ED"}));
  EXPECT_EQ(files[card_ + "/CONTENTS/AUDIO/0001AB00.MXF"]["role"], "clip");
  EXPECT_EQ(files[card_ + "/CONTENTS/VIDEO/holiday.jpg"]["role"], "foreign");

  EXPECT_EQ(files[card_ + "/LASTCLIP.TXT"]["role"], "structure");

  fs::remove(card_ + "/CONTENTS/AUDIO/0001AB01.MXF");
  const Json incomplete = RunJson({"check", card_}, 1);
  EXPECT_EQ(incomplete["complete"], false);
  EXPECT_EQ(incomplete["findings"], Json::array({{{"kind", "missing"},
                                                  {"severity", "error"},
                                                  {"role", "sound channel"},
                                                  {"path", card_ + "/CONTENTS/AUDIO/0001AB01.MXF"},
                                                  {"entries", {"0001AB"}},
                                                  {"detail", ""}}}));

  const ProgramResult plain = RunSorvik({"check", tree_.Root()});
  EXPECT_EQ(plain.exitCode, 1) << "a plain folder is not a card";
}

TEST(Commands, CheckDistinguishesCardFilesFromOrphanedMedia) {
  const sorvik_test::TempTree tree;
  const auto cards = sorvik_test::MakeAllCards(tree);
  // Add files of the cards' structure, and media that no clip lists.
  for (const char* structureFile :
       {"p2/LASTCLIP.TXT", "disc/SYSPRO.XML", "disc/Edit/E0001E01.SMI", "disc/General/Sony/a.xml",
        "proav/PROAV/INDEX.BUP", "proav/PROAV/EDTR/E0001/E0001E01.SMI", "ex/BPAV/CUEUP.XML",
        "ex/BPAV/MEDIAPRO.BUP", "ex/BPAV/TAKR/C/C.SMI", "xf/CONTENTS/CLIPS001/JOURNAL/1.JNL",
        "hdv/VIDEO/HVR/Tracks.dat"}) {
    tree.File(structureFile);
  }
  const std::set<std::string> expected{"p2/CONTENTS/VIDEO/0009ZZ.MXF",
                                       "disc/Clip/C0009.MXF",
                                       "proav/PROAV/CLPR/C0009/C0009V01.MXF",
                                       "ex/BPAV/CLPR/Z_01/Z_01.MP4",
                                       "xf/CONTENTS/CLIPS001/AB0002/ZZ000901.MXF",
                                       "hdv/VIDEO/HVR/00_0014_2014-01-31_104500.m2t",
                                       "red/A1.RDC/B2_001.R3D",
                                       "dng/c.wav"};
  for (const std::string& file : expected) tree.File(file);
  // As on case-insensitive file systems: a file of the clip exists under a second spelling.
  fs::create_hard_link(tree.Path("canonraw/CLIPINFO.XML"), tree.Path("canonraw/ClipInfo.xml"));
  std::set<std::string> orphaned;
  for (const sorvik_test::MadeCard& card : cards) {
    const Json report = Json::parse(RunSorvik({"check", card.root, "--files", "--json"}).output);
    for (const Json& file : report["files"]) EXPECT_NE(file["role"], "foreign") << file["path"];
    for (const Json& finding : report["findings"]) {
      if (finding["kind"] != "orphaned") continue;
      orphaned.insert(finding["path"].get<std::string>().substr(tree.Root().size() + 1));
    }
  }
  EXPECT_EQ(orphaned, expected);
}

// Adds the hidden files that desktops and file servers create in each folder of a card and in its
// root.
void AddDesktopFiles(const std::string& card) {
  std::vector<fs::path> folders{card};
  for (const auto& entry : fs::recursive_directory_iterator(card)) {
    if (entry.is_directory()) folders.push_back(entry.path());
  }
  for (const fs::path& folder : folders) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder)) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
    fs::create_directory(folder / ".AppleDouble");
    for (const fs::path& file : files) {
      fs::copy_file(file, folder / ("._" + file.filename().string()));
      fs::copy_file(file, folder / ".AppleDouble" / file.filename());
    }
    std::ofstream(folder / ".DS_Store") << "x";
  }
  fs::create_directories(card + "/System Volume Information");
  std::ofstream(card + "/System Volume Information/IndexerVolumeGuid") << "x";
}

TEST(Commands, CheckIgnoresFilesOfDesktops) {
  const sorvik_test::TempTree tree;
  const auto cards = sorvik_test::MakeAllCards(tree);
  for (const sorvik_test::MadeCard& card : cards) {
    AddDesktopFiles(card.root);
    const auto result = RunSorvik({"check", card.root});
    EXPECT_EQ(result.exitCode, 0) << result.output << result.errors;
  }
}

TEST_F(OnCard, PicturesOnlyOnRequest) {
  const std::string kitty = RunSorvik({"ls", card_, "--thumbs=kitty"}).output;
  EXPECT_NE(kitty.find("\x1b_Ga=T,f=100"), std::string::npos);
  EXPECT_NE(RunSorvik({"ls", card_, "--thumbs=sixel"}).output.find("\x1bP0;1q"), std::string::npos);
  EXPECT_EQ(RunSorvik({"ls", card_, "--thumbs"}).output.find('\x1b'), std::string::npos);
}

TEST(Commands, ProvidersListTheirFields) {
  const Json providers = RunJson({"providers"});
  ASSERT_FALSE(providers.empty());
  for (const Json& provider : providers) {
    EXPECT_EQ(Keys(provider), (std::set<std::string>{"defaultFields", "fields", "identification",
                                                     "labelKeys", "labels", "name"}));
    EXPECT_EQ(Keys(provider["labelKeys"]), Keys(provider["labels"]));
    EXPECT_TRUE(provider["labelKeys"]["Name"].get<std::string>().starts_with("$$$/"));
    const std::set<std::string> fields = provider["fields"];
    for (const std::string field : provider["defaultFields"]) {
      EXPECT_TRUE(fields.contains(field)) << provider["name"] << " " << field;
    }
  }
}

TEST(Commands, MetaReadsFilesAndPackets) {
  TempTree tree;
  const std::string packet =
      "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
      "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description rdf:about='' "
      "xmlns:xmp='http://ns.adobe.com/xap/1.0/' xmp:Label='Red'/></rdf:RDF></x:xmpmeta>";
  const std::string file = tree.File("a.xmp", packet);
  const Json meta = RunJson({"meta", file});
  EXPECT_EQ(Keys(meta), (std::set<std::string>{"fields", "path"}));
  EXPECT_EQ(meta["fields"]["Label"], "Red");
  const Json error = RunJson({"meta", tree.File("none.txt", "text")}, 1);
  EXPECT_EQ(error,
            Json({{"error", {{"path", tree.Path("none.txt")}, {"message", "no metadata"}}}}));
  EXPECT_EQ(RunJson({"meta", "--packet"}, 1)["error"]["message"], "standard input: no metadata");
}

TEST(Commands, DurationsWithoutTimecodeAreInSeconds) {
  TempTree tree;
  const std::string file = tree.File(
      "a.xmp",
      "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description "
      "xmlns:d='http://ns.adobe.com/xmp/1.0/DynamicMedia/'><d:duration rdf:parseType='Resource'>"
      "<d:value>7500</d:value><d:scale>1/1000</d:scale></d:duration></rdf:Description></rdf:RDF>");
  EXPECT_EQ(RunSorvik({"meta", file, "--fields", "duration"}).output, "Duration  7.5 s\n");
  EXPECT_NE(RunSorvik({"meta", file}).output.find("7500 @ 1/1000"), std::string::npos);
  EXPECT_EQ(RunJson({"meta", file})["fields"]["duration"], "");
  EXPECT_EQ(RunJson({"meta", file, "--fields", "duration"})["fields"], Json({{"duration", ""}}));
}

TEST_F(OnCard, MetaShowsSources) {
  const std::string file = card_ + "/CONTENTS/CLIP/0001AB.XML";
  std::ofstream(file + ".xmp")
      << "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description "
         "xmlns:tiff='http://ns.adobe.com/tiff/1.0/' tiff:Make='Export' "
         "xmlns:aux='http://ns.adobe.com/exif/1.0/aux/' aux:Lens='50mm'/></rdf:RDF>";
  const Json sources = RunJson({"meta", file, "--sources"})["sources"];
  EXPECT_EQ(sources["identifier"], Json({{"from", "record"}, {"others", Json::array()}}));
  EXPECT_EQ(sources["Make"]["from"], "sidecar");
  EXPECT_EQ(sources["Make"]["others"][0]["from"], "record");
  EXPECT_EQ(sources["aux:Lens"]["value"], "50mm");
  // Without further properties if fields are selected.
  EXPECT_EQ(Keys(RunJson({"meta", file, "--sources", "--fields", "Make"})["sources"]),
            (std::set<std::string>{"Make"}));
  const ProgramResult table = RunSorvik({"meta", file, "--sources"});
  EXPECT_NE(table.output.find("Other values"), std::string::npos);
  EXPECT_NE(table.output.find("sidecar"), std::string::npos);
  EXPECT_EQ(RunSorvik({"meta", "--packet", "--sources"}).exitCode, 2);

  // The media has the record of its clip.
  const std::string essence = card_ + "/CONTENTS/VIDEO/0001AB.MXF";
  fs::copy_file(file + ".xmp", essence + ".xmp");
  const Json clip = RunJson({"meta", essence, "--sources"});
  EXPECT_EQ(clip["fields"]["videoFrameRate"], "25");
  EXPECT_EQ(clip["sources"]["videoFrameRate"]["from"], "record");
  EXPECT_EQ(clip["sources"]["Make"]["from"], "sidecar");
}

}  // namespace
}  // namespace sorvik_test
