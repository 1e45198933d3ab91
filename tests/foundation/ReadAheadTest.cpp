// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <numeric>
#include <set>
#include <stdexcept>
#include <thread>

#include "foundation/CallScope.h"
#include "foundation/CardFolder.h"
#include "foundation/ReadAhead.h"
#include "foundation/platform/AccessTimes.h"
#include "foundation/platform/ReadReports.h"
#include "support/FakeProvider.h"
#include "support/TempTree.h"

namespace {

using namespace std::chrono_literals;
using namespace Sorvik::foundation;
using Sorvik::platform::AccessTimer;

// An access as on a slow share.
void AccessSlowly() {
  const AccessTimer timer;
  std::this_thread::sleep_for(1ms);
}

void MakeAccessesSlow() {
  for (int i = 0; i < 3; ++i) AccessSlowly();
}

class Threads {
 public:
  void Note() {
    const std::lock_guard lock(mutex_);
    ids_.insert(std::this_thread::get_id());
  }
  std::size_t Count() const { return ids_.size(); }

 private:
  std::mutex mutex_;
  std::set<std::thread::id> ids_;
};

std::vector<std::size_t> TakeAll(ReadAhead<std::size_t>& ahead, std::size_t count) {
  std::vector<std::size_t> results;
  for (std::size_t i = 0; i < count; ++i) results.push_back(ahead.Take(i));
  return results;
}

std::vector<std::size_t> Numbers(std::size_t count) {
  std::vector<std::size_t> numbers(count);
  std::iota(numbers.begin(), numbers.end(), 0u);
  return numbers;
}

class ReadAheadTest : public testing::Test {
 protected:
  void TearDown() override { ReadAheadThreads::WaitForAll(); }

  const CallScope scope_;
};

TEST_F(ReadAheadTest, StartsThreadsOnlyIfAccessesAreSlow) {
  constexpr std::size_t kCount = 200;
  for (const bool slow : {false, true}) {
    Sorvik::platform::ResetAccessTimes();
    const auto threads = std::make_shared<Threads>();
    ReadAhead<std::size_t> ahead(kCount, [threads, slow](std::size_t i) {
      threads->Note();
      if (slow) AccessSlowly();
      return i;
    });
    EXPECT_EQ(TakeAll(ahead, kCount), Numbers(kCount));
    if (slow) {
      EXPECT_GT(threads->Count(), 4u);
      EXPECT_LE(threads->Count(), 17u);
    } else {
      EXPECT_EQ(threads->Count(), 1u);
    }
  }
}

TEST_F(ReadAheadTest, IsOffIfDisabled) {
  MakeAccessesSlow();
  ReadAheadThreads::SetEnabled(false);
  const auto threads = std::make_shared<Threads>();
  ReadAhead<std::size_t> ahead(20, [threads](std::size_t i) {
    threads->Note();
    return i;
  });
  EXPECT_EQ(TakeAll(ahead, 20), Numbers(20));
  EXPECT_EQ(threads->Count(), 1u);
  ReadAheadThreads::SetEnabled(true);
}

TEST_F(ReadAheadTest, DoesNotRunFarAhead) {
  MakeAccessesSlow();
  const auto begun = std::make_shared<std::atomic<std::size_t>>(0);
  ReadAhead<std::size_t> ahead(1000, [begun](std::size_t i) {
    ++*begun;
    return i;
  });
  EXPECT_EQ(ahead.Take(0), 0u);
  for (int i = 0; i < 200 && *begun < 64; ++i) std::this_thread::sleep_for(10ms);
  std::this_thread::sleep_for(50ms);
  EXPECT_GT(*begun, 16u);
  EXPECT_LE(*begun, 65u);
}

TEST_F(ReadAheadTest, CallerRepeatsFailedReads) {
  MakeAccessesSlow();
  const auto caller = std::this_thread::get_id();
  ReadAhead<std::size_t> ahead(50, [caller](std::size_t i) {
    AccessSlowly();
    if (std::this_thread::get_id() != caller) throw std::runtime_error("no memory");
    return i;
  });
  EXPECT_EQ(TakeAll(ahead, 50), Numbers(50));
}

TEST_F(ReadAheadTest, StopsWhileAThreadIsStuck) {
  MakeAccessesSlow();
  const auto turnstile = std::make_shared<sorvik_test::Turnstile>();
  const auto caller = std::this_thread::get_id();
  const auto start = std::chrono::steady_clock::now();
  {
    std::atomic<bool> stop = false;
    ReadAhead<std::string> ahead(
        50,
        [turnstile, caller](std::size_t) {
          if (std::this_thread::get_id() != caller) turnstile->ArriveAndWait();
          return std::string("read");
        },
        [&stop] { return stop.load(); });
    EXPECT_EQ(ahead.Take(0), "read");
    turnstile->WaitForArrival();
    stop = true;
    EXPECT_EQ(ahead.Take(1), "");
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
  turnstile->Open();  // the threads then end without the objects above
}

TEST_F(ReadAheadTest, ThreadsShareTheCallScope) {
  struct Record {
    int value;
  };
  MakeAccessesSlow();
  const auto made = std::make_shared<std::atomic<int>>(0);
  ReadAhead<int> ahead(100, [made](std::size_t) {
    AccessSlowly();
    return CallScope::Remember<Record>("key",
                                       [&made] {
                                         std::this_thread::sleep_for(5ms);  // others ask meanwhile
                                         ++*made;
                                         return Record{7};
                                       })
        ->value;
  });
  for (std::size_t i = 0; i < 100; ++i) EXPECT_EQ(ahead.Take(i), 7);
  EXPECT_EQ(*made, 1);
}

TEST_F(ReadAheadTest, ReportsUnreadableFilesInOrder) {
  MakeAccessesSlow();
  const auto reports = std::make_shared<std::vector<std::string>>();
  Sorvik::platform::SetReadReportHandler(
      [reports](const std::string& path, std::string_view) { reports->push_back(path); });
  ReadAhead<std::size_t> ahead(100, [](std::size_t i) {
    if (i % 3 == 0) std::this_thread::sleep_for(1ms);
    Sorvik::platform::ReportReadFailure(std::to_string(i), "damaged");
    return i;
  });
  TakeAll(ahead, 100);
  Sorvik::platform::SetReadReportHandler({});
  std::vector<std::string> expected;
  for (std::size_t i = 0; i < 100; ++i) expected.push_back(std::to_string(i));
  EXPECT_EQ(*reports, expected);
}

TEST_F(ReadAheadTest, ListsFoldersIntoTheCallScope) {
  const sorvik_test::TempTree tree;
  std::vector<std::string> folders;
  for (int i = 0; i < 30; ++i) {
    tree.File("card/" + std::to_string(i) + "/clip.xml");
    folders.push_back(tree.Path("card/" + std::to_string(i)));
  }
  MakeAccessesSlow();
  FolderReadAhead ahead(folders);
  for (std::size_t i = 0; i < folders.size(); ++i) {
    ahead.Await(i);
    EXPECT_TRUE(CardFolder::Of(folders[i])->Contains("clip.xml"));
  }
}

}  // namespace
