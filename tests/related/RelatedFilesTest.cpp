// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>

#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/metadata/RelatedFiles.h"
#include "support/AllCards.h"
#include "support/FakeProvider.h"
#include "support/Values.h"

namespace {

using namespace Sorvik;
using Hestra::MakeStdString;
using Hestra::MakeString;
using sorvik_test::TempTree;
using sorvik_test::TextOf;

constexpr char kDirectory[] = "com.halvane.Merisk.WinProviderDirectory";

struct Owner {
  FieldValueMap fields;
  std::string key, folder, provider = "as passed";
};

Owner OwnerOf(const std::string& path, bool withExtraFiles = true) {
  Owner owner;
  UTF16String key, folder, provider = u"as passed";
  owner.fields = withExtraFiles
                     ? GetRelatedFiles(MakeString(path), key, folder, provider)
                     : GetRelatedFilesWithoutExtraFiles(MakeString(path), key, folder, provider);
  owner.key = MakeStdString(key);
  owner.folder = MakeStdString(folder);
  owner.provider = MakeStdString(provider);
  return owner;
}

// The files named in an entry's fields.
std::vector<std::string> FilesOf(const FieldValueMap& fields) {
  std::vector<std::string> files = sorvik_test::ExtraPathsOf(fields, "\n");
  files.push_back(TextOf(fields, kPathField));
  std::erase_if(files,
                [](const std::string& file) { return !std::filesystem::is_regular_file(file); });
  return files;
}

class RelatedFiles : public testing::Test {
 protected:
  void SetUp() override { ProviderHost::Initialize(); }
  void TearDown() override { ProviderHost::Shutdown(); }

  const TempTree tree;
};

TEST_F(RelatedFiles, FindTheEntryOfEveryFileOfEveryCard) {
  for (const sorvik_test::MadeCard& card : sorvik_test::MakeAllCards(tree)) {
    const auto providers = ProviderHost::GetProviderList(card.root);
    ASSERT_FALSE(providers.empty()) << card.root;
    ASSERT_EQ(providers.front()->GetIdentification(), card.providerId);
    const ContentMap content = providers.front()->GetContent(
        card.root, {kNameField, kPathField, kExtraPathField}, nullptr);
    ASSERT_FALSE(content.empty()) << card.root;
    for (const auto& [key, fields] : content) {
      for (const std::string& file : FilesOf(fields)) {
        const auto relative = std::filesystem::relative(file, card.root);
        if (std::distance(relative.begin(), relative.end()) > 4)
          continue;  // more than four levels up
        const Owner owner = OwnerOf(file);
        EXPECT_EQ(owner.provider, card.providerId) << file;
        EXPECT_EQ(owner.folder, card.root) << file;
        EXPECT_EQ(owner.fields, content.at(owner.key)) << file;
        const auto files = FilesOf(owner.fields);
        EXPECT_NE(std::find(files.begin(), files.end(), file), files.end()) << file;
        if (file == TextOf(fields, kPathField)) {
          EXPECT_EQ(owner.key, key);
          EXPECT_EQ(OwnerOf(file, false).key, key);
        }
      }
    }
  }
}

TEST_F(RelatedFiles, MatchCaseInsensitiveAndNormalised) {
  tree.File("VIDEO/HVR/00_0012_2014-01-31_101530.M2T");
  const Owner owner = OwnerOf(tree.Path("VIDEO/./HVR//x/../00_0012_2014-01-31_101530.m2t"));
  EXPECT_EQ(owner.key, "00_0012_2014-01-31_101530.M2T");
  EXPECT_EQ(owner.folder, tree.Root());
}

TEST_F(RelatedFiles, DistinguishSidecarsFromClips) {
  tree.File("VIDEO/HVR/00_0012_2014-01-31_101530.M2T");
  const std::string side = tree.File("VIDEO/HVR/00_0012_2014-01-31_101530.IDX");
  EXPECT_EQ(OwnerOf(side).key, "00_0012_2014-01-31_101530.M2T");
  const Owner plain = OwnerOf(side, false);
  EXPECT_EQ(plain.key, side);
  EXPECT_EQ(plain.folder, tree.Path("VIDEO/HVR"));
  EXPECT_EQ(plain.provider, "as passed");
  EXPECT_EQ(TextOf(plain.fields, kNameField), "00_0012_2014-01-31_101530.IDX");
  EXPECT_FALSE(plain.fields.contains(kExtraPathField));
}

TEST_F(RelatedFiles, AnswerPlainFilesLikeADirectory) {
  const std::string movie = tree.File("clip.mxf");
  Owner owner = OwnerOf(movie);
  EXPECT_EQ(owner.provider, kDirectory);
  EXPECT_EQ(owner.key, movie);
  EXPECT_EQ(owner.folder, tree.Root());
  EXPECT_EQ(owner.fields.at(kExtraPathField), any_regular_t());
  const std::string side = tree.File("clip.mxf.xmp");
  owner = OwnerOf(movie);
  EXPECT_EQ(TextOf(owner.fields, kExtraPathField), side);
  // A missing file has no entry with a sidecar.
  owner = OwnerOf(tree.Path("missing.mxf"));
  EXPECT_FALSE(owner.fields.contains(kExtraPathField));
  EXPECT_EQ(TextOf(owner.fields, kPathField), tree.Path("missing.mxf"));
  // In the root directory, and with the spelling of the caller.
  owner = OwnerOf("/no-such-file");
  EXPECT_EQ(owner.key, "/no-such-file");
  EXPECT_EQ(owner.folder, "/");
  EXPECT_EQ(OwnerOf("/no-such-folder/a/b").folder, "/no-such-folder/a");
}

TEST_F(RelatedFiles, SearchFourParentsWithoutListingPlainFolders) {
  const auto answers = std::make_shared<sorvik_test::FakeAnswers>();
  const std::string root = tree.Path("top");
  const std::string near = tree.File("top/a/b/c/near.bin");
  const std::string far = tree.File("top/a/b/c/d/far.bin");
  int listings = 0;
  // Below the 30 of a plain folder, at a distance that is searched.
  const std::string weak = tree.Path("top/a");
  answers->score = [&](const std::string& path) {
    return path == root ? 31 : path == weak ? 29 : 0;
  };
  answers->listing = [&](ProviderRequest*) {
    ++listings;
    return ContentMap{{"near", {{kPathField, any_regular_t(near)}}},
                      {"far", {{kPathField, any_regular_t(far)}}}};
  };
  ProviderHost::RegisterProvider(
      std::make_unique<AsyncProviderWrapper>(new sorvik_test::FakeProvider(answers)));
  EXPECT_EQ(OwnerOf(near).key, "near");
  EXPECT_EQ(listings, 1);
  EXPECT_EQ(OwnerOf(far).key, far);
  EXPECT_EQ(listings, 1);
}

TEST_F(RelatedFiles, PropagateExceptions) {
  const auto answers = std::make_shared<sorvik_test::FakeAnswers>();
  const std::string file = tree.File("f");
  answers->score = [&](const std::string& path) { return path == tree.Root() ? 100 : 0; };
  answers->listing = [](ProviderRequest*) -> ContentMap { throw std::runtime_error("broken"); };
  ProviderHost::RegisterProvider(
      std::make_unique<AsyncProviderWrapper>(new sorvik_test::FakeProvider(answers)));
  EXPECT_THROW(OwnerOf(file), std::runtime_error);
}

}  // namespace
