// SPDX-License-Identifier: MIT
// The system's icons for files and folders. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "foundation/imaging/IconTheme.h"

namespace Sorvik::imaging {

// Pixels are blue, green, red, alpha with premultiplied colours; rows of both pictures go top-down
// without gaps.
struct Icon {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> pixels;
  // What icons without alpha have instead: a word for each pixel, 0 in its first byte where the
  // icon is to be seen.
  int maskWidth = 0;
  int maskHeight = 0;
  std::vector<std::uint32_t> mask;
};

// `side` is the size that is wanted in pixels; what comes is the nearest that there is.
class IconSource {
 public:
  virtual ~IconSource() = default;
  // The icon of the kind of file that `fileName` tells, which needn't exist and is never opened.
  virtual std::optional<Icon> OfFile(std::string_view fileName, int side) const = 0;
  virtual std::optional<Icon> OfFolder(int side) const = 0;
};

// The content types of the system and the icons of `theme`, which must outlive it; where that has
// none, the pictures of the application's resources.
class ThemeIconSource final : public IconSource {
 public:
  explicit ThemeIconSource(const IconTheme& theme) : theme_(theme) {}
  std::optional<Icon> OfFile(std::string_view fileName, int side) const override;
  std::optional<Icon> OfFolder(int side) const override;

 private:
  std::optional<Icon> Find(const std::vector<std::string>& names, IconContext context,
                           int side) const;

  const IconTheme& theme_;
};

}  // namespace Sorvik::imaging
