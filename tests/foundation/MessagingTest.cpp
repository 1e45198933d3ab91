// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <poll.h>

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

TEST(Messages, KeepTheOrderOfEachSender) {
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

TEST(Messages, ForNobodyAreDiscardedOnce) {
  int discarded = 0;
  Note note;
  note.discarded = &discarded;
  Post("nobody", note);
  EXPECT_EQ(discarded, 0);
  EXPECT_EQ(StationUtils::Dispatch(), 1u);
  EXPECT_EQ(discarded, 1);
}

TEST(Messages, KeepTheDescriptorReadableWhileAnyWait) {
  std::vector<int> numbers;
  StationUtils::RegisterStation("some", [&](const Message& message) {
    const int number = dynamic_cast<const Note&>(message).number;
    numbers.push_back(number);
    EXPECT_EQ(StationUtils::Dispatch(), 0u);  // no dispatch within a dispatch
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
  EXPECT_EQ(numbers, (std::vector<int>{1, 2, 3}));  // 4 came after the receiver had gone
}

TEST(Messages, HashTheirTypeNames) {
  EXPECT_EQ(HashMessageTypeNameToMessageID(""), 2166136261u);
  EXPECT_EQ(HashMessageTypeNameToMessageID("a"), 0xE40C292Cu);
}

TEST(Executors, RunWhatTheyAcceptAndRefuseTheRest) {
  using namespace tarnwick::threads;
  const auto executor = CreateSubExecutor(CreateIOBoundExecutor(), -1);
  std::atomic<int> runs{0};
  for (int i = 0; i < 200; ++i) {
    EXPECT_TRUE(executor->Post([&] {
      ++runs;
      throw std::runtime_error("ends here");
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

TEST(Executors, KeepToTheirWidth) {
  using namespace tarnwick::threads;
  const auto executor = CreateSubExecutor(CreateIOBoundExecutor(), 2);
  std::atomic<int> inside{0}, most{0}, runs{0};
  for (int i = 0; i < 40; ++i) {
    executor->Post([&] {
      const int now = ++inside;
      int seen = most;
      while (seen < now && !most.compare_exchange_weak(seen, now)) {
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      --inside;
      ++runs;
    });
  }
  executor->WaitForAccepted();
  EXPECT_EQ(runs, 40);
  EXPECT_LE(most, 2);
}

}  // namespace
