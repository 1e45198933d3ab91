// SPDX-License-Identifier: MIT
// Damages each file of a card of every structure, runs `sorvik check` and compares its finding.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "support/AllCards.h"
#include "support/Cards.h"
#include "support/MadeMedia.h"
#include "support/ModernCards.h"
#include "support/Program.h"
#include "support/TempTree.h"

namespace sorvik_test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

// The kinds of the findings for one file. Empty: the damage can't be detected.
struct Row {
  const char* file;  // below the folder of all cards
  const char* role;
  const char* deleted;
  const char* emptied;
  const char* halved;
  const char* oneByteLess;
  const char* replacedByFolder;
  const char* severity = "error";
};

std::ostream& operator<<(std::ostream& out, const Row& row) { return out << row.file; }

// A clip record remains well-formed without its last line end, and opaque files have no length to
// compare with.
constexpr Row kRows[] = {
    {"p2/CONTENTS/VIDEO/0001AA.MXF", "essence", "missing", "empty", "truncated", "truncated",
     "unreadable"},
    {"p2/CONTENTS/AUDIO/0004BB01.MXF", "sound channel", "missing", "empty", "truncated",
     "truncated", "unreadable"},
    {"p2/CONTENTS/CLIP/0004BB.XML", "clip record", "missing", "empty", "unreadable", "unreadable",
     "missing"},
    {"p2/CONTENTS/ICON/0004BB.BMP", "thumbnail", "", "empty", "truncated", "truncated",
     "unreadable", "warning"},
    {"disc/Clip/C0001.MXF", "essence", "missing", "empty", "truncated", "truncated", "unreadable"},
    {"disc/Clip/C0001M01.XML", "clip record", "missing", "empty", "unreadable", "unreadable",
     "unreadable"},
    {"disc/Sub/C0001S01.MP4", "proxy", "missing", "empty", "truncated", "truncated", "unreadable"},
    {"disc/MEDIAPRO.XML", "index", nullptr, "empty", "unreadable", "unreadable", nullptr},
    {"proav/PROAV/CLPR/C0001/C0001V01.MXF", "essence", "missing", "empty", "truncated", "truncated",
     "unreadable"},
    {"proav/PROAV/CLPR/C0001/C0001A02.MXF", "sound channel", "missing", "empty", "truncated",
     "truncated", "unreadable"},
    {"proav/PROAV/CLPR/C0001/C0001S01.MXF", "proxy", "missing", "empty", "truncated", "truncated",
     "unreadable"},
    {"proav/PROAV/CLPR/C0001/C0001R01.BIM", "real-time metadata", "missing", "empty", "", "",
     "unreadable", "warning"},
    {"proav/PROAV/CLPR/C0001/C0001M01.XML", "clip record", "missing", "empty", "unreadable",
     "unreadable", "unreadable"},
    {"proav/PROAV/INDEX.XML", "index", nullptr, "empty", "unreadable", "unreadable", nullptr},
    {"ex/BPAV/CLPR/A_01/A_01.MP4", "essence", "missing", "empty", "truncated", "truncated",
     "unreadable"},
    {"ex/BPAV/CLPR/B_01/B_01M01.XML", "clip record", "missing", "empty", "unreadable", "unreadable",
     "unreadable"},
    {"ex/BPAV/TAKR/A/A.SMI", "playlist", "missing", "empty", "unreadable", "unreadable",
     "unreadable"},
    {"ex/BPAV/MEDIAPRO.XML", "index", nullptr, "empty", "unreadable", "unreadable", nullptr},
    {"avchd/BDMV/STREAM/00001.MTS", "essence", "missing", "empty", "truncated", "truncated",
     "unreadable"},
    {"avchd/BDMV/CLIPINF/00002.CPI", "clip record", "missing", "empty", "", "", "unreadable"},
    {"avchd/BDMV/PLAYLIST/00000.MPL", "playlist", nullptr, "empty", "truncated", "", nullptr},
    {"xf/CONTENTS/CLIPS001/AA0001/AA000101.MXF", "span", "missing", "empty", "truncated",
     "truncated", "unreadable"},
    {"xf/CONTENTS/CLIPS001/AA0001/AA0001.CIF", "clip record", "missing", "empty", "", "",
     "unreadable"},
    {"hdv/VIDEO/HVR/00_0012_2014-01-31_101530.M2T", "essence", "missing", "empty", "", "truncated",
     "missing"},
    {"hdv/VIDEO/HVR/00_0012_2014-01-31_101530.IDX", "index", "missing", "empty", "", "",
     "unreadable"},
    // Only its index shows that it existed, under the extension of the other clips.
    {"hdv/VIDEO/HVR/00_0013_2014-01-31_104500.AVI", "essence", nullptr, "empty", "truncated",
     "truncated", nullptr},
    {"red/A1.RDC/A1_001.R3D", "segment", "missing", "empty", "truncated", "truncated", "missing"},
    {"red/A1.RDC/A1_002.R3D", "segment", "", "empty", "truncated", "truncated", ""},
    {"arri/A_0001.ari", "frame", "", "empty", "truncated", "truncated", ""},
    {"arri/A_0002.ari", "frame", "", "empty", "truncated", "truncated", ""},
    {"dng/c_0002.dng", "frame", "", "empty", "truncated", "truncated", ""},
    {"canonraw/C_01.RMF", "frame", "missing", "empty", "truncated", "truncated", "missing"},
    {"canonraw/C_01.WAV", "sound channel", "", "empty", "truncated", "truncated", ""},
};

