// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdlib>
#include <latch>
#include <thread>

#include "SorvikProvider/foundation/Environment.h"
#include "SorvikProvider/foundation/Localizer.h"
#include "foundation/tarnwick/Catalogue.h"
#include "support/RealMount.h"
#include "support/TempTree.h"

namespace {

using tarnwick::config::Localizer;

void Put32(std::string& bytes, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift);
}

// A compiled catalogue with one entry.
std::string Catalogue(const std::string& original, const std::string& translation) {
  std::string bytes;
  Put32(bytes, 0x950412de);  // magic
  Put32(bytes, 0);           // revision
  Put32(bytes, 1);           // count
  Put32(bytes, 28);          // table of originals
  Put32(bytes, 36);          // table of translations
  Put32(bytes, 0);           // size of the hash table
  Put32(bytes, 0);           // its offset
  Put32(bytes, static_cast<std::uint32_t>(original.size()));
  Put32(bytes, 44);
  Put32(bytes, static_cast<std::uint32_t>(translation.size()));
  Put32(bytes, static_cast<std::uint32_t>(44 + original.size() + 1));
  return bytes + original + '\0' + translation + '\0';
}

class Localized : public testing::Test {
 protected:
  void TearDown() override {
    Localizer::Get().SetLanguage("");
    Localizer::Get().SetCatalogueFolder("");
  }
};

TEST_F(Localized, FallsBackToDefaultText) {
  const sorvik_test::TempTree tree;
  tree.File("de/sorvik.mo", Catalogue("$$$/A/Yes\x04Yes", "Ja"));
  Localizer& localizer = Localizer::Get();
  localizer.SetCatalogueFolder(tree.Root());
  localizer.SetLanguage("de-AT");
  EXPECT_EQ(localizer.GetString("$$$/A/Yes=Yes"), u"Ja");
  EXPECT_EQ(localizer.GetUTF8String("$$$/B/Yes=Yes"), "Yes");
  EXPECT_EQ(localizer.GetUTF8String("$$$/A/No=a=b "), "a=b ");
  EXPECT_EQ(localizer.GetUTF8String("plain"), "plain");
  localizer.SetLanguage("../de");
  EXPECT_EQ(localizer.GetUTF8String("$$$/A/Yes=Yes"), "Yes");
  localizer.SetLanguage("fr");
  EXPECT_EQ(localizer.GetUTF8String("$$$/A/Yes=Yes"), "Yes");
}

TEST_F(Localized, TriesEachLanguageOfList) {
  const sorvik_test::TempTree tree;
  tree.File("de/sorvik.mo", Catalogue("$$$/A/Yes\x04Yes", "Ja"));
  Localizer& localizer = Localizer::Get();
  localizer.SetCatalogueFolder(tree.Root());
  const auto text = [&localizer](const char* list) {
    setenv("LANGUAGE", list, 1);
    localizer.SetLanguage("");
    return localizer.GetUTF8String("$$$/A/Yes=Yes");
  };
  EXPECT_EQ(text("xx:de"), "Ja");
  EXPECT_EQ(text(":xx:de_AT"), "Ja");
  EXPECT_EQ(text("en:de"), "Yes") << "the default texts are English";
  EXPECT_EQ(text("xx"), "Yes");
  unsetenv("LANGUAGE");
}

