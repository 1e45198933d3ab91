// SPDX-License-Identifier: MIT
#include "SorvikProvider/cardtools/Catalogue.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <set>
#include <utility>

#include "cardtools/CardSearch.h"
#include "cardtools/CatalogueFolder.h"
#include "foundation/Paths.h"
#include "foundation/platform/FileStatus.h"
#include "foundation/platform/ShareAccess.h"
#include "frame/AbortWatchdog.h"
#include "frame/HostState.h"
#include "frame/RequestQueue.h"

namespace Sorvik {
namespace {

using Clock = std::chrono::steady_clock;
using Guard = std::unique_lock<std::mutex>;
using Request = Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest>;

constexpr std::size_t kMaxJobs = 64;
constexpr std::chrono::milliseconds kPollTime{50};
// Folders that were found, or read out of order, wait in memory.
constexpr std::size_t kMaxFound = 16;
constexpr std::size_t kWaitingPerJob = 4;
// A search that is stuck in a folder starts again without it.
constexpr std::size_t kMaxSkippedFolders = 16;
// Workers besides those of the jobs: the search, stuck ones included until they are replaced.
constexpr std::size_t kFurtherWorkers = 4;

// What the requests and the calling thread share. Requests that are stuck may outlive the run.
struct Shared {
  std::mutex mutex;
  std::condition_variable changed;  // the calling thread waits for it
};

enum class State { kWaiting, kRunning, kDone, kAborted };

// A folder with cards, or lines that are complete already.
struct Job {
  FoundFolder folder;
  State state = State::kWaiting;
  Clock::time_point start;
  FolderLines lines;
  Request request;
};

// A search below one path.
struct Search {
  // A folder with its identity in the file system. Without cards, it can't be listed.
  struct Found {
    FoundFolder folder;
    std::pair<std::uint64_t, std::uint64_t> file;
    platform::Access access = platform::Access::kReadable;
    std::string readError = {};
  };

  State state = State::kRunning;
  std::set<std::string> skipped;
  std::deque<Found> found;
  std::string folder;  // that is being listed
  Clock::time_point start;
  bool isBlocked = false;  // until `found` is taken
  std::condition_variable taken;
  bool hasFound = false;  // cards of other shards and repeated ones included
  Request request;
};

// A request that posts no messages.
class CatalogueRequest : public ProviderRequest {
 public:
  explicit CatalogueRequest(std::shared_ptr<Shared> shared)
      : ProviderRequest({}, ProviderRef()), shared_(std::move(shared)) {}
  Request GetRef() override { return Request(this); }

 protected:
  // Stores the outcome of the run, unless the watchdog has answered.
  template <class Store>
  void Finish(Store store) {
    if (!AbortRecord::Of(*this).ClaimForRun()) return;
    const Guard lock(shared_->mutex);
    store();
    shared_->changed.notify_all();
  }

  const std::shared_ptr<Shared> shared_;
};

class FolderRequest final : public CatalogueRequest {
 public:
  FolderRequest(std::shared_ptr<Shared> shared, std::shared_ptr<Job> job,
                std::shared_ptr<const CatalogueOptions> options,
                std::shared_ptr<const KnownCards> known)
      : CatalogueRequest(std::move(shared)),
        job_(std::move(job)),
        options_(std::move(options)),
        known_(std::move(known)) {}

  void Run() override {
    FolderLines lines;
    try {
      lines = CatalogueFolder(job_->folder, *options_, known_.get(), *this);
    } catch (const std::exception& failure) {
      lines.lines = ProblemLine(job_->folder.path, "unreadable", failure.what());
      lines.result = {};
      lines.result.problems = 1;
      lines.result.anyTransient = true;
    }
    const bool isAborted = TestAborted();
    Finish([&] {
      job_->lines = std::move(lines);
      job_->state = isAborted ? State::kAborted : State::kDone;
    });
  }

 private:
  void PostAborted() const override {
    const Guard lock(shared_->mutex);
    job_->state = State::kAborted;
    shared_->changed.notify_all();
  }

