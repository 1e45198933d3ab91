// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdlib>

#include "SorvikProvider/foundation/Environment.h"
#include "SorvikProvider/foundation/Localizer.h"
#include "foundation/tarnwick/Catalogue.h"
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
  Put32(bytes, 0);           // its place
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

TEST_F(Localized, FindsTextsByLanguageAndFallsBackToDefaults) {
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

TEST_F(Localized, TakesTheLanguageFromTheEnvironment) {
  const char* names[] = {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"};
  for (const char* name : names) unsetenv(name);
  EXPECT_EQ(Hestra::GetLanguageString(), u"x-default");
  setenv("LANG", "fr_FR.UTF-8", 1);
  EXPECT_EQ(Hestra::GetLanguageString(), u"fr-FR");
  setenv("LC_ALL", "C.UTF-8", 1);
  EXPECT_EQ(Hestra::GetLanguageString(), u"x-default");
  setenv("LANGUAGE", "de_DE:de", 1);
  EXPECT_EQ(Hestra::GetLanguageString(), u"de-DE");
  for (const char* name : names) unsetenv(name);
}

TEST(Catalogues, SurviveDamageAtEveryByte) {
  const std::string whole = Catalogue("k\x04text", "Text");
  using tarnwick::config::Catalogue;
  for (std::size_t length = 0; length < whole.size() - 1; ++length) {
    const auto bytes = std::as_bytes(std::span(whole.data(), length));
    EXPECT_TRUE(Catalogue::FromBytes(bytes).Empty()) << length;
  }
  for (std::size_t i = 0; i < 44; ++i) {
    std::string damaged = whole;
    damaged[i] = '\xFF';
    Catalogue::FromBytes(std::as_bytes(std::span(damaged.data(), damaged.size())));
  }
  EXPECT_EQ(
      Catalogue::FromBytes(std::as_bytes(std::span(whole.data(), whole.size()))).Find("k", "text"),
      "Text");
}

TEST(Surroundings, MayBeSetByAHost) {
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
