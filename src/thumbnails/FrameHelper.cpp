// SPDX-License-Identifier: MIT
#include "thumbnails/FrameHelper.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <span>
#include <thread>
#include <utility>

#include "foundation/platform/HelperProcess.h"

namespace Sorvik {
namespace {

using frames::FrameQuery;
using frames::FrameReply;
using platform::HelperProcess;
using Clock = HelperProcess::Clock;

constexpr char kProgram[] = "sorvik-frame";
constexpr std::chrono::milliseconds kWaitInterval{20};
// A process is replaced after this many pictures, so that memory leaks of libraries stay small.
constexpr int kMaxPictures = 200;

struct Helper {
  std::unique_ptr<HelperProcess> process;
  int pictures = 0;
};

class HelperPool {
 public:
  // Never destroyed: workers may still use it while the process exits.
  static HelperPool& Get() {
    static HelperPool& pool = *new HelperPool;
    return pool;
  }

  std::string Program() {
    const std::lock_guard lock(mutex_);
    if (!searched_) program_ = platform::FindHelperProgram(kProgram, SORVIK_INSTALLED_PROGRAMS);
    searched_ = true;
    return program_;
  }

  void SetProgram(const std::string& path) {
    const std::lock_guard lock(mutex_);
    idle_.clear();
    program_ = path;
    searched_ = !path.empty();
  }

  std::vector<int> IdleProcesses() {
    const std::lock_guard lock(mutex_);
    std::vector<int> ids;
    for (const Helper& helper : idle_) ids.push_back(helper.process->ProcessId());
    return ids;
  }

  // Waits for a free place. False once `isStopped` returns true.
  bool Enter(const std::function<bool()>& isStopped) {
    std::unique_lock lock(mutex_);
    while (running_ >= kMaxRunning) {
      free_.wait_for(lock, kWaitInterval);
      if (isStopped()) return false;
    }
    ++running_;
    return true;
  }

  void Leave() {
    {
      const std::lock_guard lock(mutex_);
      --running_;
    }
    free_.notify_one();
  }

  // An idle process; without one an empty helper.
  Helper TakeIdle() {
    const std::lock_guard lock(mutex_);
    if (idle_.empty()) return {};
    Helper helper = std::move(idle_.back());
    idle_.pop_back();
    return helper;
  }

  void PutBack(Helper helper) {
    if (++helper.pictures >= kMaxPictures) return;
    const std::lock_guard lock(mutex_);
    idle_.push_back(std::move(helper));
  }

 private:
  const unsigned kMaxRunning = std::max(1U, std::thread::hardware_concurrency());

  std::mutex mutex_;
  std::condition_variable free_;
  unsigned running_ = 0;
  std::vector<Helper> idle_;
  std::string program_;
  bool searched_ = false;
};

// A place in the pool.
class Place {
 public:
  Place(HelperPool& pool, const std::function<bool()>& isStopped)
      : pool_(pool), entered_(pool.Enter(isStopped)) {}
  ~Place() {
    if (entered_) pool_.Leave();
  }
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;
  bool Entered() const noexcept { return entered_; }

 private:
  HelperPool& pool_;
  bool entered_;
};

// A process that has received the query. One that was idle may have ended in the meantime; then a
// new one is started.
Helper SendToHelper(HelperPool& pool, const std::string& program, const FrameQuery& query,
                    const platform::FileForHelper& file) {
  const auto message = std::as_bytes(std::span(&query, 1));
  Helper helper = pool.TakeIdle();
  while (helper.process) {
    if (helper.process->Send(message, file)) return helper;
    helper = pool.TakeIdle();
  }
  helper = {HelperProcess::Start(program)};
  if (helper.process && !helper.process->Send(message, file)) helper.process = nullptr;
  return helper;
}

bool IsValid(const FrameReply& reply) {
  return reply.magic == frames::kMagic && reply.width >= 0 && reply.height >= 0 &&
         reply.width <= frames::kMaxSide && reply.height <= frames::kMaxSide;
}

using Received = HelperProcess::Received;

// Receives the answer to a query into `picture`, which stays empty if the file gives none.
Received ReceivePicture(HelperProcess& process, Clock::time_point deadline,
                        const std::function<bool()>& isStopped, FramePicture& picture) {
  FrameReply reply{};
  const Received header =
      process.Receive(std::as_writable_bytes(std::span(&reply, 1)), deadline, isStopped);
  if (header != Received::kAll) return header;
  if (!IsValid(reply)) return Received::kStopped;
  picture.width = reply.width;
  picture.height = reply.height;
  picture.pixels.resize(static_cast<std::size_t>(reply.width) *
                        static_cast<std::size_t>(reply.height) * frames::kPixelBytes);
  return process.Receive(std::as_writable_bytes(std::span(picture.pixels)), deadline, isStopped);
}

}  // namespace

std::optional<FramePicture> DecodeInHelper(const std::string& path, frames::Kind kind, int maxWidth,
                                           int maxHeight, const std::function<bool()>& isStopped) {
  HelperPool& pool = HelperPool::Get();
  const std::string program = pool.Program();
  if (program.empty()) return std::nullopt;
  const auto file = platform::FileForHelper::Open(path);
  if (!file) return std::nullopt;
  const Place place(pool, isStopped);
  if (!place.Entered()) return std::nullopt;
  const FrameQuery query{frames::kMagic, kind, maxWidth, maxHeight};
  const auto deadline = Clock::now() + std::chrono::seconds(frames::kMaxSeconds);
  for (bool isNew = false; !isNew;) {
    Helper helper = SendToHelper(pool, program, query, *file);
    if (!helper.process) return std::nullopt;
    isNew = helper.pictures == 0;
    FramePicture picture;
    const Received received = ReceivePicture(*helper.process, deadline, isStopped, picture);
    if (received == Received::kStopped) return std::nullopt;  // ends the helper
    if (received == Received::kEnded) continue;  // it was idle and may have ended before the query
    pool.PutBack(std::move(helper));
    if (picture.pixels.empty()) return std::nullopt;
    return picture;
  }
  return std::nullopt;
}

bool HasFrameHelper() { return !HelperPool::Get().Program().empty(); }

void SetFrameHelperProgram(const std::string& path) { HelperPool::Get().SetProgram(path); }

std::vector<int> IdleFrameHelpers() { return HelperPool::Get().IdleProcesses(); }

}  // namespace Sorvik
