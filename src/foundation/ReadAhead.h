// SPDX-License-Identifier: MIT
// Overlaps the reads of a listing on slow storage, such as network shares, where each of them waits
// for a server.
//
// An operation that can name in advance the files of each of its clips passes a function that
// reads for one clip, and takes the results in order. It runs on the caller's thread, as without
// this class, until the operation's accesses turn out to be slow (platform/AccessTimes.h). Then up
// to 16 threads run it for the following clips. They share the operation's call scope, access no
// network share other than that of the operation, and end with it, except one that is stuck in the
// kernel: it ends when its call returns, and uses nothing but what the function owns.
//
// Results and reports of unreadable files are the same with and without threads.
// SORVIK_READ_AHEAD=0 in the environment when the library is loaded keeps the threads off.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Sorvik::foundation {

// The part of ReadAhead that doesn't depend on the type of the results.
class ReadAheadThreads {
 public:
  enum class Outcome { kDone, kToDo, kStopped };

  // `read` is called at most once for each index below `count`, on any thread.
  ReadAheadThreads(std::size_t count, std::function<void(std::size_t)> read,
                   std::function<bool()> stop);
  // Doesn't wait for running reads.
  ~ReadAheadThreads();
  ReadAheadThreads(const ReadAheadThreads&) = delete;
  ReadAheadThreads& operator=(const ReadAheadThreads&) = delete;

  // kDone if a thread has read `index`. kToDo if none has begun to, or if the read failed; none
  // will. kStopped if `stop` has returned true while a thread was reading it.
  Outcome Await(std::size_t index);

  // Turns the threads of later objects on or off, to compare. Any thread.
  static void SetEnabled(bool enabled) noexcept;

  // Waits until no thread of any operation is left, or for 100 ms: a thread may be stuck.
  static void WaitForAll();

 private:
  struct State;

  bool ShouldStart(std::size_t index) const;
  void Start(std::size_t index);

  std::size_t count_;
  std::function<void(std::size_t)> read_;
  std::function<bool()> stop_;
  std::shared_ptr<State> state_;  // null until threads are started
};

// Used by one thread.
template <class Result>
class ReadAhead {
 public:
  // `read` returns the result for an index below `count`. It must own what it uses, not depend on
  // other reads of the same object, and may run on several threads at once. `stop` is called on the
  // caller's thread.
  ReadAhead(std::size_t count, std::function<Result(std::size_t)> read,
            std::function<bool()> stop = {})
      : results_(std::make_shared<Results>(count)),
        read_(std::move(read)),
        threads_(
            count,
            [results = results_, read = read_](std::size_t i) { (*results)[i].emplace(read(i)); },
            std::move(stop)) {}

  // The result for `index`, once; indexes in ascending order. An empty result once `stop` has
  // returned true.
  Result Take(std::size_t index) {
    switch (threads_.Await(index)) {
      case ReadAheadThreads::Outcome::kDone:
        return *std::exchange((*results_)[index], std::nullopt);
      case ReadAheadThreads::Outcome::kStopped:
        return Result();
      case ReadAheadThreads::Outcome::kToDo:
        break;
    }
    return read_(index);
  }

 private:
  using Results = std::vector<std::optional<Result>>;

  std::shared_ptr<Results> results_;
  std::function<Result(std::size_t)> read_;
  ReadAheadThreads threads_;
};

// Lists folders ahead into the call scope. Used by one thread, within a scope.
class FolderReadAhead {
 public:
  explicit FolderReadAhead(std::vector<std::string> folders, std::function<bool()> stop = {});

  // Call before listing the folder with this index, in ascending order.
  void Await(std::size_t index);

 private:
  ReadAheadThreads threads_;
};

}  // namespace Sorvik::foundation
