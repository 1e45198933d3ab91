// SPDX-License-Identifier: MIT
#include "thumbnails/PictureFit.h"

#include <algorithm>
#include <cstdint>

namespace Sorvik {
namespace {

struct Size {
  std::int64_t width;
  std::int64_t height;
};

Size FittedSize(const Size& picture, const Size& cell) {
  if (std::min({picture.width, picture.height, cell.width, cell.height}) < 1) return cell;
  std::int64_t fitHeight = (picture.height * cell.width + picture.width / 2 - 1) / picture.width;
  if (fitHeight > cell.height) fitHeight = 0;
  std::int64_t fitWidth = (picture.width * cell.height + picture.height / 2 - 1) / picture.height;
  if (fitWidth > cell.width) fitWidth = 0;
  if (fitHeight * cell.width < fitWidth * cell.height) return {fitWidth, cell.height};
  return {cell.width, fitHeight};
}

}  // namespace

imaging::Placement FitPicture(int pictureWidth, int pictureHeight, int cellWidth, int cellHeight) {
  const Size drawn = FittedSize({pictureWidth, pictureHeight}, {cellWidth, cellHeight});
  return {static_cast<int>(std::max<std::int64_t>((cellWidth - drawn.width) / 2, 0)),
          static_cast<int>(std::max<std::int64_t>(cellHeight - drawn.height, 0)),
          static_cast<int>(drawn.width), static_cast<int>(drawn.height)};
}

}  // namespace Sorvik
