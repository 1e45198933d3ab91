// SPDX-License-Identifier: MIT
// Marks exported symbols. All others have hidden visibility.
#pragma once

#if defined(__GNUC__)
#define SORVIK_EXPORT __attribute__((visibility("default")))
#else
#define SORVIK_EXPORT
#endif
