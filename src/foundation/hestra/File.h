// SPDX-License-Identifier: MIT
// Single files of the foundation. Results below 0 (as signed 32-bit numbers) are failures. Any
// thread.
#pragma once

#include <cstdint>

#include "SorvikProvider/foundation/UTF16String.h"

namespace Hestra::File {

using FileResult = std::int32_t;
inline constexpr FileResult kFileDone = 0;
inline constexpr FileResult kFileFailed = static_cast<FileResult>(0xA00F0002u);
inline constexpr FileResult kFileMissing = static_cast<FileResult>(0xA00F0003u);

// The time of the last change of the contents, in nanoseconds since 1970 (earlier times give 0).
FileResult GetLastModificationTime(const UTF16String& path, std::uint64_t& time);

// The size of a regular file in bytes: kFileMissing if nothing is there, kFileFailed if what is
// there is no regular file or can't be opened.
FileResult SizeOnDisk(const UTF16String& path, std::uint64_t& size);

}  // namespace Hestra::File