class CardDamage : public testing::TestWithParam<Row> {
 protected:
  void SetUp() override {
    cards_ = MakeAllCards(tree_);
    file_ = tree_.Path(GetParam().file);
    for (const MadeCard& card : cards_) {
      if (file_.starts_with(card.root + "/")) card_ = card;
    }
  }

  // The kinds of the findings for the damaged file, with their role and severity checked.
  std::string KindOfFinding() {
    const ProgramResult result = RunSorvik({"check", card_.root, "--json"});
    const Json report = Json::parse(result.output, nullptr, false);
    if (report.is_discarded()) return "no report: " + result.errors;
    std::string kind;
    for (const Json& finding : report["findings"]) {
      if (finding["path"] != file_) continue;
      EXPECT_EQ(finding["role"], GetParam().role) << finding;
      EXPECT_EQ(finding["severity"], GetParam().severity) << finding;
      kind += finding["kind"].get<std::string>();
    }
    const bool isError = !kind.empty() && GetParam().severity == std::string("error");
    EXPECT_EQ(result.exitCode, isError ? 1 : result.exitCode);
    EXPECT_EQ(report["complete"], result.exitCode == 0);
    return kind;
  }

  TempTree tree_;
  std::vector<MadeCard> cards_;
  MadeCard card_;
  std::string file_;
};

TEST_P(CardDamage, IsReportedForItsFile) {
  const Row& row = GetParam();
  const auto size = fs::file_size(file_);
  fs::resize_file(file_, size - 1);
  EXPECT_EQ(KindOfFinding(), row.oneByteLess) << "one byte less";
  fs::resize_file(file_, size / 2);
  EXPECT_EQ(KindOfFinding(), row.halved) << "half";
  fs::resize_file(file_, 0);
  EXPECT_EQ(KindOfFinding(), row.emptied) << "empty";
  fs::remove(file_);
  // Without some indexes, the folder isn't a card any more.
  if (row.deleted != nullptr) {
    EXPECT_EQ(KindOfFinding(), row.deleted) << "deleted";
  }
  fs::create_directory(file_);
  if (row.replacedByFolder != nullptr) {
    EXPECT_EQ(KindOfFinding(), row.replacedByFolder) << "a folder";
  }
}

INSTANTIATE_TEST_SUITE_P(Files, CardDamage, testing::ValuesIn(kRows));

// The remaining damages concern several files.
TEST(CardDamages, SoundCardsRaiseNoAlarm) {
  const TempTree tree;
  for (const MadeCard& card : MakeAllCards(tree)) {
    const Json report = Json::parse(RunSorvik({"check", card.root, "--json"}).output);
    EXPECT_EQ(report["findings"], Json::array()) << card.root;
    EXPECT_EQ(report["complete"], true);
    EXPECT_FALSE(report.contains("files"));
    const Json full = Json::parse(RunSorvik({"check", card.root, "--json", "--files"}).output);
    std::uintmax_t bytes = 0;
    for (const Json& file : full["files"]) {
      const std::string path = file["path"];
      if (path.starts_with(card.root)) bytes += fs::file_size(path);
    }
    EXPECT_EQ(report["bytes"], bytes) << card.root << " has files of the card only";
  }
}

TEST(CardDamages, MediaOfAnotherContainerIsUnreadable) {
  const TempTree tree;
  MakeAllCards(tree);
  fs::copy_file(tree.Path("dng/c.WAV"), tree.Path("disc/Clip/C0002.MXF"),
                fs::copy_options::overwrite_existing);
  const Json report = Json::parse(RunSorvik({"check", tree.Path("disc"), "--json"}).output);
  EXPECT_EQ(report["findings"][0]["kind"], "unreadable");
  const Json quick =
      Json::parse(RunSorvik({"check", tree.Path("disc"), "--quick", "--json"}).output);
  EXPECT_EQ(quick["depth"], "names");
  EXPECT_EQ(quick["complete"], true) << "no media file is opened";
}

