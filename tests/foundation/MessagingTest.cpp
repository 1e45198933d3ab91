// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <barrier>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "SorvikProvider/foundation/AsyncExecutor.h"
#include "SorvikProvider/foundation/Messaging.h"

namespace {

using namespace Hestra;

struct Note : MessageImpl<Note>, Allocated<Note> {
  int number = 0;
  int* discarded = nullptr;
  void Discard() noexcept override {
    if (discarded != nullptr) ++*discarded;
  }
};

Note NoteOf(int number) {
  Note note;
  note.number = number;
  return note;
}

void Post(const char* station, const Note& note) {
  StationUtils::PostMessageToUIThread(station, note, false);
}

bool Readable() {
  pollfd waiting{StationUtils::GetEventDescriptor(), POLLIN, 0};
  return poll(&waiting, 1, 0) == 1;
}

TEST(Messages, KeepOrderOfEachThread) {
  std::vector<int> last(4, -1);
  int received = 0;
  bool ordered = true;
  StationUtils::RegisterStation("order", [&](const Message& message) {
    const int number = dynamic_cast<const Note&>(message).number;
    const auto sender = static_cast<std::size_t>(number / 1000);
    ordered = ordered && last[sender] < number;
    last[sender] = number;
    ++received;
  });
  std::vector<std::thread> senders;
  for (int sender = 0; sender < 4; ++sender) {
    senders.emplace_back([sender] {
      for (int i = 0; i < 1000; ++i) Post("order", NoteOf(sender * 1000 + i));
    });
  }
  while (received < 4000) StationUtils::WaitAndDispatch(1000);
  for (std::thread& sender : senders) sender.join();
  EXPECT_TRUE(ordered);
  StationUtils::UnregisterStation("order");
}

TEST(Messages, AreDiscardedOnceWithoutReceiver) {
  int discarded = 0;
  Note note;
  note.discarded = &discarded;
  Post("unregistered", note);
  EXPECT_EQ(discarded, 0);
  EXPECT_EQ(StationUtils::Dispatch(), 1u);
  EXPECT_EQ(discarded, 1);
}

TEST(Messages, KeepDescriptorReadableWhileQueued) {
  std::vector<int> numbers;
  StationUtils::RegisterStation("some", [&](const Message& message) {
    const int number = dynamic_cast<const Note&>(message).number;
    numbers.push_back(number);
    if (number == 1) Post("some", NoteOf(4));
    if (number == 2) throw std::runtime_error("receiver");
    if (number == 3) StationUtils::UnregisterStation("some");
  });
  EXPECT_FALSE(Readable());
  for (int i = 1; i <= 3; ++i) Post("some", NoteOf(i));
  EXPECT_TRUE(Readable());
  EXPECT_EQ(StationUtils::Dispatch(1), 1u);
  EXPECT_TRUE(Readable());
  EXPECT_THROW(StationUtils::Dispatch(), std::runtime_error);
  EXPECT_TRUE(Readable());
  EXPECT_EQ(StationUtils::Dispatch(), 2u);
  EXPECT_FALSE(Readable());
  EXPECT_EQ(numbers, (std::vector<int>{1, 2, 3}));  // 4 came after UnregisterStation
}

TEST(Messages, ReachNestedEventLoopInOrder) {
  std::vector<int> numbers;
  StationUtils::RegisterStation("dialog", [&](const Message& message) {
    const int number = dynamic_cast<const Note&>(message).number;
    numbers.push_back(number);
    if (number != 1) return;
    Post("dialog", NoteOf(4));
    while (numbers.back() != 4) StationUtils::WaitAndDispatch(1000);  // until the dialog closes
    EXPECT_FALSE(Readable());
  });
  for (int i = 1; i <= 3; ++i) Post("dialog", NoteOf(i));
  EXPECT_EQ(StationUtils::GetQueuedMessageCount(), 3u);
  EXPECT_EQ(StationUtils::Dispatch(), 1u);
  EXPECT_EQ(numbers, (std::vector<int>{1, 2, 3, 4}));
  EXPECT_EQ(StationUtils::GetQueuedMessageCount(), 0u);
  StationUtils::UnregisterStation("dialog");
}

TEST(Messages, OutliveDuplicateOfDescriptor) {
  const int own = StationUtils::DuplicateEventDescriptor();
  ASSERT_GE(own, 0);
  EXPECT_NE(own, StationUtils::GetEventDescriptor());
  Post("unregistered", NoteOf(1));
  pollfd waiting{own, POLLIN, 0};
  EXPECT_EQ(poll(&waiting, 1, 0), 1);
  EXPECT_EQ(close(own), 0);
  EXPECT_TRUE(Readable());
  EXPECT_EQ(StationUtils::Dispatch(), 1u);
  EXPECT_FALSE(Readable());
}

TEST(Messages, HashTypeNamesWithFNV1a) {
  EXPECT_EQ(HashMessageTypeNameToMessageID(""), 2166136261u);
  EXPECT_EQ(HashMessageTypeNameToMessageID("a"), 0xE40C292Cu);
}

TEST(Executors, RunAcceptedFunctionsAndRefuseOthers) {
  using namespace tarnwick::threads;
  const auto executor = CreateSubExecutor(CreateIOBoundExecutor(), -1);
  std::atomic<int> runs{0};
  for (int i = 0; i < 200; ++i) {
    EXPECT_TRUE(executor->Post([&] {
      ++runs;
      throw std::runtime_error("caught by the executor");
    }));
  }
  executor->StopAccepting();
  EXPECT_FALSE(executor->Post([&] { ++runs; }));
  executor->WaitForAccepted();
  EXPECT_EQ(runs, 200);

  const auto base = CreateIOBoundExecutor();
  const auto stopped = CreateSubExecutor(base, -1);
  base->StopAccepting();
  EXPECT_FALSE(stopped->Post([&] { ++runs; }));
  stopped->WaitForAccepted();  // returns: refused work is not waited for
}

TEST(Executors, RunAsManyFunctionsAsTheirWidth) {
  using namespace tarnwick::threads;
  constexpr int kWidth = 2;
  const auto executor = CreateSubExecutor(CreateIOBoundExecutor(), kWidth);
  std::barrier together(kWidth);  // a narrower executor never ends
  std::mutex mutex;
  int running = 0, maxRunning = 0, runs = 0;
  for (int i = 0; i < 20 * kWidth; ++i) {
    executor->Post([&] {
      {
        const std::lock_guard lock(mutex);
        maxRunning = std::max(maxRunning, ++running);
      }
      together.arrive_and_wait();
      const std::lock_guard lock(mutex);
      --running;
      ++runs;
    });
  }
  executor->WaitForAccepted();
  EXPECT_EQ(runs, 20 * kWidth);
  EXPECT_EQ(maxRunning, kWidth);
}

}  // namespace