  const std::shared_ptr<Job> job_;
  const std::shared_ptr<const CatalogueOptions> options_;
  const std::shared_ptr<const KnownCards> known_;
};

class SearchRequest final : public CatalogueRequest {
 public:
  SearchRequest(std::shared_ptr<Shared> shared, std::shared_ptr<Search> search, std::string path,
                bool searchesBelow, std::shared_ptr<const KnownCards> known)
      : CatalogueRequest(std::move(shared)),
        search_(std::move(search)),
        path_(std::move(path)),
        searchesBelow_(searchesBelow),
        known_(std::move(known)) {}

  void Run() override {
    CardSearchHooks hooks;
    hooks.receive = [this](FoundFolder folder) { return Receive(std::move(folder)); };
    hooks.enter = [this](const std::string& path) { return Enter(path); };
    hooks.unreadable = [this](const std::string& path) {
      const platform::Access access = platform::AccessOf(path);
      if (access != platform::Access::kReadable) {
        Receive({path, {}, false}, access, platform::ReadError(path));
      }
    };
    if (known_) hooks.known = [this](const std::string& path) { return known_->At(path); };
    try {
      if (searchesBelow_) {
        SearchCards(path_, SearchDirection::kDeep, hooks, this);
      } else if (auto cards = CardsAt(path_, this); !cards.empty()) {
        Receive({path_, std::move(cards), known_ && !known_->At(path_).empty()});
      }
    } catch (const std::exception&) {
      Abort();  // the search is incomplete
    }
    const bool isAborted = TestAborted();
    Finish([&] { search_->state = isAborted ? State::kAborted : State::kDone; });
  }

 private:
  bool Enter(const std::string& path) {
    const Guard lock(shared_->mutex);
    search_->folder = path;
    search_->start = Clock::now();
    return !search_->skipped.contains(path);
  }

  bool Receive(FoundFolder folder, platform::Access access = platform::Access::kReadable,
               std::string readError = {}) {
    const auto status = platform::StatusOf(folder.path);
    if (!status) return true;  // removed in the meantime
    Guard lock(shared_->mutex);
    search_->hasFound = search_->hasFound || !folder.cards.empty();
    search_->isBlocked = true;
    while (search_->found.size() >= kMaxFound && !TestAborted()) {
      search_->taken.wait_for(lock, kPollTime);
    }
    search_->isBlocked = false;
    search_->start = Clock::now();
    if (TestAborted()) return false;
    search_->found.push_back(
        {std::move(folder), {status->device, status->inode}, access, std::move(readError)});
    // With more of them the calling thread waits for something else.
    if (search_->found.size() == 1) shared_->changed.notify_all();
    return true;
  }

  void PostAborted() const override {
    const Guard lock(shared_->mutex);
    search_->state = State::kAborted;
    shared_->changed.notify_all();
  }

  const std::shared_ptr<Search> search_;
  const std::string path_;
  const bool searchesBelow_;
  const std::shared_ptr<const KnownCards> known_;
};

// Runs on the calling thread.
class CatalogueRun {
 public:
  CatalogueRun(const CatalogueOptions& options, const CatalogueSink& receive,
               const std::function<bool()>& isStopped)
      : options_(std::make_shared<const CatalogueOptions>(options)),
        jobs_(std::clamp<std::size_t>(options.jobs, 1, kMaxJobs)),
        receive_(receive),
        isStopped_(isStopped) {
    if (options.since) known_ = std::make_shared<const KnownCards>(options.since, options.tool);
    if (const auto pool = HostState::Get().pool) pool->RequireWidth(jobs_ + kFurtherWorkers);
  }

  // A request and what it belongs to refer to each other.
  ~CatalogueRun() {
    EndSearch();
    for (const auto& job : queue_) job->request = {};
  }
  CatalogueRun(const CatalogueRun&) = delete;
  CatalogueRun& operator=(const CatalogueRun&) = delete;

