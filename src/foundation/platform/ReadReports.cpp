// SPDX-License-Identifier: MIT
#include "foundation/platform/ReadReports.h"

#include <atomic>
#include <cerrno>
#include <memory>
#include <mutex>
#include <system_error>
#include <utility>

namespace Sorvik::platform {
namespace {

struct Handler {
  std::atomic<bool> isSet = false;
  std::mutex mutex;
  std::shared_ptr<const ReadReportHandler> handler;
};

// Never destroyed: workers may still use it while the process exits.
Handler& Current() {
  static Handler& handler = *new Handler;
  return handler;
}

thread_local ReportBuffer* currentBuffer = nullptr;

}  // namespace

ReportBuffer::ReportBuffer() noexcept { currentBuffer = this; }

ReportBuffer::~ReportBuffer() { currentBuffer = nullptr; }

void SetReadReportHandler(ReadReportHandler handler) {
  Handler& current = Current();
  const bool isSet = static_cast<bool>(handler);
  auto next = std::make_shared<const ReadReportHandler>(std::move(handler));
  const std::lock_guard lock(current.mutex);
  current.handler = std::move(next);
  current.isSet = isSet;
}

void ReportReadFailure(const std::string& path, std::string_view reason) {
  Handler& current = Current();
  if (!current.isSet) return;
  if (currentBuffer != nullptr) {
    currentBuffer->reports_.emplace_back(path, reason);
    return;
  }
  std::shared_ptr<const ReadReportHandler> handler;
  {
    const std::lock_guard lock(current.mutex);
    handler = current.handler;
  }
  if (*handler) (*handler)(path, reason);
}

void ReportReadError(const std::string& path, int error) {
  if (error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG || error == ELOOP) return;
  ReportReadFailure(path, std::generic_category().message(error));
}

}  // namespace Sorvik::platform
