// SPDX-License-Identifier: MIT
#include "SorvikProvider/cardtools/EntryFiles.h"

#include <string_view>
#include <unordered_set>

#include "foundation/Paths.h"
#include "foundation/platform/FileStatus.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/ShareAccess.h"

namespace Sorvik {

EntryFiles FindEntryFiles(const std::string& path, const std::vector<std::string>& paths,
                          const std::function<bool()>& isStopped) {
  const platform::ShareScope shares(path);
  EntryFiles result;
  std::unordered_set<std::string_view> seen;
  for (const std::string& file : paths) {
    if (isStopped && isStopped()) break;
    if (!foundation::IsValidPath(file) || !seen.insert(file).second) continue;
    const auto status = platform::StatusOf(file);
    if (status && status->kind == platform::FileKind::kRegular) {
      result.files.push_back({file, status->bytes});
    } else if (!status && platform::IsOnUnresponsiveShare(file)) {
      result.unreachable.push_back(file);
    }
  }
  return result;
}

}  // namespace Sorvik
