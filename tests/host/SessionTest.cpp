// SPDX-License-Identifier: MIT
// Requests of the host's UI thread to providers that throw, block or answer late.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "Failure.h"
#include "Session.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "support/FakeProvider.h"

namespace sorvik_test {
namespace {

using Sorvik::ContentMap;

// Registers a fake provider for one session.
struct FakeHost {
  FakeHost() {
    answers->score = [](const std::string& path) { return path == "/fake" ? 200 : 0; };
    Sorvik::ProviderHost::RegisterProvider(
        std::make_unique<Sorvik::AsyncProviderWrapper>(new FakeProvider(answers)));
  }

  std::shared_ptr<FakeAnswers> answers = std::make_shared<FakeAnswers>();
};

TEST(Session, ResultsArriveThroughTheQueue) {
  host::Session session;
  const FakeHost fake;
  fake.answers->listing = [](Sorvik::ProviderRequest*) { return ContentMap{{"key", {}}}; };
  const auto providers = session.Providers("/fake");
  ASSERT_EQ(providers.size(), 1U);
  EXPECT_EQ(session.Content(*providers[0], "/fake", {}), (ContentMap{{"key", {}}}));
  int pictures = 0;
  for (int i = 0; i < 100; ++i) {
    session.RequestPicture(*providers[0], "/fake", "key", 8, 8, [&](const host::Picture& picture) {
      pictures += picture.Empty() ? 1 : 0;
    });
  }
  session.WaitForPictures();
  EXPECT_EQ(pictures, 100);
  EXPECT_TRUE(session.Providers("").empty());
}

TEST(Session, ThrowingProviderEndsTheCall) {
  host::Session session;
  const FakeHost fake;
  fake.answers->listing = [](Sorvik::ProviderRequest*) -> ContentMap {
    throw std::runtime_error("broken card");
  };
  const auto providers = session.Providers("/fake");
  ASSERT_EQ(providers.size(), 1U);
  try {
    session.Content(*providers[0], "/fake", {});
    FAIL() << "no exception";
  } catch (const host::Failure& failure) {
    EXPECT_EQ(failure.Code(), host::kFailed);
    EXPECT_STREQ(failure.what(), "request failed (broken card)");
  }
  EXPECT_THROW(session.OnWorker<int>([]() -> int { throw 7; }), host::Failure);
}

TEST(Session, RunningRequestsAreAbortedAtTheEnd) {
  std::atomic<bool> aborted{false};
  std::atomic<bool> begun{false};
  {
    host::Session session;
    const FakeHost fake;
    fake.answers->thumbnail = [&](Sorvik::ProviderRequest* request) -> Bitplate** {
      begun = true;
      begun.notify_one();
      while (!request->TestAborted()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
      aborted = true;
      return bitplateNew({0, 0, 8, 8});
    };
    const auto providers = session.Providers("/fake");
    session.RequestPicture(*providers[0], "/fake", "key", 8, 8, [](const host::Picture&) {});
    begun.wait(false);
  }
  EXPECT_TRUE(aborted);
}

TEST(Session, LatePicturesAreDropped) {
  std::atomic<bool> finished{false};
  bool received = false;
  {
    host::Session session;
    const FakeHost fake;
    fake.answers->thumbnail = [&](Sorvik::ProviderRequest*) -> Bitplate** {
      finished = true;
      finished.notify_one();
      return bitplateNew({0, 0, 8, 8});
    };
    const auto providers = session.Providers("/fake");
    // The message is still in the queue when the session ends; the receiver must not be called
    // then.
    session.RequestPicture(*providers[0], "/fake", "key", 8, 8,
                           [&](const host::Picture&) { received = true; });
    finished.wait(false);
  }
  EXPECT_FALSE(received);
}

}  // namespace
}  // namespace sorvik_test
