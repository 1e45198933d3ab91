// SPDX-License-Identifier: MIT
// Decodes JPEG pictures row by row, so that only progressive ones need memory for the complete
// picture. The missing part of a truncated file is grey. Not thread-safe.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>

#include "foundation/imaging/ImageSource.h"

namespace Sorvik::imaging {

class JpegReader {
 public:
  // Reads the header. Returns nullopt if it is invalid or the picture has more than kMaxPixels.
  // `source` must outlive the reader.
  static std::optional<JpegReader> Open(const ImageSource& source);
  JpegReader(JpegReader&&) noexcept;
  JpegReader& operator=(JpegReader&&) noexcept;
  ~JpegReader();

  int Width() const noexcept;
  int Height() const noexcept;

  // Calls `row` with each row from the top: red, green, blue. May be called once. Returns false on
  // a fatal decoding error, possibly after some rows.
  bool ReadRows(const std::function<void(std::span<const std::uint8_t>)>& row);

 private:
  struct State;
  explicit JpegReader(std::unique_ptr<State> state) noexcept;

  std::unique_ptr<State> state_;
};

}  // namespace Sorvik::imaging
