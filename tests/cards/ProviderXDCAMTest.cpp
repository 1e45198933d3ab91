// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "SorvikProvider/frame/ProviderRequest.h"
#include "providers/cards/ProviderXDCAM.h"
#include "support/Cards.h"
#include "support/TempTree.h"
#include "support/Values.h"
#include "thumbnails/OwnedBitplate.h"

namespace {

using namespace Sorvik;
using namespace sorvik_test;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace fs = std::filesystem;

const ProviderXDCAM kProvider;
const FieldNameSet kAllPaths{kNameField, kPathField, kExtraPathField, kProxyPathField};

// Lists the card and returns the entry of one clip XML, whose path is relative to the card.
FieldValueMap Entry(const TempTree& tree, const std::string& card, const std::string& xml,
                    const FieldNameSet& fields) {
  const ContentMap content = kProvider.GetContent(tree.Path(card), fields, nullptr);
  const auto found = content.find(tree.Path(card + "/" + xml));
  return found == content.end() ? FieldValueMap() : found->second;
}

struct ScoreCase {
  const char* why;
  std::vector<std::string> names;  // those with a dot are files
  int score;
};

class XDCAMScore : public testing::TestWithParam<ScoreCase> {};

TEST_P(XDCAMScore, DependsOnTheLayout) {
  const TempTree tree;
  tree.Folder("card");
  for (const auto& name : GetParam().names) {
    if (name.find('.', 1) == name.npos) {
      tree.Folder("card/" + name);
    } else {
      tree.File("card/" + name);
    }
  }
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("card")), GetParam().score) << GetParam().why;
}

const std::vector<std::string> kDisc{"Clip", "Sub", "MEDIAPRO.XML", "DISCMETA.XML"};
const std::vector<std::string> kProav{"PROAV/CLPR", "PROAV/INDEX.XML", "PROAV/DISCMETA.XML",
                                      "PROAV/DISCINFO.XML"};

std::vector<std::string> With(std::vector<std::string> names,
                              const std::vector<std::string>& more) {
  names.insert(names.end(), more.begin(), more.end());
  return names;
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, XDCAMScore,
    testing::Values(ScoreCase{"only the required four", kDisc, 0},
                    ScoreCase{"with tolerated names", With(kDisc, {"General", "ALIAS.XML"}), 100},
                    ScoreCase{"hidden files don't count", With(kDisc, {"General", ".a", ".b"}), 0},
                    ScoreCase{"two others", With(kDisc, {"a.txt", "b.txt"}), 40},
                    ScoreCase{"one of four missing",
                              {"Clip", "Sub", "MEDIAPRO.XML", "General", "ALIAS.XML", "a.b"},
                              0},
                    ScoreCase{
                        "names in another case",
                        {"clip", "Sub", "MEDIAPRO.XML", "DISCMETA.XML", "General", "ALIAS.XML"},
                        0},
                    ScoreCase{"PROAV", kProav, 100},
                    ScoreCase{"PROAV with backups",
                              With(kProav, {"PROAV/INDEX.BUP", "PROAV/DISCINFO.BUP"}), 100},
                    ScoreCase{"PROAV with edit lists", With(kProav, {"PROAV/EDTR"}), 40},
                    ScoreCase{"incomplete PROAV next to a complete disc layout",
                              With(kDisc, {"General", "ALIAS.XML", "PROAV/CLPR"}), 0},
                    ScoreCase{"nothing", {}, 0}));

TEST(ProviderXDCAM, DescribesItself) {
  EXPECT_EQ(kProvider.CanProvideFor(""), 0);
  EXPECT_EQ(kProvider.GetFieldLabelList().size(), 16u);
  EXPECT_THAT(kProvider.GetDefaultFieldList(), ElementsAre("Name", "Path"));
  EXPECT_EQ(kProvider.GetMaximumThumbnailHeight(480), 16);
  EXPECT_EQ(kProvider.GetMaximumThumbnailHeight(8), 8);
  EXPECT_EQ(kProvider.GetIdentification(), "com.halvane.Merisk.ProviderXDCAM");
}

