// SPDX-License-Identifier: MIT
// The mark of what leaves the library; everything else is hidden.
#pragma once

#if defined(__GNUC__)
#define SORVIK_EXPORT __attribute__((visibility("default")))
#else
#define SORVIK_EXPORT
#endif
