// SPDX-License-Identifier: MIT
// Compresses test data as PNG and PDF store it.
#pragma once

#include <zlib.h>

#include <string>

namespace sorvik_test {

inline std::string Deflated(const std::string& text) {
  uLongf size = compressBound(text.size());
  std::string packed(size, '\0');
  compress(reinterpret_cast<Bytef*>(packed.data()), &size,
           reinterpret_cast<const Bytef*>(text.data()), text.size());
  packed.resize(size);
  return packed;
}

}  // namespace sorvik_test
