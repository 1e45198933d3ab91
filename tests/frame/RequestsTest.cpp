// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/frame/ProviderMessages.h"
#include "SorvikProvider/frame/SharedReads.h"
#include "foundation/CallScope.h"
#include "support/FakeProvider.h"

namespace {

using namespace Sorvik;
using foundation::CallScope;
using sorvik_test::FakeAnswers;
using sorvik_test::FakeProvider;
using sorvik_test::Inbox;
using sorvik_test::Turnstile;

ContentMap OneEntry(const std::string& path) {
  return {{"key",
           {{kNameField, any_regular_t(std::string("name"))}, {kPathField, any_regular_t(path)}}}};
}

class Requests : public testing::Test {
 protected:
  void SetUp() override {
    ProviderHost::Initialize();
    answers->score = [](const std::string& path) { return path.starts_with("test:") ? 100 : 0; };
    wrapper = new AsyncProviderWrapper(new FakeProvider(answers));
    ProviderHost::RegisterProvider(std::unique_ptr<ProviderWrapper>(wrapper));
  }
  void TearDown() override { ProviderHost::Shutdown(); }

  std::shared_ptr<FakeAnswers> answers = std::make_shared<FakeAnswers>();
  AsyncProviderWrapper* wrapper = nullptr;
};

TEST_F(Requests, PostContentWithPathFieldsAndProvider) {
  answers->listing = [](ProviderRequest*) { return OneEntry("test:x"); };
  Inbox<GetContentMessage> inbox("content");
  const auto request = wrapper->RequestContent("test:p", {"Name", "Path"}, "content");
  ASSERT_TRUE(inbox.WaitFor(1));
  const GetContentMessage& message = inbox.messages[0];
  EXPECT_EQ(message.content, OneEntry("test:x"));
  EXPECT_EQ(message.path, "test:p");
  EXPECT_EQ(message.fields, (FieldNameSet{"Name", "Path"}));
  EXPECT_EQ(message.identification, "test.Fake");
  EXPECT_EQ(message.result, kResultDone);
  EXPECT_EQ(message.GetMessageID(), GetContentMessage::StaticMessageID());
  EXPECT_NE(message.GetMessageID(), GetThumbnailMessage::StaticMessageID());
}

TEST_F(Requests, DistinguishEmptyContentFromMissingThumbnail) {
  Inbox<GetContentMessage> content("content");
  Inbox<GetThumbnailMessage> picture("picture");
  wrapper->RequestContent("test:p", {}, "content");
  wrapper->RequestThumbnail("test:p", "k", 8, 8, "picture");
  ASSERT_TRUE(content.WaitFor(1) && picture.WaitFor(1));
  EXPECT_EQ(content.messages[0].result, kResultDone);
  EXPECT_EQ(picture.messages[0].result, kResultNoContent);
  EXPECT_EQ(picture.messages[0].key, "k");
}

TEST_F(Requests, PassOwnershipOfThumbnail) {
  answers->thumbnail = [](ProviderRequest*) { return bitplateNew({0, 0, 2, 3}); };
  Inbox<GetThumbnailMessage> inbox("picture");
  wrapper->RequestThumbnail("test:p", "k", 8, 8, "picture");
  ASSERT_TRUE(inbox.WaitFor(1));
  ASSERT_NE(inbox.messages[0].thumbnail, nullptr);
  EXPECT_EQ(inbox.messages[0].result, kResultDone);
  EXPECT_EQ(bitplateGetHeight(inbox.messages[0].thumbnail), 3);
  bitplateDispose(inbox.messages[0].thumbnail);
}

TEST_F(Requests, CallNoProviderIfAbortedBeforeTheRun) {
  // Shared: workers may still be in it when the test ends.
  const auto turnstile = std::make_shared<Turnstile>();
  const auto executor = ProviderHost::GetProviderExecutor();
  for (int i = 0; i < 32; ++i) executor->Post([turnstile] { turnstile->ArriveAndWait(); });
  Inbox<GetContentMessage> content("content");
  Inbox<GetProviderListMessage> list("list");
  Inbox<GetThumbnailMessage> picture("picture");
  Inbox<GetDefaultContentMessage> defaults("defaults");
  const auto a = wrapper->RequestContent("test:p", {}, "content");
  const auto b = ProviderHost::RequestProviderList("test:p", "list");
  const auto c = wrapper->RequestThumbnail("test:p", "k", 1, 1, "picture");
  const auto d = ProviderHost::RequestDefaultProviderContent(
      ProviderDefaultContentRequest::DataRef(new DefaultContentRequestData("test:p", "")),
      "defaults");
  for (int twice = 0; twice < 2; ++twice) {
    a->Abort();
    b->Abort();
    c->Abort();
    d->Abort();
  }
  turnstile->Open();
  ASSERT_TRUE(content.WaitFor(1) && list.WaitFor(1) && picture.WaitFor(1) && defaults.WaitFor(1));
  executor->WaitForAccepted();
  EXPECT_EQ(answers->calls, 0);
  EXPECT_EQ(content.messages[0].result, kResultAborted);
  EXPECT_EQ(content.messages[0].identification, "test.Fake");
  EXPECT_EQ(list.messages[0].result, kResultAborted);
  EXPECT_TRUE(list.messages[0].providers.empty());
  EXPECT_EQ(picture.messages[0].result, kResultAborted);
  EXPECT_EQ(defaults.messages[0].result, kResultAborted);
}

TEST_F(Requests, DiscardResultIfAbortedDuringTheRun) {
  Turnstile turnstile;
  answers->listing = [&](ProviderRequest* request) {
    turnstile.ArriveAndWait();
    EXPECT_TRUE(ProviderRequest::TestAborted(request));
    return OneEntry("test:x");
  };
  Inbox<GetContentMessage> inbox("content");
  const auto request = wrapper->RequestContent("test:p", {}, "content");
  turnstile.WaitForArrival();
  request->Abort();
  turnstile.Open();
  ASSERT_TRUE(inbox.WaitFor(1));
  EXPECT_EQ(inbox.messages[0].result, kResultAborted);
  EXPECT_TRUE(inbox.messages[0].content.empty());
  request->Abort();  // after the run: no effect
  EXPECT_EQ(inbox.messages.size(), 1u);
}

TEST_F(Requests, DisposeOfThumbnailAfterAbort) {
  Turnstile turnstile;
  answers->thumbnail = [&](ProviderRequest*) {
    turnstile.ArriveAndWait();
    return bitplateNew({0, 0, 2, 2});  // the address sanitizer reports a leak
  };
  Inbox<GetThumbnailMessage> inbox("picture");
  const auto request = wrapper->RequestThumbnail("test:p", "k", 8, 8, "picture");
  turnstile.WaitForArrival();
  request->Abort();
  turnstile.Open();
  ASSERT_TRUE(inbox.WaitFor(1));
  EXPECT_EQ(inbox.messages[0].thumbnail, nullptr);
  EXPECT_EQ(inbox.messages[0].result, kResultAborted);
}

TEST_F(Requests, ListProvidersBestFirst) {
  Inbox<GetProviderListMessage> inbox("list");
  ProviderHost::RequestProviderList("test:p", "list");
  ProviderHost::RequestProviderList("networkvolumes:", "list");
  ASSERT_TRUE(inbox.WaitFor(2));
  for (const GetProviderListMessage& message : inbox.messages) {
    const bool known = message.path == "test:p";
    EXPECT_EQ(message.providers,
              known ? std::vector<ProviderWrapper*>{wrapper} : std::vector<ProviderWrapper*>{});
    EXPECT_EQ(message.result, known ? kResultDone : kResultNoContent);
  }
}

TEST_F(Requests, KeepBrowsableEntriesAsDefaultContent) {
  answers->listing = [](ProviderRequest*) {
    ContentMap raw = OneEntry("test:further");
    raw["without a provider"][kPathField] = any_regular_t(std::string("unknown:"));
    raw["not a text"][kPathField] = any_regular_t(Provider::ByteSize_t(1));
    raw["without a path"][kNameField] = any_regular_t(std::string("x"));
    return raw;
  };
  Inbox<GetDefaultContentMessage> inbox("defaults");
  const auto ask = [](const std::string& path, const std::string& id) {
    ProviderHost::RequestDefaultProviderContent(
        ProviderDefaultContentRequest::DataRef(new DefaultContentRequestData(path, id)),
        "defaults");
  };
  ask("test:p", ProviderHost::sBestProvider);
  ASSERT_TRUE(inbox.WaitFor(1));
  EXPECT_EQ(inbox.messages[0].content, OneEntry("test:further"));
  EXPECT_EQ(inbox.messages[0].provider, wrapper);
  EXPECT_EQ(inbox.messages[0].fields, (FieldNameSet{kNameField, kPathField}));
  ask("test:p", "com.halvane.Merisk.ProviderRED");
  ASSERT_TRUE(inbox.WaitFor(2));
  EXPECT_EQ(inbox.messages[1].provider, wrapper);
  ask("unknown:", "");
  ASSERT_TRUE(inbox.WaitFor(3));
  EXPECT_EQ(inbox.messages[2].provider, nullptr);
  EXPECT_EQ(inbox.messages[2].result, kResultNoContent);
  EXPECT_EQ(inbox.messages[2].data->path, "unknown:");
  // Throws at once: on a worker it would fail without a message.
  EXPECT_THROW(ProviderHost::RequestDefaultProviderContent({}, "defaults"),
               Hestra::NullInterfaceException);
}

TEST_F(Requests, CallFailureHookInsteadOfPostingIfProviderThrows) {
  std::atomic<int> failures{0};
  tarnwick::threads::SetFailureHook([&](std::exception_ptr) { ++failures; });
  answers->listing = [](ProviderRequest*) -> ContentMap { throw std::runtime_error("broken"); };
  Inbox<GetContentMessage> content("content");
  Inbox<GetProviderListMessage> list("list");
  for (int i = 0; i < 20; ++i) wrapper->RequestContent("test:p", {}, "content");
  ProviderHost::GetProviderExecutor()->WaitForAccepted();
  tarnwick::threads::SetFailureHook({});
  EXPECT_EQ(failures, 20);
  ProviderHost::RequestProviderList("test:p", "list");
  EXPECT_TRUE(list.WaitFor(1));
  EXPECT_TRUE(content.messages.empty());
}

TEST_F(Requests, PostExactlyOneMessageEach) {
  answers->listing = [](ProviderRequest*) { return OneEntry("test:x"); };
  Inbox<GetContentMessage> inbox("content");
  for (int i = 0; i < 1000; ++i) {
    const auto request = wrapper->RequestContent("test:p", {}, "content");
    if (i % 2 == 0) request->Abort();
  }
  ASSERT_TRUE(inbox.WaitFor(1000));
  ProviderHost::GetProviderExecutor()->WaitForAccepted();
  EXPECT_EQ(Hestra::StationUtils::Dispatch(), 0u);
  EXPECT_EQ(inbox.messages.size(), 1000u);
}

TEST_F(Requests, ShareReadsIfQueuedWithinAScope) {
  std::atomic<int> reads = 0;
  const auto read = [&reads] {
    CallScope::Remember<int>("file", [&reads] { return ++reads; });
    return ContentMap();
  };
  answers->listing = [&](ProviderRequest*) { return read(); };
  answers->entry = read;
  Inbox<GetContentMessage> inbox("content");
  const auto requestTwice = [&] {
    for (int i = 0; i < 2; ++i) wrapper->RequestContent("test:p", {}, "content");
  };
  {
    const SharedReads shared;
    const SharedReads::Scope scope(shared);
    requestTwice();
    wrapper->GetContent("test:p", "key", {});
  }
  ASSERT_TRUE(inbox.WaitFor(2));
  EXPECT_EQ(reads, 1);
  requestTwice();
  ASSERT_TRUE(inbox.WaitFor(4));
  EXPECT_EQ(reads, 3);
}

TEST_F(Requests, KeepProviderAliveWhileRunning) {
  const auto kept = std::make_shared<FakeAnswers>();
  Turnstile turnstile;
  kept->listing = [&](ProviderRequest*) {
    turnstile.ArriveAndWait();
    EXPECT_FALSE(kept->destroyed);
    return ContentMap();
  };
  auto own = std::make_unique<AsyncProviderWrapper>(new FakeProvider(kept));
  Inbox<GetContentMessage> inbox("content");
  own->RequestContent("test:p", {}, "content");
  turnstile.WaitForArrival();
  own.reset();
  turnstile.Open();
  ASSERT_TRUE(inbox.WaitFor(1));
  ProviderHost::GetProviderExecutor()->WaitForAccepted();
  EXPECT_TRUE(kept->destroyed);
}

TEST(RequestsWithoutHost, PostNoMessage) {
  const auto answers = std::make_shared<FakeAnswers>();
  const AsyncProviderWrapper wrapper(new FakeProvider(answers));
  Inbox<GetContentMessage> inbox("content");
  const auto request = wrapper.RequestContent("test:p", {}, "content");
  EXPECT_TRUE(static_cast<bool>(request));
  request->Abort();
  EXPECT_EQ(Hestra::StationUtils::Dispatch(), 0u);
  EXPECT_EQ(answers->calls, 0);
}

TEST(RequestsAtShutdown, PostBeforeShutdownReturns) {
  ProviderHost::Initialize();
  const auto answers = std::make_shared<FakeAnswers>();
  Turnstile turnstile;
  answers->listing = [&](ProviderRequest*) {
    turnstile.ArriveAndWait();
    return ContentMap();
  };
  auto* wrapper = new AsyncProviderWrapper(new FakeProvider(answers));
  ProviderHost::RegisterProvider(std::unique_ptr<ProviderWrapper>(wrapper));
  Inbox<GetContentMessage> inbox("content");
  for (int i = 0; i < 100; ++i) wrapper->RequestContent("test:p", {}, "content");
  std::thread opener([&] { turnstile.Open(); });
  ProviderHost::Shutdown();
  opener.join();
  EXPECT_TRUE(answers->destroyed);
  while (Hestra::StationUtils::Dispatch() > 0) {
  }
  EXPECT_EQ(inbox.messages.size(), 100u);
}

TEST(RequestObjects, SupportTwoInterfaces) {
  const Hestra::InterfaceRef<ProviderListRequest, Hestra::IThreadedQueueRequest> request(
      new ProviderListRequest("s", "p"));
  void* found = &found;
  EXPECT_EQ(request->QueryInterfaceWithoutRef({1, 2}, &found), Hestra::kNoInterface);
  EXPECT_EQ(static_cast<std::uint32_t>(Hestra::kNoInterface), 0xA00A0001u);
  EXPECT_EQ(found, nullptr);
  for (const auto id : {Hestra::kThreadedQueueRequestID, Hestra::kHestraUnknownID}) {
    EXPECT_EQ(request->QueryInterface(id, &found), 0);
    ASSERT_NE(found, nullptr);
    static_cast<Hestra::HestraUnknown*>(found)->Release();
  }
  EXPECT_EQ(request->GetRef().Get(), request.Get());
  const Hestra::InterfaceRef<ProviderListRequest, Hestra::IThreadedQueueRequest> null;
  try {
    null->Abort();
    FAIL();
  } catch (const Hestra::Exception& failure) {
    EXPECT_STREQ(failure.what(), "A NULL interface pointer has been dereferenced.");
  }
}

}  // namespace
