// SPDX-License-Identifier: MIT
// Operations on single files. Negative results (as signed 32-bit numbers) are errors. Any thread.
#pragma once

#include <cstdint>

#include "SorvikProvider/foundation/UTF16String.h"

namespace Hestra::File {

using FileResult = std::int32_t;
inline constexpr FileResult kFileDone = 0;
inline constexpr FileResult kFileFailed = static_cast<FileResult>(0xA00F0002u);
inline constexpr FileResult kFileMissing = static_cast<FileResult>(0xA00F0003u);

// Gets the modification time in nanoseconds since 1970; 0 for earlier times.
FileResult GetLastModificationTime(const UTF16String& path, std::uint64_t& time);

// Gets the size of a regular file in bytes. Returns kFileMissing if it doesn't exist, kFileFailed
// if it is no regular file or can't be opened.
FileResult SizeOnDisk(const UTF16String& path, std::uint64_t& size);

}  // namespace Hestra::File