TEST_F(Localized, ReadsLanguageFromEnvironment) {
  const char* names[] = {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"};
  for (const char* name : names) unsetenv(name);
  const auto language = [] {
    Localizer::Get().SetLanguage("");
    return Hestra::GetLanguageString();
  };
  EXPECT_EQ(language(), u"x-default");
  setenv("LANG", "fr_FR.UTF-8", 1);
  EXPECT_EQ(Hestra::GetLanguageString(), u"x-default");  // not read before SetLanguage
  EXPECT_EQ(language(), u"fr-FR");
  setenv("LC_ALL", "C.UTF-8", 1);
  EXPECT_EQ(language(), u"x-default");
  setenv("LANGUAGE", "de_DE:de", 1);
  EXPECT_EQ(language(), u"de-DE");
  setenv("LANGUAGE", ":de", 1);
  EXPECT_EQ(language(), u"de") << "an empty item";
  for (const char* name : names) unsetenv(name);
}

TEST_F(Localized, UsesCataloguesOfNewResourcesDir) {
  namespace commondirs = tarnwick::filesupport::commondirs;
  const sorvik_test::TempTree tree;
  tree.File("locale/de/sorvik.mo", Catalogue("$$$/A/Yes\x04Yes", "Ja"));
  const auto before = commondirs::ResourcesDir();
  Localizer::Get().SetLanguage("de");
  commondirs::SetResourcesDir(Hestra::MakeString(tree.Root()));
  EXPECT_EQ(Localizer::Get().GetString("$$$/A/Yes=Yes"), u"Ja");
  commondirs::SetResourcesDir(before);
  EXPECT_EQ(Localizer::Get().GetString("$$$/A/Yes=Yes"), u"Yes");
}

TEST_F(Localized, SwitchesLanguageWhileOtherThreadsRead) {
  const sorvik_test::TempTree tree;
  tree.File("de/sorvik.mo", Catalogue("$$$/A/Yes\x04Yes", "Ja"));
  Localizer::Get().SetCatalogueFolder(tree.Root());
  std::vector<std::thread> readers;
  for (int reader = 0; reader < 3; ++reader) {
    readers.emplace_back([] {
      for (int i = 0; i < 20'000; ++i) {
        const std::string text = Localizer::Get().GetUTF8String("$$$/A/Yes=Yes");
        ASSERT_TRUE(text == "Ja" || text == "Yes") << text;
      }
    });
  }
  for (int i = 0; i < 200; ++i) Localizer::Get().SetLanguage(i % 2 == 0 ? "de" : "fr");
  for (std::thread& reader : readers) reader.join();
}

TEST_F(Localized, ReadsTextsWhileACatalogueFolderBlocks) {
  const sorvik_test::TempTree tree;
  auto share = sorvik_test::RealMount::DeadShare(tree.Folder("nas"));
  if (!share) GTEST_SKIP() << "no mount of a share can be made here";
  Localizer::Get().SetLanguage("de");
  std::latch started(1);
  std::thread setter([&] {
    started.count_down();
    Localizer::Get().SetCatalogueFolder(tree.Path("nas"));
  });
  started.wait();
  EXPECT_TRUE(share.DoesNotBlock([] {
    for (int i = 0; i < 20'000; ++i) Localizer::Get().GetUTF8String("$$$/A/Yes=Yes");
  }));
  share.End();
  setter.join();
}

TEST(Catalogue, SurvivesTruncationAndCorruption) {
  const std::string complete = Catalogue("k\x04text", "Text");
  using tarnwick::config::Catalogue;
  for (std::size_t length = 0; length < complete.size() - 1; ++length) {
    const auto bytes = std::as_bytes(std::span(complete.data(), length));
    EXPECT_TRUE(Catalogue::FromBytes(bytes).Empty()) << length;
  }
  for (std::size_t i = 0; i < 44; ++i) {
    std::string damaged = complete;
    damaged[i] = '\xFF';
    Catalogue::FromBytes(std::as_bytes(std::span(damaged.data(), damaged.size())));
  }
  const auto bytes = std::as_bytes(std::span(complete.data(), complete.size()));
  EXPECT_EQ(Catalogue::FromBytes(bytes).Find("k", "text"), "Text");
}

TEST(Environment, KeepsSettingsOfHost) {
  using namespace Fenwold::ImportableFileTypeUtils;
  std::set<Hestra::UTF16String> extensions;
  GetImportableFileExtensions(kVideoFileTypes, extensions);
  EXPECT_TRUE(extensions.contains(u"DV"));
  const auto usual = extensions;
  SetImportableFileExtensions(kVideoFileTypes, {u"MOV"});
  GetImportableFileExtensions(kVideoFileTypes, extensions);
  EXPECT_EQ(extensions, std::set<Hestra::UTF16String>{u"MOV"});
  SetImportableFileExtensions(kVideoFileTypes, usual);
  EXPECT_TRUE(Hestra::DirectoryRegistry::FindDirectory("document.templates")
                  .ends_with(u"/resources/templates/"));
  EXPECT_EQ(Hestra::DirectoryRegistry::FindDirectory("unknown"), u"");
  Hestra::DirectoryRegistry::RegisterDirectory("mine", u"/a/b");
  EXPECT_EQ(Hestra::DirectoryRegistry::FindDirectory("mine"), u"/a/b/");
}

}  // namespace