TEST(ProviderXDCAM, ListsTheClipsOfADisc) {
  const TempTree tree;
  MakeXDCAMDisc(tree, "disc", {{.name = "C0001", .title = "Opening"}, {.name = "C0002"}});
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("disc")), 100);
  tree.File("disc/Clip/.hiddenM01.XML");
  fs::remove(tree.Path("disc/Clip/C0002.MXF"));

  const FieldNameSet fields{"Name", "Path", "duration", "videoFrameSize", "videoPixelAspectRatio"};
  const FieldValueMap first = Entry(tree, "disc", "Clip/C0001M01.XML", fields);
  // The name is the file's; the title in the list is used only with the extra paths.
  EXPECT_EQ(TextOf(first, "Name"), "C0001");
  EXPECT_EQ(TextOf(first, "Path"), tree.Path("disc/Clip/C0001.MXF"));
  EXPECT_EQ(TextOf(first, "duration"), "00:00:04:00");
  EXPECT_EQ(TextOf(first, "videoFrameSize"), "1440 x 1080 pixel");
  EXPECT_EQ(TextOf(first, "videoPixelAspectRatio"), "1.3333");
  EXPECT_FALSE(first.contains("ProxyPath"));
  EXPECT_EQ(TextOf(Entry(tree, "disc", "Clip/C0001M01.XML", kAllPaths), "Name"), "Opening");

  // A clip with metadata but without essence has an entry; without either it has none.
  const FieldValueMap second = Entry(tree, "disc", "Clip/C0002M01.XML", fields);
  EXPECT_EQ(TextOf(second, "duration"), "00:00:04:00");
  EXPECT_FALSE(second.contains("Path"));
  EXPECT_EQ(kProvider.GetContent(tree.Path("disc"), fields, nullptr).size(), 2u);
  EXPECT_EQ(kProvider.GetContent(tree.Path("disc"), FieldNameSet(), nullptr).size(), 1u);
}

TEST(ProviderXDCAM, ReportsTheFilesOfADiscInOrder) {
  const TempTree tree;
  MakeXDCAMDisc(tree, "disc", {{.name = "C0001"}, {.name = "C0002"}});
  for (const char* file :
       {"INDEX.XML", "SYSPRO.XML", "CUEUP.XML", "Edit/E0001E01.SMI", "General/Sony/Planning/p.xml",
        "UserData/u", "Take/t", "Clip/C0001M01.XMP"}) {
    tree.File(std::string("disc/") + file);
  }
  const std::string disc = tree.Path("disc");
  const FieldValueMap first = Entry(tree, "disc", "Clip/C0001M01.XML", kAllPaths);
  EXPECT_THAT(ExtraPathsOf(first, disc),
              ElementsAre("INDEX.XML", "MEDIAPRO.XML", "DISCMETA.XML", "ALIAS.XML", "SYSPRO.XML",
                          "Edit/E0001E01.SMI", "CUEUP.XML", "Edit", "Sub",
                          "General/Sony/Planning/p.xml", "UserData", "Take", "Clip/C0001M01.XML",
                          "Clip/C0001M01.XMP", "Sub/C0001S01.MP4"));
  EXPECT_EQ(TextOf(first, "ProxyPath"), disc + "/Sub/C0001S01.MP4");

  // The path of a proxy is reported even if the file is missing, but only in the listing.
  fs::remove(tree.Path("disc/Sub/C0001S01.MP4"));
  fs::remove_all(tree.Path("disc/General/Sony/Planning"));
  const FieldValueMap again = Entry(tree, "disc", "Clip/C0001M01.XML", kAllPaths);
  EXPECT_EQ(TextOf(again, "ProxyPath"), disc + "/Sub/C0001S01.MP4");
  EXPECT_THAT(ExtraPathsOf(again, disc), Contains("General/Sony"));
  EXPECT_THAT(ExtraPathsOf(again, disc), Not(Contains("Sub/C0001S01.MP4")));
  const std::string key = tree.Path("disc/Clip/C0002M01.XML");
  const ContentMap one = kProvider.GetContent(disc, key, kAllPaths);
  EXPECT_FALSE(one.at(key).contains("ProxyPath"));
  EXPECT_THAT(ExtraPathsOf(one.at(key), disc), Contains("Sub/C0002S01.MP4"));
}

TEST(ProviderXDCAM, LeavesExtraPathsUnsetForAClipMissingInTheList) {
  const TempTree tree;
  MakeXDCAMDisc(tree, "disc", {{.name = "C0001"}});
  tree.File("disc/MEDIAPRO.XML", MediaProXml(""));
  const FieldValueMap entry = Entry(tree, "disc", "Clip/C0001M01.XML", kAllPaths);
  EXPECT_EQ(TextOf(entry, "Name"), "C0001");
  EXPECT_FALSE(entry.contains("ExtraPath"));
  EXPECT_FALSE(entry.contains("ProxyPath"));
}

