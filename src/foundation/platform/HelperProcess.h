// SPDX-License-Identifier: MIT
// A child process of a helper program, which gets messages and open files over a Unix socket that
// is its standard input. One object must not be used by two threads at a time.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Sorvik::platform {

// A regular file open for reading, for another process.
class FileForHelper {
 public:
  // Returns nullopt if `path` is no regular file, can't be opened, or is on a share that must not
  // be accessed on this thread (ShareAccess.h).
  static std::optional<FileForHelper> Open(const std::string& path);
  FileForHelper(FileForHelper&& other) noexcept;
  FileForHelper& operator=(FileForHelper&&) = delete;
  ~FileForHelper();

 private:
  friend class HelperProcess;
  explicit FileForHelper(int descriptor) noexcept : descriptor_(descriptor) {}

  int descriptor_;
};

class HelperProcess {
 public:
  // Starts `program`, a full path, with an environment of its own, no other open files, and its
  // output discarded. Returns nullptr if that isn't possible.
  static std::unique_ptr<HelperProcess> Start(const std::string& program);
  // Kills the process. Never blocks on a process that is stuck in a system call.
  ~HelperProcess();
  HelperProcess(const HelperProcess&) = delete;
  HelperProcess& operator=(const HelperProcess&) = delete;

  // Sends a short message together with an open file. Returns false if the process has ended.
  bool Send(std::span<const std::byte> message, const FileForHelper& file);

  using Clock = std::chrono::steady_clock;
  enum class Received { kAll, kEnded, kStopped };
  // Receives exactly `into.size()` bytes. Returns kEnded if the process ends before, kStopped at
  // `deadline` or once `isStopped`, which is called several times per second, returns true.
  Received Receive(std::span<std::byte> into, Clock::time_point deadline,
                   const std::function<bool()>& isStopped);

  int ProcessId() const noexcept { return process_; }

 private:
  HelperProcess(int process, int socket) noexcept : process_(process), socket_(socket) {}

  int process_;
  int socket_;
};

// Returns the full path of the helper program `name`: next to the library, or in `folder` relative
// to it. Empty if it exists in neither.
std::string FindHelperProgram(std::string_view name, std::string_view folder);

}  // namespace Sorvik::platform