  CatalogueResult Run(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
      if (!IsStopped()) SearchPath(foundation::NormalizedPath(path));
    }
    Guard lock(shared_->mutex);
    while (!queue_.empty() && !IsStopped()) Step(lock);
    if (IsStopped()) {
      AbortAll(lock);
      result_.aborted = true;
    } else {
      lock.unlock();
      receive_(EndLine(result_));
    }
    return std::move(result_);
  }

 private:
  bool IsStopped() {
    stopped_ = stopped_ || (isStopped_ && isStopped_());
    return stopped_;
  }

  void EndSearch() {
    if (search_) search_->request = {};
  }

  void SearchPath(const std::string& path) {
    bool hasFound = false;
    std::set<std::string> skipped;
    while (!IsStopped()) {
      EndSearch();
      search_ = std::make_shared<Search>();
      search_->skipped = skipped;
      Guard lock(shared_->mutex);
      RunSearch(lock, path);
      hasFound = hasFound || search_->hasFound;
      if (search_->state == State::kDone || IsStopped()) break;
      AddProblem(search_->folder.empty() ? path : search_->folder, "timeout", "cannot be listed");
      if (!skipped.insert(search_->folder).second || skipped.size() > kMaxSkippedFolders) break;
    }
    if (!hasFound && skipped.empty() && !IsStopped()) ReportWithoutCards(path);
  }

  void RunSearch(Guard& lock, const std::string& path) {
    search_->start = Clock::now();
    search_->request =
        Request(new SearchRequest(shared_, search_, path, options_->searchesBelow, known_));
    lock.unlock();
    const bool isQueued = QueueRequest(search_->request);
    lock.lock();
    if (!isQueued) search_->state = State::kAborted;
    while ((search_->state == State::kRunning || !search_->found.empty()) && !IsStopped()) {
      Step(lock);
    }
  }

  // Takes what was found, starts jobs, writes finished ones, and waits for a change.
  void Step(Guard& lock) {
    TakeFound();
    StartJobs(lock);
    if (WriteFinished(lock)) return;
    shared_->changed.wait_for(lock, kPollTime);
    AbortOverdue();
  }

  void TakeFound() {
    while (search_ && !search_->found.empty() && queue_.size() < kWaitingPerJob * jobs_) {
      auto [folder, file, access, readError] = std::move(search_->found.front());
      search_->found.pop_front();
      // Each wake-up costs as much as several calls of the file system.
      if (search_->found.size() == kMaxFound / 2) search_->taken.notify_all();
      if (!seen_.insert(file).second) continue;
      if (ShardOf(folder.path, options_->shards) != options_->shard) continue;
      if (folder.cards.empty()) {
        AddUnreadable(folder.path, access, readError);
        continue;
      }
      auto job = std::make_shared<Job>();
      job->folder = std::move(folder);
      queue_.push_back(std::move(job));
    }
  }

  void StartJobs(Guard& lock) {
    auto running = static_cast<std::size_t>(
        std::ranges::count(queue_, State::kRunning, [](const auto& job) { return job->state; }));
    for (std::size_t i = 0; i < queue_.size() && running < jobs_; ++i) {
      const auto& job = queue_[i];
      if (job->state != State::kWaiting) continue;
      job->state = State::kRunning;
      job->start = Clock::now();
      job->request = Request(new FolderRequest(shared_, job, options_, known_));
      ++running;
      lock.unlock();
      const bool isQueued = QueueRequest(job->request);
      lock.lock();
      if (!isQueued) job->state = State::kAborted;
    }
  }

  // Writes the lines of the first jobs if they are finished. Returns false if there was nothing to
  // write.
  bool WriteFinished(Guard& lock) {
    bool hasWritten = false;
    while (!queue_.empty() && !stopped_) {
      const auto job = queue_.front();
      if (job->state == State::kWaiting || job->state == State::kRunning) break;
      queue_.pop_front();
      hasWritten = true;
      lock.unlock();
      if (job->state == State::kAborted) job->lines = LinesOfTimeout(job->folder.path);
      job->request = {};
      Write(job->lines);
      lock.lock();
    }
    return hasWritten;
  }

