// SPDX-License-Identifier: MIT
// Reduces an opaque picture, fed row by row, to the mean of blocks of its pixels. Only a row of
// sums is held, so a picture of any height streams through. One object belongs to one thread.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "foundation/imaging/Canvas.h"

namespace Sorvik::imaging {

class BoxFilter {
 public:
  // A picture of `width` by `height` pixels in `layout` is drawn into `target` at `place`, which
  // lies within it. Blocks are counted from the left and from the bottom: drawn column c stands for
  // the source columns from c * width / place.width up to (c + 1) * width / place.width, and rows
  // likewise. A block without pixels, as there are when a picture grows, isn't written.
  BoxFilter(int width, int height, PixelLayout layout, const Canvas& target,
            const Placement& place);

  // The next row from the top; rows beyond the height are ignored.
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
