// SPDX-License-Identifier: MIT
// Icons of the desktop theme for files and folders. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "foundation/imaging/IconTheme.h"

namespace Sorvik::imaging {

// Pixels are blue, green, red, alpha with premultiplied colours. The rows of `pixels` and `mask`
// are top-down without padding.
struct Icon {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> pixels;
  // For icons without alpha: one word per pixel, whose first byte is 0 if the pixel is visible.
  int maskWidth = 0;
  int maskHeight = 0;
  std::vector<std::uint32_t> mask;
};

// `side` is the requested size in pixels; the result has the nearest available size.
class IconSource {
 public:
  virtual ~IconSource() = default;
  // The icon for the type of `fileName`, a file that needn't exist and is never opened.
  virtual std::optional<Icon> OfFile(std::string_view fileName, int side) const = 0;
  virtual std::optional<Icon> OfFolder(int side) const = 0;
};

// Icons of `theme`, which must outlive this object, by content type; the built-in icons of the
// resources where the theme has none.
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