  static FolderLines LinesOfTimeout(const std::string& path) {
    FolderLines lines;
    lines.lines = ProblemLine(path, "timeout", "cannot be read in time");
    lines.result.problems = 1;
    lines.result.anyTransient = true;
    return lines;
  }

  void Write(const FolderLines& lines) {
    result_.cards += lines.result.cards;
    result_.clips += lines.result.clips;
    result_.files += lines.result.files;
    result_.problems += lines.result.problems;
    result_.copiedCards += lines.result.copiedCards;
    result_.anyIncomplete = result_.anyIncomplete || lines.result.anyIncomplete;
    result_.anyUnreadable = result_.anyUnreadable || lines.result.anyUnreadable;
    result_.anyTransient = result_.anyTransient || lines.result.anyTransient;
    ForEachLine(lines.lines, [this](std::string_view line) {
      if (!stopped_ && !receive_(line)) stopped_ = true;
    });
  }

  void AbortOverdue() {
    if (options_->cardTimeout.count() <= 0) return;
    const auto overdue = Clock::now() - options_->cardTimeout;
    for (const auto& job : queue_) {
      if (job->state == State::kRunning && job->start < overdue) job->request->Abort();
    }
    const bool isSearching = search_ && search_->state == State::kRunning && !search_->isBlocked;
    if (isSearching && search_->start < overdue) search_->request->Abort();
  }

  void AbortAll(Guard& lock) {
    if (search_) search_->request->Abort();
    for (const auto& job : queue_) {
      if (job->request) job->request->Abort();
    }
    const auto isRunning = [](const auto& job) { return job->state == State::kRunning; };
    while (std::ranges::any_of(queue_, isRunning) ||
           (search_ && search_->state == State::kRunning)) {
      shared_->changed.wait_for(lock, kPollTime);
    }
  }

  // Adds a line in the order of the folders.
  void AddProblem(const std::string& path, std::string_view kind, std::string_view detail) {
    auto job = std::make_shared<Job>();
    job->state = State::kDone;
    job->lines.lines = ProblemLine(path, kind, detail);
    job->lines.result.problems = 1;
    const bool isTransient = kind == "timeout";
    job->lines.result.anyTransient = isTransient;
    job->lines.result.anyUnreadable = !isTransient;
    queue_.push_back(std::move(job));
  }

  void AddUnreadable(const std::string& path, platform::Access access,
                     const std::string& readError) {
    AddProblem(path, "unreadable", readError);
    if (access != platform::Access::kTransientError) return;
    queue_.back()->lines.result.anyTransient = true;
    queue_.back()->lines.result.anyUnreadable = false;
  }

  void ReportWithoutCards(const std::string& path) {
    result_.pathsWithoutCards.push_back(path);
    const platform::Access access = platform::AccessOf(path);
    if (access != platform::Access::kReadable) {
      AddUnreadable(path, access, platform::ReadError(path));
    }
  }

  const std::shared_ptr<const CatalogueOptions> options_;
  const std::size_t jobs_;
  const CatalogueSink& receive_;
  const std::function<bool()>& isStopped_;
  std::shared_ptr<const KnownCards> known_;
  const std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
  std::shared_ptr<Search> search_;
  std::deque<std::shared_ptr<Job>> queue_;  // in the order of the lines
  std::set<std::pair<std::uint64_t, std::uint64_t>> seen_;
  CatalogueResult result_;
  bool stopped_ = false;
};

}  // namespace

CatalogueResult WriteCatalogue(const std::vector<std::string>& paths,
                               const CatalogueOptions& options, const CatalogueSink& receive,
                               const std::function<bool()>& isStopped) {
  return CatalogueRun(options, receive, isStopped).Run(paths);
}

std::uint32_t ShardOf(std::string_view path, std::uint32_t shards) {
  // FNV-1a, 64 bits.
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const char c : path) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  }
  // The low bits of this hash depend on the low bits of the characters only.
  return shards == 0 ? 0 : static_cast<std::uint32_t>((hash >> 32) % shards);
}

}  // namespace Sorvik
