// SPDX-License-Identifier: MIT
// Where the functions that read files report what exists but can't be read.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Sorvik::platform {

// Paths are bytes.
using ReadReportHandler = std::function<void(const std::string& path, std::string_view reason)>;

// An empty function removes the handler. Any thread.
void SetReadReportHandler(ReadReportHandler handler);

// Calls the handler, if there is one.
void ReportReadFailure(const std::string& path, std::string_view reason);
// The same for an error number of the system. Does nothing if it means that there is no such file.
void ReportReadError(const std::string& path, int error);

// Keeps the reports of this thread instead of passing them on, for a thread that works ahead of the
// one that reports in order. Not nested.
class ReportBuffer {
 public:
  using Reports = std::vector<std::pair<std::string, std::string>>;  // path and reason

  ReportBuffer() noexcept;
  ~ReportBuffer();
  ReportBuffer(const ReportBuffer&) = delete;
  ReportBuffer& operator=(const ReportBuffer&) = delete;

  Reports Take() noexcept { return std::exchange(reports_, {}); }

 private:
  friend void ReportReadFailure(const std::string& path, std::string_view reason);

  Reports reports_;
};

}  // namespace Sorvik::platform
