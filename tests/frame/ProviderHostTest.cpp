// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <stdexcept>

#include "SorvikProvider/frame/ProviderHost.h"
#include "support/FakeProvider.h"

namespace {

using namespace Sorvik;
using sorvik_test::FakeAnswers;
using sorvik_test::FakeProvider;

std::shared_ptr<FakeAnswers> Scoring(const std::string& id, int score) {
  auto answers = std::make_shared<FakeAnswers>();
  answers->identification = id;
  answers->score = [score](const std::string& path) {
    return path.starts_with("test:") ? score : 0;
  };
  return answers;
}

void Register(const std::shared_ptr<FakeAnswers>& answers) {
  ProviderHost::RegisterProvider(std::make_unique<AsyncProviderWrapper>(new FakeProvider(answers)));
}

std::vector<std::string> IdsOf(const std::vector<ProviderWrapper*>& list) {
  std::vector<std::string> ids;
  for (const ProviderWrapper* wrapper : list) ids.push_back(wrapper->GetIdentification());
  return ids;
}

class Host : public testing::Test {
 protected:
  void SetUp() override { ProviderHost::Initialize(); }
  void TearDown() override { ProviderHost::Shutdown(); }
};

TEST_F(Host, OrdersByScoreAndThenByRegistration) {
  const std::vector<std::shared_ptr<FakeAnswers>> all{
      Scoring("plain", 30), Scoring("first", 100),   Scoring("none", 0),
      Scoring("below", -5), Scoring("doubtful", 40), Scoring("second", 100)};
  for (const auto& answers : all) Register(answers);
  ProviderHost::RegisterProvider(nullptr);
  EXPECT_EQ(IdsOf(ProviderHost::GetProviderList("test:x")),
            (std::vector<std::string>{"first", "second", "doubtful", "plain"}));
  EXPECT_TRUE(ProviderHost::HasProvider("test:x"));
  EXPECT_FALSE(ProviderHost::HasProvider("networkvolumes:"));
  EXPECT_TRUE(ProviderHost::GetProviderList("networkvolumes:").empty());
}

TEST_F(Host, CallsNoProviderForEmptyPath) {
  const auto answers = Scoring("eager", 100);
  answers->score = [](const std::string&) { return 100; };
  Register(answers);
  EXPECT_TRUE(ProviderHost::GetProviderList("").empty());
  EXPECT_EQ(answers->calls, 0);
}

TEST_F(Host, PropagatesExceptionsFromListsButNotFromHasProvider) {
  const auto failing = Scoring("failing", 100);
  failing->score = [](const std::string& path) -> int {
    if (path.starts_with("test:")) throw std::runtime_error("score");
    return 0;
  };
  Register(failing);
  Register(Scoring("second", 100));
  EXPECT_THROW(ProviderHost::GetProviderList("test:x"), std::runtime_error);
  EXPECT_FALSE(ProviderHost::HasProvider("test:x"));
}

TEST(HostLifetime, CountsUsesAndRestarts) {
  EXPECT_TRUE(ProviderHost::GetProviderList("/").empty());
  EXPECT_FALSE(ProviderHost::GetProviderExecutor());
  ProviderHost::Initialize();
  ProviderHost::Initialize();
  const std::size_t own = ProviderHost::GetAllProviders().size();
  const auto answers = Scoring("host's own", 100);
  Register(answers);
  ProviderHost::Shutdown();
  EXPECT_TRUE(ProviderHost::HasProvider("test:x"));
  EXPECT_TRUE(ProviderHost::GetProviderExecutor());
  ProviderHost::Shutdown();
  EXPECT_TRUE(answers->destroyed);
  EXPECT_TRUE(ProviderHost::GetAllProviders().empty());
  EXPECT_FALSE(ProviderHost::GetProviderExecutor());
  ProviderHost::Initialize();
  EXPECT_EQ(ProviderHost::GetAllProviders().size(), own);
  ProviderHost::Shutdown();
}

TEST(HostLifetime, UnbalancedShutdownCancelsNextInitialize) {
  ProviderHost::Shutdown();
  EXPECT_TRUE(ProviderHost::GetAllProviders().empty());
  ProviderHost::Initialize();  // the count wraps to 0
  EXPECT_FALSE(ProviderHost::GetProviderExecutor());
  ProviderHost::Initialize();
  EXPECT_TRUE(ProviderHost::GetProviderExecutor());
  ProviderHost::Shutdown();
  EXPECT_FALSE(ProviderHost::GetProviderExecutor());
}

TEST(Wrapper, ForwardsDirectCallsExceptHooks) {
  const auto answers = Scoring("wrapped", 7);
  const AsyncProviderWrapper wrapper(new FakeProvider(answers));
  EXPECT_EQ(wrapper.CanProvideFor("test:"), 7);
  EXPECT_EQ(wrapper.GetIdentification(), "wrapped");
  EXPECT_EQ(wrapper.GetUIString(), "Fake");
  EXPECT_EQ(wrapper.GetMaximumThumbnailHeight(10), 5);
  EXPECT_EQ(wrapper.GetFieldList(), FieldNameSet{"Name"});
  EXPECT_EQ(wrapper.GetDefaultFieldList(), FieldNameList{"Name"});
  EXPECT_EQ(wrapper.GetFieldLabelList().at("Name"), "$$$/T=Name");
  EXPECT_TRUE(wrapper.ShouldCheckFilter());
  EXPECT_TRUE(wrapper.IsFileBased());
  std::string command = "untouched";
  EXPECT_TRUE(wrapper.GetHasPossibleDirectoryContent("x"));
  EXPECT_FALSE(wrapper.DoesPathSupportOpenCommand("x", command));
  EXPECT_EQ(command, "untouched");
  EXPECT_FALSE(wrapper.ProcessOpenCommand("x"));
}

TEST(Wrapper, CatchesExceptionsOnlyForSingleEntry) {
  const auto answers = std::make_shared<FakeAnswers>();
  answers->entry = []() -> ContentMap { throw 1; };
  answers->listing = [](ProviderRequest*) -> ContentMap { throw std::bad_alloc(); };
  answers->thumbnail = [](ProviderRequest*) -> Bitplate** { throw std::runtime_error("x"); };
  const AsyncProviderWrapper wrapper(new FakeProvider(answers));
  EXPECT_TRUE(wrapper.GetContent("p", "k", {}).empty());
  EXPECT_THROW(wrapper.GetContent("p", {}, nullptr), std::bad_alloc);
  EXPECT_THROW(wrapper.GetThumbnail("p", "k", 1, 1, nullptr), std::runtime_error);
  const AsyncProviderWrapper ofNull(nullptr);  // may only be destroyed
}

}  // namespace
