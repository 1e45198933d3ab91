// SPDX-License-Identifier: MIT
// A network share for tests: shows a folder of the machine through FUSE, mounted with the type of a
// network file system. Like many of those it doesn't report allocated blocks. A test stops the
// process to simulate a server that is unreachable.
//   sorvik-test-share FOLDER MOUNT_POINT TYPE_SUFFIX
// Prints a line when the share is mounted, and then one for each command line that it reads:
//   delay N   every call takes N microseconds more
//   block N   the N-th call from now on and all later ones block
//   lift      ends the block
//   calls     prints the number of calls since the last "block"
//   most      prints the largest number of calls at the same time since the last "most"
// SORVIK_TEST_SHARE_DELAY in the environment sets the delay from the beginning.
#define FUSE_USE_VERSION FUSE_MAKE_VERSION(3, 12)
#include <dirent.h>
#include <fcntl.h>
#include <fuse.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace {

// The commands of the test. Never destroyed: the command thread outlives main().
class Conduct {
 public:
  static Conduct& Get() {
    static Conduct& conduct = *new Conduct;
    return conduct;
  }

  // At the start of every call.
  void Enter() {
    std::unique_lock lock(mutex_);
    const long call = ++calls_;
    const std::chrono::microseconds delay(delay_);
    lifted_.wait(lock, [&] { return call < blockAt_; });
    most_ = std::max(most_, ++running_);
    lock.unlock();
    if (delay.count() > 0) std::this_thread::sleep_for(delay);
    lock.lock();
    --running_;
  }

  void ReadCommands() {
    char command[16];
    long number = 0;
    char line[64];
    while (std::fgets(line, sizeof line, stdin) != nullptr) {
      number = 0;
      if (std::sscanf(line, "%15s %ld", command, &number) >= 1) Do(command, number);
      std::fflush(stdout);
    }
  }

 private:
  static constexpr long kNever = std::numeric_limits<long>::max();

  static long DelayOfEnvironment() {
    const char* const text = std::getenv("SORVIK_TEST_SHARE_DELAY");
    return text == nullptr ? 0 : std::atol(text);
  }

  void Do(const std::string& command, long number) {
    const std::lock_guard lock(mutex_);
    if (command == "delay") delay_ = number;
    if (command == "block") {
      calls_ = 0;
      blockAt_ = number;
    }
    if (command == "lift") blockAt_ = kNever;
    std::printf("%ld\n", command == "most" ? std::exchange(most_, 0) : calls_);
    lifted_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable lifted_;
  long calls_ = 0;
  long running_ = 0;  // in their delay
  long most_ = 0;
  long delay_ = DelayOfEnvironment();  // microseconds
  long blockAt_ = kNever;
};

int root;  // descriptor of the folder

// Paths begin with a separator.
const char* relative(const char* path) { return path[1] == '\0' ? "." : path + 1; }

int share_getattr(const char* path, struct stat* facts, struct fuse_file_info* info) {
  static_cast<void>(info);
  Conduct::Get().Enter();
  if (fstatat(root, relative(path), facts, AT_SYMLINK_NOFOLLOW) != 0) return -errno;
  facts->st_blocks = 0;
  return 0;
}

int share_readlink(const char* path, char* target, size_t size) {
  Conduct::Get().Enter();
  const ssize_t length = readlinkat(root, relative(path), target, size - 1);
  if (length < 0) return -errno;
  target[length] = '\0';
  return 0;
}

int share_readdir(const char* path, void* list, fuse_fill_dir_t add, off_t offset,
                  struct fuse_file_info* info, enum fuse_readdir_flags flags) {
  static_cast<void>(offset);
  static_cast<void>(info);
  static_cast<void>(flags);
  Conduct::Get().Enter();
  const int descriptor = openat(root, relative(path), O_RDONLY | O_DIRECTORY);
  if (descriptor < 0) return -errno;
  DIR* folder = fdopendir(descriptor);
  if (folder == nullptr) return -errno;
  for (struct dirent* entry = readdir(folder); entry != nullptr; entry = readdir(folder)) {
    struct stat facts = {};
    facts.st_mode = static_cast<mode_t>(DTTOIF(entry->d_type));
    if (add(list, entry->d_name, &facts, 0, fuse_fill_dir_flags()) != 0) break;
  }
  closedir(folder);
  return 0;
}

int share_open(const char* path, struct fuse_file_info* info) {
  Conduct::Get().Enter();
  const int descriptor = openat(root, relative(path), O_RDONLY);
  if (descriptor < 0) return -errno;
  info->fh = static_cast<std::uint64_t>(descriptor);
  return 0;
}

int share_read(const char* path, char* buffer, size_t size, off_t offset,
               struct fuse_file_info* info) {
  static_cast<void>(path);
  Conduct::Get().Enter();
  const ssize_t got = pread(static_cast<int>(info->fh), buffer, size, offset);
  return got < 0 ? -errno : static_cast<int>(got);
}

int share_release(const char* path, struct fuse_file_info* info) {
  static_cast<void>(path);
  close(static_cast<int>(info->fh));
  return 0;
}

// Nothing is kept in the kernel's cache, so that every access asks this process.
void* share_init(struct fuse_conn_info* connection, struct fuse_config* config) {
  // Reads of several threads don't wait for each other.
  connection->max_background = 64;
  connection->congestion_threshold = 64;
  config->entry_timeout = 0;
  config->attr_timeout = 0;
  config->negative_timeout = 0;
  std::thread([] { Conduct::Get().ReadCommands(); }).detach();
  std::puts("mounted");
  std::fflush(stdout);
  return nullptr;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) return 2;
  root = open(arguments[1], O_RDONLY | O_DIRECTORY);
  if (root < 0) return 1;
  fuse_operations operations = {};
  operations.getattr = share_getattr;
  operations.readlink = share_readlink;
  operations.readdir = share_readdir;
  operations.open = share_open;
  operations.read = share_read;
  operations.release = share_release;
  operations.init = share_init;
  char options[256];
  std::snprintf(options, sizeof options, "subtype=%s,fsname=//test/share", arguments[3]);
  char flag[] = "-o";
  char* values[] = {arguments[0], flag, options};
  fuse_args fuse_arguments = FUSE_ARGS_INIT(3, values);
  fuse* const share = fuse_new(&fuse_arguments, &operations, sizeof operations, nullptr);
  if (share == nullptr || fuse_mount(share, arguments[2]) != 0) return 1;
  // Calls that block must not keep others waiting.
  constexpr unsigned kThreads = 64;
  fuse_loop_config* const loop = fuse_loop_cfg_create();
  fuse_loop_cfg_set_max_threads(loop, kThreads);
  fuse_loop_cfg_set_idle_threads(loop, kThreads);
  return fuse_loop_mt(share, loop);
}
