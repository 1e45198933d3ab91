// SPDX-License-Identifier: MIT
#include "CatalogueOutput.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "Failure.h"

namespace host {
namespace {

class OutputWriter final : public LineWriter {
 public:
  explicit OutputWriter(Output& output) : output_(output) {}

  void Write(std::string_view line) override {
    if (line.starts_with("{\"type\":\"card\"")) output_.Flush();
    output_.Write(line);
  }
  void Finish() override { output_.Flush(); }

 private:
  Output& output_;
};

constexpr std::size_t kBufferBytes = std::size_t{64} << 10;

class FileWriter final : public LineWriter {
 public:
  explicit FileWriter(const std::string& path)
      : path_(TargetOf(path)), part_(IsReplaceable(path_) ? path_ + ".part" : path_) {
    const int descriptor = open(part_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor >= 0) file_ = fdopen(descriptor, "w");
    if (file_ == nullptr) Fail(part_);
    std::setvbuf(file_, nullptr, _IOFBF, kBufferBytes);
  }
  ~FileWriter() override {
    if (file_ != nullptr) std::fclose(file_);
  }
  FileWriter(const FileWriter&) = delete;
  FileWriter& operator=(const FileWriter&) = delete;

  void Write(std::string_view line) override {
    if (std::fwrite(line.data(), 1, line.size(), file_) != line.size()) Fail(part_);
  }

  void Finish() override {
    const bool isReplacing = part_ != path_;
    const bool isWritten = std::fflush(file_) == 0 && (!isReplacing || fsync(fileno(file_)) == 0);
    if (!isWritten) Fail(part_);
    const bool isClosed = std::fclose(std::exchange(file_, nullptr)) == 0;
    if (!isClosed) Fail(part_);
    if (isReplacing && std::rename(part_.c_str(), path_.c_str()) != 0) Fail(path_);
  }

 private:
  // A link stays; the file that it leads to is replaced.
  static std::string TargetOf(const std::string& path) {
    std::error_code error;
    const auto target = std::filesystem::canonical(path, error);
    return error ? path : target.string();
  }

  // A device or pipe, such as /dev/null, is written to and never replaced.
  static bool IsReplaceable(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    return !std::filesystem::exists(status) || std::filesystem::is_regular_file(status);
  }

  [[noreturn]] static void Fail(const std::string& path) {
    throw Failure(kFailed, path, std::string("cannot write (") + std::strerror(errno) + ")");
  }

  const std::string path_;
  const std::string part_;
  std::FILE* file_ = nullptr;
};

}  // namespace

std::unique_ptr<LineWriter> WriteLinesToOutput(Output& output) {
  return std::make_unique<OutputWriter>(output);
}

std::unique_ptr<LineWriter> WriteLinesToFile(const std::string& path) {
  return std::make_unique<FileWriter>(path);
}

}  // namespace host