TEST(CardDamages, ListsAndDiskDisagree) {
  const TempTree tree;
  MakeAllCards(tree);
  fs::remove_all(tree.Path("proav/PROAV/CLPR/C0002"));
  fs::copy(tree.Path("proav/PROAV/CLPR/C0001"), tree.Path("proav/PROAV/CLPR/C0009"));
  fs::rename(tree.Path("proav/PROAV/CLPR/C0009/C0001M01.XML"),
             tree.Path("proav/PROAV/CLPR/C0009/C0009M01.XML"));
  fs::rename(tree.Path("proav/PROAV/CLPR/C0009/C0001V01.MXF"),
             tree.Path("proav/PROAV/CLPR/C0009/C0009V01.MXF"));
  const Json report =
      Json::parse(RunSorvik({"check", tree.Path("proav"), "--files", "--json"}).output);
  std::vector<std::string> kinds;
  for (const Json& finding : report["findings"]) kinds.push_back(finding["kind"]);
  EXPECT_EQ(kinds, (std::vector<std::string>{"stale", "unlisted"}));
  for (const Json& file : report["files"]) EXPECT_NE(file["role"], "foreign") << file;
}

// The keys that a listing shows work for every structure, and other texts are no keys.
TEST(CardDamages, KeysOfListingsWorkForAllCards) {
  const TempTree tree;
  for (const MadeCard& card : MakeAllCards(tree)) {
    std::istringstream table(RunSorvik({"ls", card.root, "--tsv", "--fields", "Name"}).output);
    std::string line;
    std::getline(table, line);
    while (std::getline(table, line)) {
      const std::string key = line.substr(0, line.find('\t'));
      EXPECT_NE(RunSorvik({"files", card.root, key}).output, "") << card.root << ' ' << key;
    }
    const ProgramResult other = RunSorvik({"entry", card.root, "zzz"});
    EXPECT_EQ(other.exitCode, 1) << card.root;
    EXPECT_TRUE(other.errors.starts_with("sorvik: " + card.root + ": no entry 'zzz'"))
        << other.errors;
  }
}

// P2 needs all of its folders.
TEST(CardDamages, CopiesWithoutNeededFoldersAreIncomplete) {
  const TempTree tree;
  MakeP2Card(tree, "card");
  AddP2Clip(tree, "card", {.id = "0001AA", .essence = "AVCLIP"});
  fs::copy(tree.Path("card"), tree.Path("copy"), fs::copy_options::recursive);
  EXPECT_EQ(RunSorvik({"check", tree.Path("card"), "--against", tree.Path("copy")}).exitCode, 0);
  fs::remove(tree.Path("copy/CONTENTS/PROXY"));
  const ProgramResult result =
      RunSorvik({"check", tree.Path("card"), "--against", tree.Path("copy")});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(result.output.starts_with("error: differs folder: CONTENTS/PROXY")) << result.output;
  // Each card below a common folder has its copy below the copy of that folder.
  fs::create_directories(tree.Path("media"));
  fs::rename(tree.Path("card"), tree.Path("media/card"));
  fs::create_directories(tree.Path("backup"));
  fs::copy(tree.Path("media/card"), tree.Path("backup/card"), fs::copy_options::recursive);
  EXPECT_EQ(RunSorvik({"check", tree.Path("media"), "--against", tree.Path("backup")}).exitCode, 0);
}

