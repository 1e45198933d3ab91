// SPDX-License-Identifier: MIT
#include "foundation/platform/HelperProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <utility>
#include <vector>

#include "foundation/platform/FileSystem.h"
#include "foundation/platform/ShareAccess.h"

namespace Sorvik::platform {
namespace {

constexpr int kPollMilliseconds = 20;

// Ended processes whose exit status hasn't been collected because they were stuck.
class Unreaped {
 public:
  void Add(pid_t process) {
    const std::lock_guard lock(mutex_);
    processes_.push_back(process);
    Collect();
  }

 private:
  void Collect() {
    std::erase_if(processes_,
                  [](pid_t process) { return waitpid(process, nullptr, WNOHANG) != 0; });
  }

  std::mutex mutex_;
  std::vector<pid_t> processes_;
};

// Never destroyed: workers may still use it while the process exits.
Unreaped& GetUnreaped() {
  static Unreaped& unreaped = *new Unreaped;
  return unreaped;
}

// Collects the exit status of a killed process, which takes a moment.
void Reap(pid_t process) {
  constexpr int kMaxTries = 50;
  for (int i = 0; i < kMaxTries; ++i) {
    if (waitpid(process, nullptr, WNOHANG) != 0) return;
    usleep(1000);
  }
  GetUnreaped().Add(process);
}

// What the process inherits: `socket` as its standard input, and the settings of a new process.
class SpawnSettings {
 public:
  explicit SpawnSettings(int socket) {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_adddup2(&actions_, socket, STDIN_FILENO);
    posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    posix_spawnattr_init(&attributes_);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes_, &signals);
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes_, &signals);
    // A group of its own: Ctrl-C on a terminal is for the host alone.
    posix_spawnattr_setpgroup(&attributes_, 0);
    posix_spawnattr_setflags(
        &attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  }
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  const posix_spawn_file_actions_t* Actions() const { return &actions_; }
  const posix_spawnattr_t* Attributes() const { return &attributes_; }

 private:
  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
};

bool IsExecutable(const std::string& path) {
  return KindOf(path) == FileKind::kRegular && access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::optional<FileForHelper> FileForHelper::Open(const std::string& path) {
  const auto access = ShareAccess::CurrentOr(path);
  if (access->HasShares() && access->OtherShareAt(path).share != nullptr) return std::nullopt;
  // Opening a device or FIFO can have side effects, so check the type first, and again after
  // opening, since the file may have been replaced in between.
  if (KindOf(path) != FileKind::kRegular) return std::nullopt;
  FileForHelper file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat facts;
  if (file.descriptor_ < 0 || fstat(file.descriptor_, &facts) != 0 || !S_ISREG(facts.st_mode)) {
    return std::nullopt;
  }
  return file;
}

FileForHelper::FileForHelper(FileForHelper&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

FileForHelper::~FileForHelper() {
  if (descriptor_ >= 0) close(descriptor_);
}

std::unique_ptr<HelperProcess> HelperProcess::Start(const std::string& program) {
  int sockets[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) return nullptr;
  std::string path = program;
  // The libraries of helpers would start threads of their own.
  std::string variables[] = {"OMP_NUM_THREADS=1", "LC_ALL=C", "MALLOC_ARENA_MAX=1"};
  char* const arguments[] = {path.data(), nullptr};
  char* const environment[] = {variables[0].data(), variables[1].data(), variables[2].data(),
                               nullptr};
  pid_t process = -1;
  const SpawnSettings settings(sockets[1]);
  const int error = posix_spawn(&process, path.c_str(), settings.Actions(), settings.Attributes(),
                                arguments, environment);
  close(sockets[1]);
  if (error == 0) return std::unique_ptr<HelperProcess>(new HelperProcess(process, sockets[0]));
  close(sockets[0]);
  return nullptr;
}

HelperProcess::~HelperProcess() {
  close(socket_);
  kill(process_, SIGKILL);
  Reap(process_);
}

bool HelperProcess::Send(std::span<const std::byte> message, const FileForHelper& file) {
  iovec data{const_cast<std::byte*>(message.data()), message.size()};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
  msghdr header{};
  header.msg_iov = &data;
  header.msg_iovlen = 1;
  header.msg_control = control.data();
  header.msg_controllen = control.size();
  cmsghdr* attached = CMSG_FIRSTHDR(&header);
  attached->cmsg_level = SOL_SOCKET;
  attached->cmsg_type = SCM_RIGHTS;
  attached->cmsg_len = CMSG_LEN(sizeof(int));
  std::memcpy(CMSG_DATA(attached), &file.descriptor_, sizeof(int));
  ssize_t sent;
  do {
    sent = sendmsg(socket_, &header, MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  return sent == static_cast<ssize_t>(message.size());
}

HelperProcess::Received HelperProcess::Receive(std::span<std::byte> into,
                                               Clock::time_point deadline,
                                               const std::function<bool()>& isStopped) {
  while (!into.empty()) {
    pollfd waiting{socket_, POLLIN, 0};
    const int ready = poll(&waiting, 1, kPollMilliseconds);
    if (ready < 0 && errno != EINTR) return Received::kEnded;
    if (Clock::now() >= deadline || isStopped()) return Received::kStopped;
    if (ready <= 0) continue;
    const ssize_t count = recv(socket_, into.data(), into.size(), MSG_DONTWAIT);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (count <= 0) return Received::kEnded;
    into = into.subspan(static_cast<std::size_t>(count));
  }
  return Received::kAll;
}

std::string FindHelperProgram(std::string_view name, std::string_view folder) {
  const std::string& library = OwnLibraryPath();
  const std::string own = library.substr(0, library.rfind('/') + 1);
  for (const std::string& path :
       {own + std::string(name), own + std::string(folder) + "/" + std::string(name)}) {
    if (IsExecutable(path)) return path;
  }
  return {};
}

}  // namespace Sorvik::platform
