// SPDX-License-Identifier: MIT
// Where the functions that read files report what exists but can't be read.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace Sorvik::platform {

// Paths are bytes.
using ReadReportHandler = std::function<void(const std::string& path, std::string_view reason)>;

// An empty function removes the handler. Any thread.
void SetReadReportHandler(ReadReportHandler handler);

// Calls the handler, if there is one.
void ReportReadFailure(const std::string& path, std::string_view reason);
// The same for an error number of the system. Does nothing if it means that there is no such file.
void ReportReadError(const std::string& path, int error);

}  // namespace Sorvik::platform
