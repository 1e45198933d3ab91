// SPDX-License-Identifier: MIT
#include "foundation/hestra/File.h"

#include "foundation/hestra/PathUtils.h"
#include "foundation/platform/FileSystem.h"

namespace Hestra::File {

FileResult GetLastModificationTime(const UTF16String& path, std::uint64_t& time) {
  if (!PathUtils::IsValidPath(path)) return kFileMissing;
  const auto found = Sorvik::platform::ModificationTime(MakeStdString(path));
  if (!found) return kFileMissing;
  time = *found < 0 ? 0 : static_cast<std::uint64_t>(*found);
  return kFileDone;
}

FileResult SizeOnDisk(const UTF16String& path, std::uint64_t& size) {
  if (!PathUtils::ExistsOnDisk(path)) return kFileMissing;
  const auto file = Sorvik::platform::RegularFile::Open(MakeStdString(path));
  if (!file) return kFileFailed;
  size = file->Size();
  return kFileDone;
}

}  // namespace Hestra::File