TEST(ProviderXDCAM, ListsTheClipsOfProav) {
  const TempTree tree;
  MakeXDCAMProav(tree, "card", {{.name = "C0001"}, {.name = "C0002"}});
  EXPECT_EQ(kProvider.CanProvideFor(tree.Path("card")), 100);
  for (const char* file : {"General/a/b.txt", "General/.hidden", "PROAV/INDEX.BUP",
                           "PROAV/EDTR/E0001/E0001E01.SMI", "PROAV/USERDATA/u.bin"}) {
    tree.File(std::string("card/") + file);
  }
  fs::remove(tree.Path("card/PROAV/CLPR/C0002/C0002V01.MXF"));
  const std::string card = tree.Path("card");
  const FieldValueMap first = Entry(tree, "card", "PROAV/CLPR/C0001/C0001M01.XML", kAllPaths);
  EXPECT_EQ(TextOf(first, "Path"), card + "/PROAV/CLPR/C0001/C0001V01.MXF");
  EXPECT_EQ(TextOf(first, "Name"), "C0001V01");
  EXPECT_THAT(
      ExtraPathsOf(first, card),
      ElementsAre("General/a/b.txt", "PROAV/DISCINFO.XML", "PROAV/INDEX.BUP", "PROAV/DISCMETA.XML",
                  "PROAV/INDEX.XML", "PROAV/EDTR", "PROAV/USERDATA/u.bin",
                  "PROAV/CLPR/C0001/C0001C01.SMI", "PROAV/CLPR/C0001/C0001S01.MXF",
                  "PROAV/CLPR/C0001/C0001R01.BIM", "PROAV/CLPR/C0001/C0001M01.XML",
                  "PROAV/CLPR/C0001/C0001A01.MXF", "PROAV/CLPR/C0001/C0001A02.MXF"));
  EXPECT_FALSE(first.contains("ProxyPath"));
  EXPECT_EQ(TextOf(Entry(tree, "card", "PROAV/CLPR/C0002/C0002M01.XML", kAllPaths), "Path"),
            card + "/PROAV/CLPR/C0002/C0002A01.MXF");
}

TEST(ProviderXDCAM, ReturnsAnEntryForAnUnknownKey) {
  const TempTree tree;
  MakeXDCAMDisc(tree, "disc", {});
  const ContentMap one = kProvider.GetContent(tree.Path("disc"), "no key", kAllPaths);
  EXPECT_THAT(KeysOf(one), ElementsAre("no key"));
  EXPECT_THAT(one.at("no key"), IsEmpty());
}

TEST(ProviderXDCAM, ShowsTheIconOfTheEssence) {
  const TempTree tree;
  MakeXDCAMProav(tree, "card", {{.name = "C0001"}});
  const std::string key = tree.Path("card/PROAV/CLPR/C0001/C0001M01.XML");
  const OwnedBitplate icon(kProvider.GetThumbnail(tree.Path("card"), key, 80, 60, nullptr));
  ASSERT_NE(icon, nullptr);
  EXPECT_EQ(bitplateGetWidth(icon.get()), 16);
  EXPECT_EQ(bitplateGetHeight(icon.get()), 16);
  EXPECT_EQ(kProvider.GetThumbnail(tree.Path("card"), "/a/b.MXF", 16, 16, nullptr), nullptr);
  EXPECT_EQ(kProvider.GetThumbnail(tree.Path("card"), "M01.XML", 16, 16, nullptr), nullptr);
}

