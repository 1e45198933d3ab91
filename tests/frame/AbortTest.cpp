// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/frame/ProviderMessages.h"
#include "support/FakeProvider.h"

namespace {

using namespace Sorvik;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using sorvik_test::FakeAnswers;
using sorvik_test::FakeProvider;
using sorvik_test::Inbox;
using sorvik_test::Turnstile;

constexpr std::size_t kMaxReplaced = 64;
const std::size_t kWidth = std::clamp(4 * std::thread::hardware_concurrency(), 4u, 16u);

template <class Condition>
bool Eventually(Condition condition) {
  const auto end = Clock::now() + 10s;
  while (!condition() && Clock::now() < end) std::this_thread::sleep_for(1ms);
  return condition();
}

// The provider of "test:" waits in every call, as for a share that doesn't answer. The provider of
// "quick:" returns.
class Aborts : public testing::Test {
 protected:
  void SetUp() override { Start(); }
  void TearDown() override {
    turnstile->Open();
    ProviderHost::Shutdown();
    ProviderHost::SetShutdownTimeout(-1ms);
    while (Hestra::StationUtils::Dispatch() > 0) {
    }
  }

  void Start() {
    ProviderHost::Initialize();
    stuck = std::make_shared<FakeAnswers>();
    // The providers may outlive the test.
    stuck->listing = [turnstile = turnstile](ProviderRequest*) {
      turnstile->ArriveAndWait();
      return ContentMap{{"late", {}}};
    };
    stuck->thumbnail = [turnstile = turnstile](ProviderRequest*) {
      turnstile->ArriveAndWait();
      return bitplateNew({0, 0, 2, 2});  // the address sanitizer reports a leak
    };
    stuck->score = [turnstile = turnstile](const std::string& path) {
      if (path == "test:stuck") turnstile->ArriveAndWait();
      return path.starts_with("test:") ? 100 : 0;
    };
    const auto answers = std::make_shared<FakeAnswers>();
    stuckWrapper = Register(stuck);
    quickWrapper = Register(answers);
  }

  static const ProviderWrapper* Register(const std::shared_ptr<FakeAnswers>& answers) {
    auto wrapper = std::make_unique<AsyncProviderWrapper>(new FakeProvider(answers));
    const ProviderWrapper* const registered = wrapper.get();
    ProviderHost::RegisterProvider(std::move(wrapper));
    return registered;
  }

  // Sends requests that get stuck, and aborts them, until `total` workers are stalled.
  void StallWorkers(std::size_t total) {
    Inbox<GetContentMessage> inbox("stall");
    for (std::size_t stalled = 0; stalled < total;) {
      const std::size_t count = std::min(kWidth, total - stalled);
      std::vector<Hestra::InterfaceRef<ProviderContentRequest, Hestra::IThreadedQueueRequest>> sent;
      while (sent.size() < count) {
        sent.push_back(stuckWrapper->RequestContent("test:p", {}, "stall"));
      }
      stalled += count;
      ASSERT_TRUE(Eventually([&] { return turnstile->Arrived() == stalled; }));
      for (const auto& request : sent) request->Abort();
      ASSERT_TRUE(Eventually([&] { return ProviderHost::GetStalledWorkerCount() == stalled; }));
    }
    ASSERT_TRUE(inbox.WaitFor(total));
  }

