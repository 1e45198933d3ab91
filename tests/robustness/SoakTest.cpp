// SPDX-License-Identifier: MIT
// Many requests for all synthetic cards, some of them aborted: each posts one message, and memory
// doesn't grow. SORVIK_SOAK sets the number of requests.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "SorvikProvider/frame/ProviderHost.h"
#include "SorvikProvider/frame/ProviderMessages.h"
#include "support/AllCards.h"

namespace {

using namespace Sorvik;

long RequestCount() {
  const char* text = std::getenv("SORVIK_SOAK");
  return text == nullptr ? 5000 : std::max(1000L, std::atol(text));
}

// Resident memory in KiB.
long ResidentMemory() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.starts_with("VmRSS:")) return std::atol(line.c_str() + 6);
  }
  return 0;
}

class Soak : public testing::Test {
 protected:
  void SetUp() override {
    ProviderHost::Initialize();
    Hestra::StationUtils::RegisterStation("soak", [this](const Hestra::Message& message) {
      ++received_;
      if (const auto* picture = dynamic_cast<const GetThumbnailMessage*>(&message)) {
        bitplateDispose(picture->thumbnail);
      }
    });
    for (const auto& card : sorvik_test::MakeAllCards(tree_)) {
      ProviderWrapper* provider = ProviderHost::GetProviderList(card.root).front();
      const ContentMap content = provider->GetContent(card.root, {kNameField}, nullptr);
      cards_.push_back({card.root, content.begin()->first, provider});
    }
  }
  void TearDown() override {
    Hestra::StationUtils::UnregisterStation("soak");
    ProviderHost::Shutdown();
  }

  void Ask(long number) {
    const Card& card = cards_[static_cast<std::size_t>(number) % cards_.size()];
    const bool abort = number % 7 == 0;
    switch (number / static_cast<long>(cards_.size()) % 4) {
      case 0:
        return Finish(
            card.provider->RequestContent(card.root, card.provider->GetFieldList(), "soak"), abort);
      case 1:
        return Finish(card.provider->RequestThumbnail(card.root, card.key, 80, 60, "soak"), abort);
      case 2:
        return Finish(ProviderHost::RequestProviderList(card.root, "soak"), abort);
      default:
        return Finish(ProviderHost::RequestDefaultProviderContent(
                          ProviderDefaultContentRequest::DataRef(
                              new DefaultContentRequestData(card.root, "")),
                          "soak"),
                      abort);
    }
  }
  void WaitFor(long count) {
    while (received_ < count) {
      ASSERT_GT(Hestra::StationUtils::WaitAndDispatch(60'000), 0u) << "a message is missing";
    }
  }

 private:
  struct Card {
    std::string root;
    std::string key;
    ProviderWrapper* provider;
  };

  template <class Ref>
  static void Finish(const Ref& request, bool abort) {
    if (abort) request->Abort();
  }

  const sorvik_test::TempTree tree_;
  std::vector<Card> cards_;
  long received_ = 0;
};

TEST_F(Soak, PostsEveryMessageWithoutGrowing) {
  const long count = RequestCount();
  const long warm = count / 5;
  long before = 0;
  for (long number = 0; number < count; ++number) {
    if (number == warm) {
      WaitFor(number);
      before = ResidentMemory();
    }
    Ask(number);
    if (number % 64 == 63) WaitFor(number - 32);
  }
  WaitFor(count);
  const long after = ResidentMemory();
  std::printf("%ld requests, resident memory %ld KiB after %ld of them, %ld KiB at the end\n",
              count, before, warm, after);
  // Allocators retain some pages; a leak of one message or entry per request is far larger.
  EXPECT_LT(after - before, 24 * 1024 + count / 10);
}

}  // namespace
