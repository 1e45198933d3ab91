// SPDX-License-Identifier: MIT
// Questions of the host's UI thread to providers that misbehave.
#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>

#include "Failure.h"
#include "Session.h"
#include "SorvikProvider/frame/ProviderHost.h"
#include "support/FakeProvider.h"

namespace sorvik_test {
namespace {

using Sorvik::ContentMap;

// Registers a provider for one session. Ends the session in time or fails.
struct FakeHost {
  FakeHost() {
    answers->score = [](const std::string& path) { return path == "/fake" ? 200 : 0; };
    Sorvik::ProviderHost::RegisterProvider(
        std::make_unique<Sorvik::AsyncProviderWrapper>(new FakeProvider(answers)));
  }

  std::shared_ptr<FakeAnswers> answers = std::make_shared<FakeAnswers>();
};

TEST(Session, AnswersComeThroughTheQueue) {
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

TEST(Session, ProviderThatThrowsEndsTheQuestion) {
  const auto begun = std::chrono::steady_clock::now();
  {
    host::Session session;
    const FakeHost fake;
    fake.answers->listing = [](Sorvik::ProviderRequest*) -> ContentMap {
      throw std::runtime_error("broken card");
    };
    const auto providers = session.Providers("/fake");
    ASSERT_EQ(providers.size(), 1U);
    try {
      session.Content(*providers[0], "/fake", {});
      FAIL() << "the failure was swallowed";
    } catch (const host::Failure& failure) {
      EXPECT_EQ(failure.Code(), host::kNothing);
      EXPECT_STREQ(failure.what(), "a request failed: broken card");
    }
    EXPECT_THROW(session.OnWorker<int>([]() -> int { throw 7; }), host::Failure);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(1));
}

TEST(Session, WhatRunsIsAbortedAtTheEnd) {
  std::atomic<bool> aborted{false};
  std::atomic<bool> begun{false};
  {
    host::Session session;
    const FakeHost fake;
    fake.answers->thumbnail = [&](Sorvik::ProviderRequest* request) -> Bitplate** {
      begun = true;
      while (!request->TestAborted()) {
      }
      aborted = true;
      return bitplateNew({0, 0, 8, 8});
    };
    const auto providers = session.Providers("/fake");
    session.RequestPicture(*providers[0], "/fake", "key", 8, 8, [](const host::Picture&) {});
    while (!begun) {
    }
  }
  EXPECT_TRUE(aborted);
}

TEST(Session, PicturesThatCameTooLateReachNobody) {
  std::atomic<bool> finished{false};
  bool received = false;
  {
    host::Session session;
    const FakeHost fake;
    fake.answers->thumbnail = [&](Sorvik::ProviderRequest*) -> Bitplate** {
      finished = true;
      return bitplateNew({0, 0, 8, 8});
    };
    const auto providers = session.Providers("/fake");
    // Its answer waits in the queue when the session ends: the one who asked may be gone by then.
    session.RequestPicture(*providers[0], "/fake", "key", 8, 8,
                           [&](const host::Picture&) { received = true; });
    while (!finished) {
    }
  }
  EXPECT_FALSE(received);
}

}  // namespace
}  // namespace sorvik_test
