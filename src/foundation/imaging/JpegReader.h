// SPDX-License-Identifier: MIT
// JPEG pictures read row by row, so that a large one never stands in memory as a whole (save a
// progressive one's coefficients). A file that ends early gives what there is, with a grey rest.
// One object belongs to one thread.
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
  // Reads the head. Nothing if it is damaged, or announces more than kMaxPixels. `source` must
  // outlive the reader.
  static std::optional<JpegReader> Open(const ImageSource& source);
  JpegReader(JpegReader&&) noexcept;
  JpegReader& operator=(JpegReader&&) noexcept;
  ~JpegReader();

  int Width() const noexcept;
  int Height() const noexcept;

  // Hands all rows, red, green, blue, from the top to `row`; once for each reader. False if the
  // data is damaged beyond use: some rows may have been handed out before.
  bool ReadRows(const std::function<void(std::span<const std::uint8_t>)>& row);

 private:
  struct State;
  explicit JpegReader(std::unique_ptr<State> state) noexcept;

  std::unique_ptr<State> state_;
};

}  // namespace Sorvik::imaging