TEST(ProviderXDCAM, IgnoresUrisThatLeadOffTheMedium) {
  const TempTree tree;
  MakeXDCAMDisc(tree, "disc", {{.name = "C0001"}});
  tree.File("secret.xml");
  tree.File("disc/Clip/inner.txt");
  ASSERT_EQ(mkfifo(tree.Path("disc/Sub/fifo").c_str(), 0600), 0);
  std::string infos;
  for (const char* uri : {"../secret.xml", "./../secret.xml", "Clip/../../secret.xml", "",
                          "./Sub/fifo", "./Clip/../Clip/inner.txt", "./missing"}) {
    infos += XmlElement("RelevantInfo", std::string("type=\"XML\" uri=\"") + uri + "\"");
  }
  infos += XmlElement("Proxy", "uri=\"../../../../../../etc/passwd\"");
  tree.File("disc/MEDIAPRO.XML",
            MediaProXml(XmlElement("Material", "uri=\"./Clip/C0001.MXF\"", infos)));
  const FieldValueMap entry = Entry(tree, "disc", "Clip/C0001M01.XML", kAllPaths);
  EXPECT_FALSE(entry.contains("ProxyPath"));
  EXPECT_THAT(ExtraPathsOf(entry, tree.Path("disc")),
              ElementsAre("MEDIAPRO.XML", "DISCMETA.XML", "ALIAS.XML", "Sub", "General",
                          "Clip/../Clip/inner.txt"));

  MakeXDCAMProav(tree, "card", {{.name = "C0001"}});
  tree.File("card/PROAV/INDEX.XML",
            "<indexFile><clipTable><clip clipId=\"C0001\" file=\"../../../../secret.xml\">"
            "<meta file=\"C0001M01.XML\"/></clip></clipTable></indexFile>");
  EXPECT_THAT(
      ExtraPathsOf(Entry(tree, "card", "PROAV/CLPR/C0001/C0001M01.XML", kAllPaths), tree.Root()),
      ElementsAre("card/PROAV/DISCINFO.XML", "card/PROAV/DISCMETA.XML", "card/PROAV/INDEX.XML",
                  "card/PROAV/CLPR/C0001/C0001M01.XML"));
}

TEST(ProviderXDCAM, MatchesTheFirstClipWhoseIdOccursInTheKey) {
  const TempTree tree;
  MakeXDCAMProav(tree, "card", {{.name = "C0001"}});
  tree.File("card/PROAV/CLPR/C00/x.SMI");
  tree.File("card/PROAV/INDEX.XML",
            "<indexFile><clipTable><clip clipId=\"\" file=\"x\"/><clip clipId=\"C00\" "
            "file=\"x.SMI\"/></clipTable></indexFile>");
  EXPECT_THAT(
      ExtraPathsOf(Entry(tree, "card", "PROAV/CLPR/C0001/C0001M01.XML", kAllPaths), tree.Root()),
      Contains("card/PROAV/CLPR/C00/x.SMI"));
}

TEST(ProviderXDCAM, LimitsTheFilesOfOneRow) {
  const TempTree tree;
  MakeXDCAMDisc(tree, "disc", {{.name = "C0001"}});
  MakeXDCAMProav(tree, "card", {{.name = "C0001"}});
  std::string infos;
  std::string files;
  for (int i = 0; i < 1000; ++i) {
    infos += XmlElement("RelevantInfo", "type=\"XML\" uri=\"./Clip/C0001M01.XML\"");
    files += XmlElement("meta", "file=\"C0001M01.XML\"");
  }
  tree.File("disc/MEDIAPRO.XML",
            MediaProXml(XmlElement("Material", "uri=\"./Clip/C0001.MXFC0002.MXF\"", infos)));
  tree.File("card/PROAV/INDEX.XML", "<indexFile><clipTable><clip clipId=\"C0001\">" + files +
                                        "</clip></clipTable></indexFile>");
  for (const auto& [medium, key] : {std::pair("disc", "Clip/C0001M01.XML"),
                                    std::pair("card", "PROAV/CLPR/C0001/C0001M01.XML")}) {
    const auto paths = ExtraPathsOf(Entry(tree, medium, key, kAllPaths), tree.Root());
    EXPECT_THAT(paths, Contains(std::string(medium) + "/" + key));
    EXPECT_LT(paths.size(), 100u) << medium;
  }
}

struct IndexCase {
  const char* why;
  std::string bytes;
};

std::string Nested(int depth) {
  std::string open;
  std::string close;
  for (int i = 0; i < depth; ++i) {
    open += "<a>";
    close += "</a>";
  }
  return "<MediaProfile><Contents>" + open + close + "</Contents></MediaProfile>";
}

class InvalidIndex : public testing::TestWithParam<IndexCase> {};

