// SPDX-License-Identifier: MIT
// Downscales an opaque picture, passed row by row, to the mean of blocks of pixels. Stores only one
// row of sums, so memory doesn't depend on the height. Not thread-safe.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "foundation/imaging/Canvas.h"

namespace Sorvik::imaging {

class BoxFilter {
 public:
  // Draws a picture of `width` by `height` pixels in `layout` into `target` at `place`, which must
  // be inside it. Blocks are counted from the left and from the bottom: target column c is the mean
  // of the source columns from c * width / place.width up to (c + 1) * width / place.width; the
  // same for rows. Empty blocks, which occur when a picture is upscaled, aren't written.
  BoxFilter(int width, int height, PixelLayout layout, const Canvas& target,
            const Placement& place);

  // Adds the next row from the top. Ignores rows beyond the height.
  void AddRow(std::span<const std::uint8_t> row);

 private:
  std::int64_t FirstRowOf(int drawnRow) const noexcept;
  void SkipEmptyRows() noexcept;
  void FoldColumns();
  void WriteRow();

  struct Block {
    int drawn;  // column of the place
    int begin;  // source columns
    int end;
  };
  struct Sums {
    std::uint64_t red = 0;
    std::uint64_t green = 0;
    std::uint64_t blue = 0;
  };

  PixelLayout layout_;
  Canvas target_;
  Placement place_;
  std::int64_t height_;
  std::vector<Block> blocks_;
  std::vector<Sums> sums_;  // one for each of blocks_
  // Sums down the columns of the rows since the last fold, one for each byte of a row.
  std::vector<std::uint16_t> columns_;
  int rowsInColumns_ = 0;
  std::uint64_t rowsInSums_ = 0;
  std::int64_t nextRow_;  // counted from the bottom
  int drawnRow_;          // counted from the bottom; -1 at the end
};

}  // namespace Sorvik::imaging
