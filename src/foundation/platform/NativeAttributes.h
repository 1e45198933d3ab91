// SPDX-License-Identifier: MIT
// Attributes, short names and creation times as FAT, exFAT, NTFS and SMB store them. Sources: Linux
// include/uapi/linux/msdos_fs.h; the extended attributes of ntfs-3g and of the kernel's ntfs3 and
// SMB client.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "foundation/platform/FolderView.h"

namespace Sorvik::platform {

class NativeAttributes {
 public:
  virtual ~NativeAttributes() = default;

  // Returns the reader for the items of an open folder; nullptr if its file system stores no
  // attributes. The descriptor `folder` must stay open while the result exists.
  static std::unique_ptr<NativeAttributes> Of(int folder);

  // The bits of a regular file or folder; nullopt if they can't be read.
  virtual std::optional<std::uint32_t> BitsOf(const char* name) const = 0;
  virtual std::string ShortNameOf(const char* name) const = 0;
  virtual std::optional<FileTime> CreationOf(const char* name) const = 0;
};

}  // namespace Sorvik::platform
