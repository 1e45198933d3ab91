// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/frame/ProviderRequest.h"
#include "filesystem/DirectoryListing.h"
#include "filesystem/WinProviderDirectory.h"
#include "foundation/Mounts.h"
#include "foundation/platform/FolderView.h"
#include "foundation/platform/LocalTime.h"
#include "support/RealMount.h"
#include "support/TempTree.h"

namespace {

namespace fs = std::filesystem;
using namespace Sorvik;
using sorvik_test::RealMount;
using sorvik_test::TempTree;
using testing::ElementsAre;
using testing::IsEmpty;

const WinProviderDirectory kProvider;

std::vector<std::string> KeysOf(const ContentMap& content) {
  std::vector<std::string> keys;
  for (const auto& [key, fields] : content) keys.push_back(key);
  return keys;
}
std::vector<std::string> Keys(const std::string& path, const FieldNameSet& fields = {"Name"}) {
  return KeysOf(kProvider.GetContent(path, fields, nullptr));
}
// A text field of one entry; "?" if it is missing.
std::string Text(const std::string& path, const std::string& key, const std::string& field) {
  const ContentMap content = kProvider.GetContent(path, key, {field});
  if (!content.contains(key) || !content.at(key).contains(field)) return "?";
  return content.at(key).at(field).cast<std::string>();
}
unsigned long long Size(const std::string& path, const std::string& key) {
  const ContentMap content = kProvider.GetContent(path, key, {"26"});
  return content.at(key).at("26").cast<Provider::ByteSize_t>().value;
}
// The attributes that are set, in the order of their fields.
std::string Attributes(const std::string& path, const std::string& key) {
  std::string all;
  for (const char* field :
       {"03", "04", "05", "06", "07", "08", "09", "10", "11", "12", "13", "14", "15", "16"}) {
    const std::string text = Text(path, key, field);
    if (!text.empty()) all += (all.empty() ? "" : ",") + text;
  }
  return all;
}

TEST(DirectoryPaths, MustBeAbsoluteWithoutTrailingSlash) {
  const TempTree tree;
  tree.File("file");
  const std::string root = tree.Root();
  EXPECT_EQ(kProvider.CanProvideFor(root), 30);
  EXPECT_EQ(kProvider.CanProvideFor("/"), 30);
  const std::string refused[] = {"",
                                 ".",
                                 root + "/",
                                 "//",
                                 "volumes:",
                                 root.substr(1),
                                 root + "/no",
                                 root + "/file",
                                 root + '\0',
                                 root + '\0' + "/x",
                                 "/" + std::string(5000, 'a'),
                                 "/" + std::string(300, 'a')};
  for (const std::string& path : refused) {
    EXPECT_EQ(kProvider.CanProvideFor(path), 0) << path.substr(0, 40);
    EXPECT_THAT(Keys(path), IsEmpty()) << path.substr(0, 40);
    EXPECT_THAT(kProvider.GetContent(path, "file", {"Name"}), IsEmpty()) << path.substr(0, 40);
  }
  EXPECT_THAT(Keys(tree.Folder("empty")), IsEmpty());
}

TEST(DirectoryKeys, CannotEscapeTheFolder) {
  const TempTree tree;
  tree.File("in/a");
  tree.File("b");
  for (const std::string& key :
       {std::string(), std::string("."), std::string(".."), std::string("../b"), std::string("/"),
        std::string("a/"), std::string("a\0b", 3), std::string("missing"), std::string(300, 'a')}) {
    EXPECT_THAT(kProvider.GetContent(tree.Path("in"), key, {"Name"}), IsEmpty()) << key;
  }
  EXPECT_THAT(KeysOf(kProvider.GetContent(tree.Path("in"), "a", {})), ElementsAre("a"));
}

TEST(DirectoryFields, AreExactlyTheRequestedOnes) {
  const TempTree tree;
  tree.File("a.mov", "12345");
  EXPECT_THAT(kProvider.GetContent(tree.Root(), {}, nullptr).at("a.mov"), IsEmpty());
  const FieldNameSet all = kProvider.GetFieldList();
  EXPECT_EQ(all.size(), 23u);
  EXPECT_EQ(kProvider.GetFieldLabelList().size(), 23u);
  FieldNameSet more = all;
  more.insert({"name", "17", "unknown"});
  const FieldValueMap entry = kProvider.GetContent(tree.Root(), more, nullptr).at("a.mov");
  EXPECT_EQ(entry.size(), 23u);
  EXPECT_EQ(entry.at("Name").cast<std::string>(), "a.mov");
  EXPECT_EQ(entry.at("Path").cast<std::string>(), tree.Path("a.mov"));
  EXPECT_EQ(entry.at("02").cast<std::string>(), tree.Path("a.mov"));
  EXPECT_EQ(entry.at("ExtraPath"), any_regular_t());
  EXPECT_EQ(entry.at("06"), any_regular_t(std::string()));  // an unset attribute is an empty text
  EXPECT_EQ(entry.at("26"), any_regular_t(Provider::ByteSize_t(5)));
  EXPECT_EQ(kProvider.GetContent("/", {"Path"}, nullptr).at("etc").at("Path").cast<std::string>(),
            "/etc");
}

TEST(DirectoryListing, OmitsHiddenFilesAndDevices) {
  const TempTree tree;
  tree.File("a.mov");
  tree.File(".hidden");
  tree.Folder("folder");
  tree.Folder(".folder");
  tree.File("caf\xe9.mov");       // Latin-1
  tree.File("\xed\xb3\xa9 odd");  // a surrogate encoded as UTF-8
  tree.File("b\nc");
  fs::create_symlink("missing", tree.Path("dangling"));
  fs::create_symlink("self", tree.Path("self"));
  fs::create_symlink("/dev/null", tree.Path("null"));
  fs::create_symlink("..", tree.Path("folder/up"));
  ASSERT_EQ(mkfifo(tree.Path("fifo").c_str(), 0600), 0);
  const auto listed = ElementsAre("a.mov", "b\nc", "caf\xe9.mov", "dangling", "folder", "null",
                                  "self", "\xed\xb3\xa9 odd");
  EXPECT_THAT(Keys(tree.Root()), listed);
  EXPECT_THAT(Keys(tree.Root(), {"26", "03"}), listed);
  EXPECT_THAT(Keys(tree.Path("folder/up/folder")), ElementsAre("up"));
  for (const std::string name : {"caf\xe9.mov", "\xed\xb3\xa9 odd"}) {
    EXPECT_EQ(Text(tree.Root(), name, "Name"), name);
    EXPECT_EQ(Text(tree.Root(), name, "Path"), tree.Path(name));
  }
  // The call for one entry omits nothing.
  EXPECT_EQ(Text(tree.Root(), ".hidden", "08"), "H");
  EXPECT_EQ(Text(tree.Root(), "fifo", "05"), "Device");
}

TEST(DirectoryFacts, ShowAttributesOfEachKind) {
  const TempTree tree;
  const std::string root = tree.Root();
  tree.File("plain", "x");
  tree.File(".dot", "x");
  tree.Folder("folder");
  chmod(tree.File("read-only", "x").c_str(), 0444);
  chmod(tree.Folder("read-only-folder").c_str(), 0555);
  fs::create_symlink("plain", tree.Path("to-plain"));
  fs::create_symlink("folder", tree.Path("to-folder"));
  fs::create_symlink("/dev/null", tree.Path("to-device"));
  fs::create_symlink("missing", tree.Path("dangling"));
  fs::create_symlink("loop", tree.Path("loop"));
  ASSERT_EQ(mkfifo(tree.Path("fifo").c_str(), 0600), 0);
  EXPECT_EQ(Attributes(root, "plain"), "Normal");
  EXPECT_EQ(Attributes(root, ".dot"), "H");
  EXPECT_EQ(Attributes(root, "folder"), "D");
  EXPECT_EQ(Attributes(root, "read-only"), "R");
  EXPECT_EQ(Attributes(root, "read-only-folder"), "D,R");
  EXPECT_EQ(Attributes(root, "to-plain"), "Reparse Point");
  EXPECT_EQ(Attributes(root, "to-folder"), "D,Reparse Point");
  EXPECT_EQ(Attributes(root, "to-device"), "Reparse Point");
  EXPECT_EQ(Attributes(root, "dangling"), "Reparse Point");
  EXPECT_EQ(Attributes(root, "loop"), "Reparse Point");
  EXPECT_EQ(Attributes(root, "fifo"), "Device");
}

TEST(DirectoryFacts, ShowSizeAndTimesOfLinkTargets) {
  const TempTree tree;
  const std::string big = tree.File("big");
  if (truncate(big.c_str(), 5'000'000'000) != 0) GTEST_SKIP() << "no sparse files here";
  const timespec times[] = {{1'700'000'000, 999'999'999}, {86'399, 1'000'000}};
  ASSERT_EQ(utimensat(AT_FDCWD, big.c_str(), times, 0), 0);
  fs::create_symlink("big", tree.Path("link"));
  fs::create_symlink("gone", tree.Path("dangling"));  // a target of 4 bytes
  tree.Folder("folder/with/more");
  EXPECT_EQ(Attributes(tree.Root(), "big"), "Sparse File");
  for (const char* key : {"big", "link"}) {
    EXPECT_EQ(Size(tree.Root(), key), 5'000'000'000u);
    platform::LocalTimeText text;
    EXPECT_EQ(Text(tree.Root(), key, "20"),
              text.Of(platform::FileTime{1'700'000'000, 999'999'999}));
    EXPECT_EQ(Text(tree.Root(), key, "21"), text.Of(platform::FileTime{86'399, 1'000'000}));
  }
  EXPECT_EQ(Size(tree.Root(), "dangling"), 4u);  // the link's own
  EXPECT_EQ(Size(tree.Root(), "folder"), 0u);
  EXPECT_EQ(Text(tree.Root(), "folder", "18"), "");
}

// Sets the time zone during one test.
class Zone {
 public:
  explicit Zone(const char* name) {
    if (const char* old = std::getenv("TZ")) old_ = old;
    setenv("TZ", name, 1);
    tzset();
  }
  ~Zone() {
    old_.empty() ? unsetenv("TZ") : setenv("TZ", old_.c_str(), 1);
    tzset();
  }
  Zone(const Zone&) = delete;
  Zone& operator=(const Zone&) = delete;

 private:
  std::string old_;
};

TEST(LocalTimeText, FormatsLocalTimeWithMilliseconds) {
  // Summer time ends on 2023-10-29 at 01:00 UTC.
  const Zone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  platform::LocalTimeText text;
  const auto of = [&](std::int64_t seconds, std::uint32_t nanoseconds = 0) {
    return text.Of(platform::FileTime{seconds, nanoseconds});
  };
  EXPECT_EQ(of(0), "1970-01-01 01:00:00.000");
  EXPECT_EQ(of(-1, 999'999'999), "1970-01-01 00:59:59.999");
  EXPECT_EQ(of(1'698'541'199, 1'999'999), "2023-10-29 02:59:59.001");
  EXPECT_EQ(of(1'698'541'200), "2023-10-29 02:00:00.000");
  EXPECT_EQ(of(1'698'537'600), "2023-10-29 02:00:00.000");
  EXPECT_EQ(of(951'782'400), "2000-02-29 01:00:00.000");
  EXPECT_EQ(of(5'000'000'000), "2128-06-11 10:53:20.000");
  EXPECT_EQ(of(INT64_MAX), "");
  EXPECT_EQ(of(INT64_MIN), "");
  EXPECT_EQ(of(300'000'000'000), "");  // a year of five digits
  EXPECT_EQ(text.Of(std::nullopt), "");
}

TEST(LocalTimeText, MatchesLocaltimeThroughoutAYear) {
  const Zone zone("NST3:30NDT,M3.2.0/0:01,M11.1.0/0:01");  // changes just after midnight
  platform::LocalTimeText text;
  for (std::time_t time = 1'600'000'000; time < 1'632'000'000; time += 7'919) {
    std::tm local;
    localtime_r(&time, &local);
    char expected[40];
    std::strftime(expected, sizeof expected, "%Y-%m-%d %H:%M:%S.000", &local);
    ASSERT_EQ(text.Of(platform::FileTime{time, 0}), expected);
  }
}

TEST(MXFSidecar, AppendsToTheExtensionOfMXFFilesOnly) {
  const TempTree tree;
  tree.File("clip.MXF");
  tree.File("clip.MXF.xmp");
  tree.File("bare.mxf");
  tree.File("bare.xmp");
  tree.File("film.mov");
  tree.File("film.mov.xmp");
  EXPECT_EQ(GetMXFSidecarPath(tree.Path("clip.MXF")), tree.Path("clip.MXF.xmp"));
  EXPECT_EQ(GetMXFSidecarPath(tree.Path("bare.mxf")), "");
  EXPECT_EQ(GetMXFSidecarPath(tree.Path("film.mov")), "");
  EXPECT_EQ(GetMXFSidecarPath("clip.mxf"), "");
  EXPECT_EQ(Text(tree.Root(), "clip.MXF", "ExtraPath"), tree.Path("clip.MXF.xmp"));
  const auto bare = kProvider.GetContent(tree.Root(), "bare.mxf", {"ExtraPath"});
  EXPECT_EQ(bare.at("bare.mxf").at("ExtraPath"), any_regular_t());
  const auto named = kProvider.GetContent(tree.Root(), "clip.MXF", {"Name"});
  EXPECT_FALSE(named.at("clip.MXF").contains("ExtraPath"));
  tree.File("gone.mxf.xmp", "x");
  EXPECT_TRUE(kProvider.GetContent(tree.Root(), "gone.mxf", {"ExtraPath"}).empty());
  // Only the call for one entry fills it.
  const auto all = kProvider.GetContent(tree.Root(), {"ExtraPath"}, nullptr);
  EXPECT_EQ(all.at("clip.MXF").at("ExtraPath"), any_regular_t());
}

TEST(DirectoryListing, IsEmptyForUnreadableFolders) {
  const TempTree tree;
  tree.File("locked/a");
  chmod(tree.Path("locked").c_str(), 0);
  if (geteuid() != 0) {
    EXPECT_THAT(Keys(tree.Path("locked")), IsEmpty());
    EXPECT_THAT(kProvider.GetContent(tree.Path("locked"), "a", {"Name"}), IsEmpty());
  } else {
    EXPECT_THAT(Keys(tree.Path("locked")), ElementsAre("a"));  // root can read every folder
  }
  chmod(tree.Path("locked").c_str(), 0700);

  // Removed between opening and reading.
  const auto view = platform::OpenFolder(tree.Folder("gone"));
  ASSERT_NE(view, nullptr);
  fs::remove(tree.Path("gone"));
  EXPECT_THAT(ListOneEntry(*view, tree.Path("gone"), "a", {"Name"}), IsEmpty());
  EXPECT_THAT(Keys(tree.Path("gone")), IsEmpty());
}

TEST(DirectoryListing, IsEmptyAfterAbort) {
  const TempTree tree;
  tree.File("a");
  ProviderContentRequest* request = new ProviderContentRequest("station", {}, tree.Root(), {});
  const auto reference = request->GetRef();
  request->Abort();
  EXPECT_THAT(kProvider.GetContent(tree.Root(), {"Name"}, request), IsEmpty());
}

// A folder on a file system that stores attributes; the test sets them.
class FatFolder final : public platform::FolderView {
 public:
  struct Item {
    std::uint32_t attributes;
    std::string shortName;
    platform::FactsState state = platform::FactsState::kKnown;
  };

  explicit FatFolder(std::map<std::string, Item> items) : items_(std::move(items)) {
    for (const auto& [name, item] : items_) names_.push_back({name, platform::ItemType::kRegular});
  }
  const std::vector<platform::FolderName>& Names() const override { return names_; }
  platform::FactsState ReadFacts(const platform::FolderName& item, bool withShortName,
                                 platform::FileFacts& facts) const override {
    const Item& found = items_.at(std::string(item.name));
    facts = platform::FileFacts();
    facts.attributes = found.attributes;
    facts.size = 7;
    if (withShortName) facts.shortName = found.shortName;
    return found.state;
  }
  bool StoresAttributes() const override { return true; }

 private:
  std::map<std::string, Item> items_;
  std::vector<platform::FolderName> names_;
};

TEST(DirectoryListing, OmitsFilesWithStoredHiddenOrSystemAttribute) {
  using namespace platform::attribute;
  const FatFolder folder({{"missing.mov", {0, "", platform::FactsState::kMissing}},
                          {"hidden.mov", {kHidden, ""}},
                          {"refused.mov", {kArchive, "", platform::FactsState::kRefused}},
                          {"system.mov", {kSystem, ""}},
                          {"what a name.mov", {kArchive | kOffline | kTemporary, "WHATAN~1.MOV"}}});
  EXPECT_THAT(KeysOf(ListDirectory(folder, "/c", {"Name"}, nullptr)),
              ElementsAre("refused.mov", "what a name.mov"));
  const auto content =
      ListDirectory(folder, "/c", {"03", "11", "16", "10", "18", "26", "19"}, nullptr);
  const auto& entry = content.at("what a name.mov");
  EXPECT_EQ(entry.at("03").cast<std::string>(), "A");
  EXPECT_EQ(entry.at("11").cast<std::string>(), "Offline");
  EXPECT_EQ(entry.at("16").cast<std::string>(), "Temporary");
  EXPECT_EQ(entry.at("10").cast<std::string>(), "");
  EXPECT_EQ(entry.at("18").cast<std::string>(), "WHATAN~1.MOV");
  EXPECT_EQ(entry.at("19").cast<std::string>(), "");
  // The file exists, but its facts can't be read.
  const auto& refused = content.at("refused.mov");
  EXPECT_EQ(refused.at("03").cast<std::string>(), "");
  EXPECT_EQ(refused.at("26"), any_regular_t(Provider::ByteSize_t(0)));
  // The call for one entry returns hidden files.
  EXPECT_EQ(ListOneEntry(folder, "/c", "hidden.mov", {"08"})
                .at("hidden.mov")
                .at("08")
                .cast<std::string>(),
            "H");
}

TEST(DirectoryThumbnail, IsSquareWithinBothLimits) {
  const TempTree tree;
  tree.File("a.mov");
  tree.Folder("folder");
  for (const char* key : {"a.mov", "folder", "missing.mov"}) {
    Bitplate** plate = kProvider.GetThumbnail(tree.Root(), key, 300, 100, nullptr);
    ASSERT_NE(plate, nullptr) << key;
    EXPECT_EQ(bitplateGetWidth(plate), 100);
    EXPECT_EQ(bitplateGetHeight(plate), 100);
    bitplateDispose(plate);
  }
  EXPECT_EQ(kProvider.GetThumbnail(tree.Root(), "a.mov", 0, 100, nullptr), nullptr);
  EXPECT_EQ(kProvider.GetThumbnail(tree.Root(), "a.mov", -1, -1, nullptr), nullptr);
  EXPECT_EQ(kProvider.GetMaximumThumbnailHeight(17), 17);
}

TEST(FileSystemProviders, AreRegisteredFirst) {
  const TempTree tree;
  ProviderHost::Initialize();
  const auto& all = ProviderHost::GetAllProviders();
  ASSERT_GE(all.size(), 2u);
  EXPECT_EQ(all[0]->GetIdentification(), "com.halvane.Merisk.WinProviderDirectory");
  EXPECT_EQ(all[1]->GetIdentification(), "com.halvane.Merisk.WinProviderVolume");
  EXPECT_TRUE(all[0]->ShouldCheckFilter());
  EXPECT_FALSE(all[1]->IsFileBased());
  const auto folder = ProviderHost::GetProviderList(tree.Root());
  ASSERT_EQ(folder.size(), 1u);
  EXPECT_EQ(folder[0], all[0]);
  const auto volumes = ProviderHost::GetProviderList("volumes:");
  ASSERT_EQ(volumes.size(), 1u);
  EXPECT_EQ(volumes[0], all[1]);
  EXPECT_THAT(ProviderHost::GetProviderList("networkvolumes:"), IsEmpty());
  ProviderHost::Shutdown();
}

}  // namespace
