// SPDX-License-Identifier: MIT
#include "foundation/imaging/BoxFilter.h"

#include <algorithm>
#include <cstddef>

namespace Sorvik::imaging {
namespace {

// The maximum number of bytes whose sum fits in 16 bits.
constexpr int kMaxRowsInColumns = 65535 / 255;

}  // namespace

BoxFilter::BoxFilter(int width, int height, PixelLayout layout, const Canvas& target,
                     const Placement& place)
    : layout_(layout),
      target_(target),
      place_(place),
      height_(height),
      columns_(static_cast<std::size_t>(width) * static_cast<std::size_t>(layout.bytes)),
      nextRow_(height - 1),
      drawnRow_(place.width > 0 ? place.height - 1 : -1) {
  for (int c = 0; c < place.width; ++c) {
    const auto begin = static_cast<int>(std::int64_t{c} * width / place.width);
    const auto end = static_cast<int>((std::int64_t{c} + 1) * width / place.width);
    if (begin < end) blocks_.push_back({c, begin, end});
  }
  sums_.resize(blocks_.size());
  SkipEmptyRows();
}

std::int64_t BoxFilter::FirstRowOf(int drawnRow) const noexcept {
  return std::int64_t{drawnRow} * height_ / place_.height;
}

void BoxFilter::SkipEmptyRows() noexcept {
  while (drawnRow_ >= 0 && FirstRowOf(drawnRow_) == FirstRowOf(drawnRow_ + 1)) --drawnRow_;
}

void BoxFilter::AddRow(std::span<const std::uint8_t> row) {
  if (drawnRow_ < 0 || nextRow_ < 0) return;
  // Sum down the columns first: this loop visits every byte of the picture and vectorizes.
  const std::size_t count = std::min(columns_.size(), row.size());
  std::uint16_t* sums = columns_.data();
  const std::uint8_t* bytes = row.data();
  if (rowsInColumns_ == 0) {
    for (std::size_t i = 0; i < count; ++i) sums[i] = bytes[i];
  } else {
    for (std::size_t i = 0; i < count; ++i)
      sums[i] = static_cast<std::uint16_t>(sums[i] + bytes[i]);
  }
  ++rowsInColumns_;
  const bool blockEnds = nextRow_ == FirstRowOf(drawnRow_);
  if (blockEnds || rowsInColumns_ == kMaxRowsInColumns) FoldColumns();
  if (blockEnds) WriteRow();
  --nextRow_;
}

void BoxFilter::FoldColumns() {
  const auto bytes = static_cast<std::size_t>(layout_.bytes);
  for (std::size_t b = 0; b < blocks_.size(); ++b) {
    Sums sums;
    const std::uint16_t* pixel =
        columns_.data() + static_cast<std::size_t>(blocks_[b].begin) * bytes;
    for (int column = blocks_[b].begin; column < blocks_[b].end; ++column, pixel += bytes) {
      sums.red += pixel[layout_.red];
      sums.green += pixel[layout_.green];
      sums.blue += pixel[layout_.blue];
    }
    sums_[b].red += sums.red;
    sums_[b].green += sums.green;
    sums_[b].blue += sums.blue;
  }
  rowsInSums_ += static_cast<std::uint64_t>(rowsInColumns_);
  rowsInColumns_ = 0;
}

void BoxFilter::WriteRow() {
  const auto row = target_.Row(place_.y + place_.height - 1 - drawnRow_);
  for (std::size_t b = 0; b < blocks_.size(); ++b) {
    const std::uint64_t count =
        rowsInSums_ * static_cast<std::uint64_t>(blocks_[b].end - blocks_[b].begin);
    const auto pixel = row.subspan(static_cast<std::size_t>(place_.x + blocks_[b].drawn) * 4, 4);
    pixel[0] = static_cast<std::uint8_t>(sums_[b].blue / count);
    pixel[1] = static_cast<std::uint8_t>(sums_[b].green / count);
    pixel[2] = static_cast<std::uint8_t>(sums_[b].red / count);
    pixel[3] = 255;
    sums_[b] = {};
  }
  rowsInSums_ = 0;
  --drawnRow_;
  SkipEmptyRows();
}

}  // namespace Sorvik::imaging