  std::shared_ptr<Turnstile> turnstile = std::make_shared<Turnstile>();
  std::shared_ptr<FakeAnswers> stuck;
  const ProviderWrapper* stuckWrapper = nullptr;
  const ProviderWrapper* quickWrapper = nullptr;
};

TEST_F(Aborts, AnswerStuckRequestsOfEachKindOnce) {
  Inbox<GetContentMessage> content("content");
  Inbox<GetThumbnailMessage> picture("picture");
  Inbox<GetProviderListMessage> list("list");
  Inbox<GetDefaultContentMessage> defaults("defaults");
  const auto a = stuckWrapper->RequestContent("test:p", {"Name"}, "content");
  const auto b = stuckWrapper->RequestThumbnail("test:p", "k", 8, 8, "picture");
  const auto c = ProviderHost::RequestProviderList("test:stuck", "list");
  const auto d = ProviderHost::RequestDefaultProviderContent(
      ProviderDefaultContentRequest::DataRef(new DefaultContentRequestData("test:p", "")),
      "defaults");
  ASSERT_TRUE(Eventually([&] { return turnstile->Arrived() == 4; }));
  for (int twice = 0; twice < 2; ++twice) {
    a->Abort();
    b->Abort();
    c->Abort();
    d->Abort();
  }
  ASSERT_TRUE(content.WaitFor(1) && picture.WaitFor(1) && list.WaitFor(1) && defaults.WaitFor(1));
  EXPECT_TRUE(Eventually([] { return ProviderHost::GetStalledWorkerCount() == 4; }));
  turnstile->Open();
  EXPECT_TRUE(Eventually([] { return ProviderHost::GetStalledWorkerCount() == 0; }));
  ProviderHost::GetProviderExecutor()->WaitForAccepted();
  EXPECT_EQ(Hestra::StationUtils::Dispatch(), 0u);  // the late results were dropped

  EXPECT_EQ(content.messages[0].result, kResultAborted);
  EXPECT_TRUE(content.messages[0].content.empty());
  EXPECT_EQ(content.messages[0].path, "test:p");
  EXPECT_EQ(content.messages[0].fields, FieldNameSet{"Name"});
  EXPECT_EQ(content.messages[0].identification, "test.Fake");
  EXPECT_EQ(picture.messages[0].result, kResultAborted);
  EXPECT_EQ(picture.messages[0].thumbnail, nullptr);
  EXPECT_EQ(picture.messages[0].path, "test:p");
  EXPECT_EQ(picture.messages[0].key, "k");
  EXPECT_EQ(list.messages[0].result, kResultAborted);
  EXPECT_EQ(list.messages[0].path, "test:stuck");
  EXPECT_EQ(defaults.messages[0].result, kResultAborted);
  EXPECT_EQ(defaults.messages[0].data->path, "test:p");
  EXPECT_EQ(defaults.messages[0].provider, nullptr);
  EXPECT_TRUE(defaults.messages[0].fields.empty());
}

TEST_F(Aborts, AnswerWithin100Milliseconds) {
  Inbox<GetContentMessage> inbox("content");
  std::vector<Clock::duration> times;
  for (std::size_t i = 1; i <= 21; ++i) {
    const auto request = stuckWrapper->RequestContent("test:p", {}, "content");
    ASSERT_TRUE(Eventually([&] { return turnstile->Arrived() == i; }));
    const auto begin = Clock::now();
    request->Abort();
    ASSERT_TRUE(inbox.WaitFor(i));
    times.push_back(Clock::now() - begin);
  }
  // The median: other processes may delay single answers.
  std::nth_element(times.begin(), times.begin() + 10, times.end());
  EXPECT_LT(times[10], 100ms);
}

TEST_F(Aborts, ReplaceStalledWorkers) {
  Inbox<GetContentMessage> quick("quick");
  StallWorkers(3 * kWidth);
  quickWrapper->RequestContent("quick:p", {}, "quick");
  EXPECT_TRUE(quick.WaitFor(1));
  turnstile->Open();
  EXPECT_TRUE(Eventually([] { return ProviderHost::GetStalledWorkerCount() == 0; }));
  quickWrapper->RequestContent("quick:p", {}, "quick");
  EXPECT_TRUE(quick.WaitFor(2));
}

TEST_F(Aborts, QueueRequestsBeyondTheLimitOfReplacements) {
  StallWorkers(kMaxReplaced + kWidth);
  Inbox<GetContentMessage> quick("quick");
  const auto first = quickWrapper->RequestContent("quick:p", {}, "quick");
  const auto second = quickWrapper->RequestContent("quick:p", {}, "quick");
  std::this_thread::sleep_for(50ms);
  EXPECT_EQ(Hestra::StationUtils::GetQueuedMessageCount(), 0u);
  first->Abort();  // answered although it never ran
  ASSERT_TRUE(quick.WaitFor(1));
  EXPECT_EQ(quick.messages[0].result, kResultAborted);
  turnstile->Open();
  ASSERT_TRUE(quick.WaitFor(2));
  EXPECT_EQ(quick.messages[1].result, kResultDone);
  ProviderHost::GetProviderExecutor()->WaitForAccepted();
  EXPECT_EQ(Hestra::StationUtils::Dispatch(), 0u);
}

TEST_F(Aborts, StaySilentIfProviderThrows) {
  std::atomic<int> failures{0};
  tarnwick::threads::SetFailureHook([&](std::exception_ptr) { ++failures; });
  stuck->listing = [turnstile = turnstile](ProviderRequest*) -> ContentMap {
    turnstile->ArriveAndWait();
    throw std::runtime_error("broken");
  };
  Inbox<GetContentMessage> inbox("content");
  const auto aborted = stuckWrapper->RequestContent("test:p", {}, "content");
  const auto failed = stuckWrapper->RequestContent("test:p", {}, "content");
  ASSERT_TRUE(Eventually([&] { return turnstile->Arrived() == 2; }));
  aborted->Abort();
  ASSERT_TRUE(inbox.WaitFor(1));
  turnstile->Open();
  ProviderHost::GetProviderExecutor()->WaitForAccepted();
  failed->Abort();  // too late
  std::this_thread::sleep_for(100ms);
  tarnwick::threads::SetFailureHook({});
  EXPECT_EQ(Hestra::StationUtils::Dispatch(), 0u);
  EXPECT_EQ(failures, 1);  // the failure after the abort was dropped
}

TEST_F(Aborts, LimitTheWaitOfShutdown) {
  StallWorkers(2);
  ProviderHost::SetShutdownTimeout(50ms);
  const auto begin = Clock::now();
  ProviderHost::Shutdown();
  EXPECT_LT(Clock::now() - begin, 5s);
  EXPECT_EQ(ProviderHost::GetProviderExecutor(), nullptr);
  EXPECT_TRUE(ProviderHost::GetAllProviders().empty());

  const auto leaked = stuck;
  Start();  // new providers and workers
  EXPECT_EQ(ProviderHost::GetStalledWorkerCount(), 0u);
  Inbox<GetContentMessage> quick("quick");
  quickWrapper->RequestContent("quick:p", {}, "quick");
  ASSERT_TRUE(quick.WaitFor(1));
  turnstile->Open();
  std::this_thread::sleep_for(50ms);
  EXPECT_EQ(Hestra::StationUtils::Dispatch(), 0u);
  EXPECT_FALSE(leaked->destroyed);
}

TEST_F(Aborts, WaitForWorkersThatAreNotStalled) {
  Inbox<GetContentMessage> inbox("content");
  ProviderHost::SetShutdownTimeout(0ms);
  stuckWrapper->RequestContent("test:p", {}, "content");
  turnstile->WaitForArrival();
  std::thread opener([&] {
    std::this_thread::sleep_for(50ms);
    turnstile->Open();
  });
  ProviderHost::Shutdown();
  opener.join();
  EXPECT_TRUE(stuck->destroyed);
  EXPECT_TRUE(inbox.WaitFor(1));
  ProviderHost::Initialize();  // for TearDown
}

TEST_F(Aborts, PostOneMessageEachWhileRunsEndAtAnyTime) {
  constexpr std::size_t kRequests = 400;
  std::atomic<int> number{0};
  stuck->thumbnail = [&](ProviderRequest*) {
    // Around the time at which the watchdog answers.
    std::this_thread::sleep_for(std::chrono::milliseconds(30 + number++ % 20));
    return bitplateNew({0, 0, 2, 2});
  };
  Inbox<GetThumbnailMessage> inbox("picture");
  std::vector<Hestra::InterfaceRef<ProviderThumbnailRequest, Hestra::IThreadedQueueRequest>> sent;
  for (std::size_t i = 0; i < kRequests; ++i) {
    sent.push_back(stuckWrapper->RequestThumbnail("test:p", "k", 8, 8, "picture"));
  }
  std::thread other([&] {
    for (std::size_t i = 0; i < kRequests; i += 2) sent[i]->Abort();
  });
  for (std::size_t i = 0; i < kRequests; i += 3) sent[i]->Abort();
  other.join();
  ASSERT_TRUE(inbox.WaitFor(kRequests));
  ProviderHost::GetProviderExecutor()->WaitForAccepted();
  EXPECT_EQ(Hestra::StationUtils::Dispatch(), 0u);
  EXPECT_EQ(inbox.messages.size(), kRequests);
  for (const GetThumbnailMessage& message : inbox.messages) bitplateDispose(message.thumbnail);
}

// Runs in a process of its own, which ends without Shutdown.
[[noreturn]] void ExitWithRunningRequests(bool isStuck) {
  ProviderHost::Initialize();
  const auto answers = std::make_shared<FakeAnswers>();
  const auto turnstile = std::make_shared<Turnstile>();
  answers->listing = [=](ProviderRequest*) {
    if (isStuck) turnstile->ArriveAndWait();
    return ContentMap{{"key", {{kNameField, any_regular_t("name")}}}};
  };
  auto* const wrapper = new AsyncProviderWrapper(new FakeProvider(answers));
  ProviderHost::RegisterProvider(std::unique_ptr<ProviderWrapper>(wrapper));
  for (int i = 0; i < 10'000; ++i) wrapper->RequestContent("test:p", {}, "content");
  if (isStuck) turnstile->WaitForArrival();
  std::exit(0);
}

TEST(ExitDeathTest, NeedsNoShutdown) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(ExitWithRunningRequests(true), testing::ExitedWithCode(0), "^$");
  EXPECT_EXIT(ExitWithRunningRequests(false), testing::ExitedWithCode(0), "^$");
}

}  // namespace