// A copy that a tool makes by the list of files is complete and has the same score.
TEST(CardDamages, CopyListsMakeCompleteCopies) {
  if (std::system("rsync --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "rsync is missing";
  const TempTree tree;
  const auto scores = [](const std::string& path) {
    return Json::parse(RunSorvik({"who", path, "--json"}).output);
  };
  for (const MadeCard& card : MakeAllCards(tree)) {
    const std::string name = fs::path(card.root).filename().string();
    const std::string list =
        SORVIK_BINARY_DIR "/sorvik files " + card.root + " -0 --relative --dirs | ";
    const auto copy = [&](const char* folder, const std::string& tool) {
      const std::string to = tree.Folder(std::string(folder) + "/" + name);
      EXPECT_EQ(std::system((list + tool + to).c_str()), 0) << card.root;
      EXPECT_EQ(RunSorvik({"check", to}).exitCode, 0) << to;
      EXPECT_EQ(RunSorvik({"check", card.root, "--against", to, "--hash"}).exitCode, 0) << to;
      EXPECT_EQ(scores(to), scores(card.root)) << to;
    };
    copy("rsync", "rsync --from0 --files-from=- " + card.root + " ");
    copy("tar", "tar -C " + card.root + " --null -T - -c | tar -x -C ");
  }
}

TEST(CardDamages, AreReportedInTheLanguageOfTheUser) {
  const TempTree tree;
  MakeAllCards(tree);
  fs::remove(tree.Path("disc/Clip/C0001.MXF"));
  const std::string report = tree.Path("report");
  const std::string command = "LC_ALL=C.UTF-8 LANGUAGE=de " SORVIK_BINARY_DIR "/sorvik check " +
                              tree.Path("disc") + " --quick > " + report;
  EXPECT_NE(std::system(command.c_str()), 0);
  std::ifstream file(report);
  std::string first;
  std::string last;
  std::getline(file, first);
  for (std::string line; std::getline(file, line);) last = line;
  EXPECT_EQ(first, "Fehler: Essenz fehlt: Clip/C0001.MXF (C0001M01.XML)");
  EXPECT_TRUE(last.starts_with("UNVOLLSTÄNDIG: 1 Clip, ")) << last;
  EXPECT_TRUE(last.ends_with(", 1 Fehler, nur Namen und Größen")) << last;
}

// A listing has all entries that can be had, and errors for the indexes that can't be read.
TEST(CardDamages, UnreadableIndexesAreErrorsOfListings) {
  const TempTree tree;
  MakeAllCards(tree);
  for (const char* index : {"disc/MEDIAPRO.XML", "proav/PROAV/INDEX.XML", "ex/BPAV/MEDIAPRO.XML",
                            "ex/BPAV/TAKR/A/A.SMI", "avchd/BDMV/PLAYLIST/00000.MPL"}) {
    const std::string card = tree.Path(std::string(index, std::string_view(index).find('/')));
    const std::vector<std::string> list = {"ls", card, "--all", "--json"};
    EXPECT_EQ(RunSorvik(list).exitCode, 0) << index;
    tree.File(index, "damaged");
    const ProgramResult result = RunSorvik(list);
    EXPECT_EQ(result.exitCode, 1) << index;
    const bool isOnlyList = std::string_view(index).starts_with("avchd");
    EXPECT_EQ(Json::parse(result.output)["entries"].empty(), isOnlyList) << index;
    EXPECT_TRUE(result.errors.starts_with("sorvik: " + tree.Path(index) + ": cannot read (not "))
        << result.errors;
    EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1) << result.errors;
    MakeAllCards(tree);
  }
}

TEST(CardDamages, FilesAndFoldersWithoutPermissionAreErrors) {
  const TempTree tree;
  MakeAllCards(tree);
  const std::string folder = tree.Path("p2/CONTENTS/AUDIO");
  const std::string index = tree.Path("ex/BPAV/MEDIAPRO.XML");
  const std::string video = tree.Path("disc/Clip/C0001.MXF");
  for (const std::string& path : {folder, index, video}) fs::permissions(path, fs::perms::none);
  const auto errors = [](const std::string& command, const std::string& card) {
    const ProgramResult result = RunSorvikAsPlainUser({command, card});
    EXPECT_EQ(result.exitCode, 1) << command << ' ' << card;
    return result.errors + result.output;
  };
  const std::string reason = "Permission denied)\n";
  const auto has = [](const std::string& text, const std::string& expected) {
    EXPECT_NE(text.find(expected), std::string::npos) << text;
  };
  has(errors("ls", tree.Path("ex")), index + ": cannot read (" + reason);
  has(errors("files", tree.Path("ex")), index + ": cannot read (" + reason);
  has(errors("files", tree.Path("p2")), folder + ": cannot read (" + reason);
  has(errors("check", tree.Path("p2")), "unreadable folder: CONTENTS/AUDIO (" + reason);
  has(errors("check", tree.Path("ex")), "unreadable index: BPAV/MEDIAPRO.XML (" + reason);
  has(errors("check", tree.Path("disc")), "unreadable essence: Clip/C0001.MXF (");
  fs::permissions(folder, fs::perms::owner_all);
}

// Such a card is still a card, and no command finds it complete.
TEST(CardDamages, FoldersOfClipsWithoutPermissionAreErrors) {
  const TempTree tree;
  MakeAllCards(tree);
  tree.File("camera/DCIM/100GOPRO/GX010001.MP4", MadeMedia(".mp4"));
  MakeXAVCCard(tree, "sony/M4ROOT", XAVCLayout::kM4Root, {{.name = "C0001"}});
  for (const char* folder :
       {"camera/DCIM/100GOPRO", "camera/DCIM", "camera/other", "sony/M4ROOT/CLIP", "sony/other",
        "sony/M4ROOT", "p2/CONTENTS/VIDEO", "p2/CONTENTS/CLIP", "avchd/BDMV/STREAM"}) {
    const std::string path = tree.Folder(folder);
    const std::string card = tree.Path(std::string(folder, std::string_view(folder).find('/')));
    fs::permissions(path, fs::perms::none);
    for (const char* command : {"check", "files", "catalog"}) {
      const ProgramResult result = RunSorvikAsPlainUser({command, card});
      EXPECT_NE(result.exitCode, 0) << command << ' ' << path;
      const std::string text = result.output + result.errors;
      EXPECT_NE(text.find(fs::path(path).filename().string()), text.npos) << command << '\n'
                                                                          << text;
      EXPECT_NE(text.find("Permission denied"), text.npos) << command << '\n' << text;
    }
    fs::permissions(path, fs::perms::owner_all);
  }
  fs::permissions(tree.Folder("sony/other"), fs::perms::none);
  const ProgramResult cards = RunSorvikAsPlainUser({"cards", tree.Path("sony")});
  EXPECT_EQ(cards.exitCode, 1);
  EXPECT_EQ(cards.output, tree.Path("sony/M4ROOT") + "\n");
  EXPECT_EQ(cards.errors,
            "sorvik: " + tree.Path("sony/other") + ": cannot read (Permission denied)\n");
  fs::permissions(tree.Path("sony/other"), fs::perms::owner_all);
}

TEST(CardDamages, CopiesAreComparedByClip) {
  const TempTree tree;
  MakeAllCards(tree);
  const std::string card = tree.Path("disc");
  fs::copy(card, tree.Path("copy"), fs::copy_options::recursive);
  fs::remove(tree.Path("copy/Clip/C0001.MXF"));
  fs::resize_file(tree.Path("copy/Sub/C0002S01.MP4"), 10);
  {
    std::fstream changed(tree.Path("copy/Clip/C0002.MXF"), std::ios::in | std::ios::out);
    changed.seekp(200);
    changed.put('x');
  }
  const auto differences = [&](std::vector<std::string> more) {
    std::vector<std::string> arguments{"check", card, "--against", tree.Path("copy"), "--json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const ProgramResult result = RunSorvik(arguments);
    EXPECT_EQ(result.exitCode, 1);
    std::vector<std::string> files;
    const Json report = Json::parse(result.output);
    for (const Json& finding : report["findings"]) {
      EXPECT_EQ(finding["kind"], "differs");
      EXPECT_EQ(finding["entries"].size(), 1U);
      files.push_back(fs::path(finding["path"].get<std::string>()).filename());
    }
    return files;
  };
  EXPECT_EQ(differences({}), (std::vector<std::string>{"C0001.MXF", "C0002S01.MP4"}));
  EXPECT_EQ(differences({"--hash"}),
            (std::vector<std::string>{"C0001.MXF", "C0002.MXF", "C0002S01.MP4"}));
  const ProgramResult missing = RunSorvik({"check", card, "--against", tree.Path("missing")});
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_EQ(missing.errors, "sorvik: " + tree.Path("missing") + ": No such file or directory\n");
}

TEST(CardDamages, PicturesNeverReplaceFilesOfACard) {
  const TempTree tree;
  MakeAllCards(tree);
  const std::string video = tree.Path("p2/CONTENTS/VIDEO/0004BB.MXF");
  const auto before = fs::file_size(video);
  fs::create_symlink(video, tree.Path("link"));
  fs::create_symlink(tree.Path("p2/CONTENTS/VIDEO"), tree.Path("folder"));
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"thumb", tree.Path("p2"), "0004BB", "-o", video},
        std::vector<std::string>{"sheet", tree.Path("p2"), "-o", tree.Path("link")},
        std::vector<std::string>{"join", tree.Path("p2"), "--format", "csv", "-o",
                                 tree.Path("folder/0004BB.MXF")}}) {
    EXPECT_EQ(RunSorvik(command).exitCode, 1);
    EXPECT_EQ(fs::file_size(video), before);
  }
  EXPECT_EQ(RunSorvik({"thumb", tree.Path("p2"), "0004BB", "--force", "-o", video}).exitCode, 0);
  EXPECT_NE(fs::file_size(video), before);
}

}  // namespace
}  // namespace sorvik_test
