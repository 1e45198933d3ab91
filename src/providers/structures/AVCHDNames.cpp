// SPDX-License-Identifier: MIT
#include "providers/structures/AVCHDNames.h"

#include "foundation/CardFolder.h"
#include "foundation/Paths.h"

namespace Sorvik::avchd {

using foundation::JoinPath;

std::string FindBDMVFolder(const std::string& path) {
  std::string bdmv = JoinPath(path, kBDMV);
  if (foundation::FolderExistsOnDisk(bdmv)) return bdmv;
  return JoinPath(JoinPath(path, kAVCHD), kBDMV);
}

std::optional<std::string> FindPartFile(const std::string& bdmv, std::string_view subfolder,
                                        std::string_view title, Extensions extensions) {
  const auto folder = foundation::CardFolder::Of(JoinPath(bdmv, subfolder));
  for (const std::string_view extension : extensions) {
    const std::string name = std::string(title).append(extension);
    if (folder->Contains(name)) return folder->PathOf(name);
  }
  return std::nullopt;
}

}  // namespace Sorvik::avchd
