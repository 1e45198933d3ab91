// SPDX-License-Identifier: MIT
#include "SorvikProvider/foundation/ReadFailures.h"

#include <string_view>
#include <utility>

#include "foundation/platform/ReadReports.h"

namespace Sorvik {

void SetReadFailureHandler(ReadFailureHandler handler) {
  if (!handler) return platform::SetReadReportHandler({});
  platform::SetReadReportHandler(
      [handler = std::move(handler)](const std::string& path, std::string_view reason) {
        handler({path, std::string(reason)});
      });
}

}  // namespace Sorvik
