// SPDX-License-Identifier: MIT
#include "foundation/ReadAhead.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <string_view>

#include "foundation/CallScope.h"
#include "foundation/hestra/Directory.h"
#include "foundation/platform/AccessTimes.h"
#include "foundation/platform/DetachedThread.h"
#include "foundation/platform/ReadReports.h"
#include "foundation/platform/ShareAccess.h"

namespace Sorvik::foundation {
namespace {

using platform::ShareAccess;
using std::chrono::milliseconds;

constexpr std::size_t kMaxThreads = 16;
// Results that wait to be taken. Each is the content of a small file or the metadata of a clip.
constexpr std::size_t kMaxAhead = 64;
// Of all operations. Threads that are stuck on an unresponsive share count until it answers;
// without a free thread an operation reads on its own one.
constexpr std::size_t kMaxThreadsOfProcess = 256;
constexpr milliseconds kStopInterval{20};
constexpr milliseconds kMaxWaitForAll{100};

// Set on the threads of this class: they start no others.
thread_local bool isReadingAhead = false;

bool IsEnabledByEnvironment() {
  const char* const setting = std::getenv("SORVIK_READ_AHEAD");
  return setting == nullptr || std::string_view(setting) != "0";
}

std::atomic<bool> isEnabled{IsEnabledByEnvironment()};

// The threads of all operations. Never destroyed: a stuck thread may outlive main().
struct Running {
  std::mutex mutex;
  std::condition_variable ended;
  std::size_t threads = 0;

  static Running& Get() {
    static Running& running = *new Running;
    return running;
  }
  bool Add() {
    const std::lock_guard lock(mutex);
    if (threads >= kMaxThreadsOfProcess) return false;
    ++threads;
    return true;
  }
  void Remove() {
    const std::lock_guard lock(mutex);
    --threads;
    ended.notify_all();
  }
};

}  // namespace

struct ReadAheadThreads::State {
  enum class Status : unsigned char { kWaiting, kRunning, kDone, kToDo };
  struct Item {
    Status status = Status::kWaiting;
    platform::ReportBuffer::Reports reports;  // passed on when the result is taken
  };

  State(std::size_t count, std::size_t first, std::function<void(std::size_t)> reading)
      : read(std::move(reading)), items(count), position(first), next(first) {}

  void Run(std::shared_ptr<ShareAccess> access);
  // The next index to read; nullopt when there is nothing left to do for a thread.
  std::optional<std::size_t> Begin();
  void End(std::size_t index, Item result);

  const std::function<void(std::size_t)> read;
  const CallScope::Cache cache = CallScope::CurrentCache();
  std::mutex mutex;
  std::condition_variable progress;  // of the position, or of an item
  std::vector<Item> items;
  std::size_t position;  // of the caller
  std::size_t next;      // the first item that no thread has considered
  bool cancelled = false;
};

std::optional<std::size_t> ReadAheadThreads::State::Begin() {
  std::unique_lock lock(mutex);
  while (!cancelled) {
    next = std::max(next, position);
    while (next < items.size() && items[next].status != Status::kWaiting) ++next;
    if (next >= items.size()) return std::nullopt;
    if (next < position + kMaxAhead) {
      items[next].status = Status::kRunning;
      return next++;
    }
    progress.wait(lock);
  }
  return std::nullopt;
}

void ReadAheadThreads::State::End(std::size_t index, Item result) {
  const std::lock_guard lock(mutex);
  items[index] = std::move(result);
  progress.notify_all();
}

void ReadAheadThreads::State::Run(std::shared_ptr<ShareAccess> access) {
  isReadingAhead = true;
  const platform::ShareScope shares(access);
  const CallScope::Join join(cache);
  platform::ReportBuffer reports;
  while (const auto index = Begin()) {
    Item item{Status::kDone, {}};
    try {
      read(*index);
    } catch (...) {
      item.status = Status::kToDo;  // the caller gets the error if it isn't a matter of this thread
    }
    item.reports = reports.Take();
    if (access && access->HasRefused()) {
      access->ClearRefused();
      item = {Status::kToDo, {}};
    }
    End(*index, std::move(item));
  }
}

ReadAheadThreads::ReadAheadThreads(std::size_t count, std::function<void(std::size_t)> read,
                                   std::function<bool()> stop)
    : count_(count), read_(std::move(read)), stop_(std::move(stop)) {}

ReadAheadThreads::~ReadAheadThreads() {
  if (!state_) return;
  const std::lock_guard lock(state_->mutex);
  state_->cancelled = true;
  state_->progress.notify_all();
}

bool ReadAheadThreads::ShouldStart(std::size_t index) const {
  return !state_ && isEnabled && !isReadingAhead && index + 1 < count_ &&
         platform::AccessesAreSlow();
}

void ReadAheadThreads::Start(std::size_t index) {
  // The caller reads the first one.
  state_ = std::make_shared<State>(count_, index + 1, read_);
  const auto operation = ShareAccess::Current();
  const std::size_t threads = std::min(kMaxThreads, count_ - index - 1);
  for (std::size_t i = 0; i < threads; ++i) {
    if (!Running::Get().Add()) return;
    auto access = operation ? ShareAccess::ForOwnShare(*operation) : nullptr;
    const bool started =
        platform::StartDetachedThread([state = state_, access = std::move(access)]() mutable {
          std::exchange(state, nullptr)->Run(std::exchange(access, nullptr));
          Running::Get().Remove();
        });
    if (started) continue;
    Running::Get().Remove();
    return;
  }
}

ReadAheadThreads::Outcome ReadAheadThreads::Await(std::size_t index) {
  if (ShouldStart(index)) {
    Start(index);
    return Outcome::kToDo;
  }
  if (!state_ || index >= count_) return Outcome::kToDo;
  using Status = State::Status;
  std::unique_lock lock(state_->mutex);
  State::Item& item = state_->items[index];
  if (index > state_->position) {
    state_->position = index;
    state_->progress.notify_all();
  }
  if (item.status == Status::kWaiting) item.status = Status::kToDo;
  while (item.status == Status::kRunning) {
    state_->progress.wait_for(lock, kStopInterval);
    if (item.status == Status::kRunning && stop_ && stop_()) return Outcome::kStopped;
  }
  const auto reports = std::exchange(item.reports, {});
  const bool done = item.status == Status::kDone;
  lock.unlock();
  if (!done) return Outcome::kToDo;
  for (const auto& [path, reason] : reports) platform::ReportReadFailure(path, reason);
  return Outcome::kDone;
}

void ReadAheadThreads::SetEnabled(bool enabled) noexcept { isEnabled = enabled; }

void ReadAheadThreads::WaitForAll() {
  Running& running = Running::Get();
  std::unique_lock lock(running.mutex);
  running.ended.wait_for(lock, kMaxWaitForAll, [&running] { return running.threads == 0; });
}

FolderReadAhead::FolderReadAhead(std::vector<std::string> folders, std::function<bool()> stop)
    : threads_(
          CallScope::CurrentCache() ? folders.size() : 0,
          [folders = std::make_shared<const std::vector<std::string>>(folders)](std::size_t i) {
            Hestra::Directory::GetItems((*folders)[i]);
          },
          std::move(stop)) {}

void FolderReadAhead::Await(std::size_t index) { threads_.Await(index); }

}  // namespace Sorvik::foundation