TEST_P(InvalidIndex, AffectsOnlyTheExtraPaths) {
  const TempTree tree;
  MakeXDCAMDisc(tree, "disc", {{.name = "C0001"}});
  MakeXDCAMProav(tree, "card", {{.name = "C0001"}});
  tree.File("disc/MEDIAPRO.XML", GetParam().bytes);
  tree.File("card/PROAV/INDEX.XML", GetParam().bytes);
  const FieldValueMap onDisc = Entry(tree, "disc", "Clip/C0001M01.XML", kAllPaths);
  EXPECT_EQ(TextOf(onDisc, "Path"), tree.Path("disc/Clip/C0001.MXF")) << GetParam().why;
  EXPECT_FALSE(onDisc.contains("ExtraPath"));
  EXPECT_FALSE(onDisc.contains("ProxyPath"));
  const FieldValueMap inProav = Entry(tree, "card", "PROAV/CLPR/C0001/C0001M01.XML", kAllPaths);
  EXPECT_THAT(ExtraPathsOf(inProav, tree.Path("card/PROAV")),
              ElementsAre("DISCINFO.XML", "DISCMETA.XML", "INDEX.XML"));
}

const std::string kMaterial = "<Material uri=\"./Clip/C0001.MXF\"/>";

INSTANTIATE_TEST_SUITE_P(
    Bytes, InvalidIndex,
    testing::Values(
        IndexCase{"empty", ""}, IndexCase{"no XML", "C0001"},
        IndexCase{"cut", "<MediaProfile><Contents>" + kMaterial},
        IndexCase{"other root without content", "<MediaProfile/>"},
        IndexCase{"nested", Nested(10'000)},
        IndexCase{"DOCTYPE", "<!DOCTYPE MediaProfile>" + MediaProXml(kMaterial).substr(39)},
        IndexCase{"entities",
                  "<!DOCTYPE a [<!ENTITY x \"xxxxxxxxxx\"><!ENTITY y \"&x;&x;&x;&x;\">]>"
                  "<MediaProfile><Contents>&y;" +
                      kMaterial + "</Contents></MediaProfile>"},
        IndexCase{"external entity",
                  "<!DOCTYPE a [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><MediaProfile><Contents>"
                  "&x;</Contents></MediaProfile>"},
        IndexCase{"filled with ones", std::string(4096, '\xFF')},
        IndexCase{"huge", MediaProXml(std::string(17 << 20, ' '))}));

TEST(ProviderXDCAM, OpensOnlyRegularFilesAsIndex) {
  const TempTree tree;
  MakeXDCAMDisc(tree, "disc", {{.name = "C0001"}});
  fs::remove(tree.Path("disc/MEDIAPRO.XML"));
  ASSERT_EQ(mkfifo(tree.Path("disc/MEDIAPRO.XML").c_str(), 0600), 0);
  EXPECT_EQ(TextOf(Entry(tree, "disc", "Clip/C0001M01.XML", kAllPaths), "Name"), "C0001");
}

TEST(ProviderXDCAM, StopsWhenAborted) {
  const TempTree tree;
  MakeXDCAMDisc(tree, "disc", {{.name = "C0001"}});
  const auto request = Hestra::InterfaceRef<ProviderContentRequest>(
      new ProviderContentRequest("test", {}, tree.Path("disc"), kAllPaths));
  EXPECT_EQ(kProvider.GetContent(tree.Path("disc"), kAllPaths, &*request).size(), 1u);
  request->Abort();
  EXPECT_THAT(kProvider.GetContent(tree.Path("disc"), kAllPaths, &*request), IsEmpty());
}

// A clip whose name contains that of another one must not get the other's files.
TEST(ProviderXDCAM, MatchesIndexedClipsByTheirCompleteNames) {
  const TempTree tree;
  MakeXDCAMProav(tree, "proav", {{.name = "C0001"}, {.name = "C00011"}});
  const auto proav =
      ExtraPathsOf(Entry(tree, "proav", "PROAV/CLPR/C00011/C00011M01.XML", kAllPaths), tree.Root());
  EXPECT_THAT(proav, Contains("proav/PROAV/CLPR/C00011/C00011A01.MXF"));
  EXPECT_THAT(proav, Not(Contains("proav/PROAV/CLPR/C0001/C0001A01.MXF")));
  MakeXDCAMDisc(tree, "disc", {{.name = "XC0001"}, {.name = "C0001"}});
  const auto disc = ExtraPathsOf(Entry(tree, "disc", "Clip/C0001M01.XML", kAllPaths), tree.Root());
  EXPECT_THAT(disc, Contains("disc/Sub/C0001S01.MP4"));
  EXPECT_THAT(disc, Not(Contains("disc/Sub/XC0001S01.MP4")));
}

}  // namespace
