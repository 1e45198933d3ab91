// SPDX-License-Identifier: MIT
#include "thumbnails/IconDrawing.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <span>
#include <string>

#include "foundation/hestra/PathUtils.h"
#include "foundation/imaging/Stretch.h"
#include "thumbnails/OwnedBitplate.h"

namespace Sorvik {
namespace {

using imaging::Canvas;
using imaging::Icon;
using imaging::IconSource;

bool HasAlpha(const Canvas& canvas) {
  for (int y = 0; y < canvas.height; ++y) {
    const auto row = canvas.Row(y);
    for (std::size_t i = 3; i < row.size(); i += 4) {
      if (row[i] != 0) return true;
    }
  }
  return false;
}

// Applies the mask of an icon without an alpha channel. The mask isn't scaled: its rows and columns
// are those of the canvas. Masked pixels have only their blue cleared, for compatibility. Returns
// false if the mask has fewer rows than the canvas.
bool ApplyMask(const Icon& icon, const Canvas& canvas) {
  const int rows = std::min(icon.maskHeight, canvas.height);
  if (rows != canvas.height) return false;
  const auto maskWidth = static_cast<std::size_t>(icon.maskWidth);
  for (int y = 0; y < rows; ++y) {
    const auto pixels = canvas.Row(y);
    const auto words =
        std::span(icon.mask).subspan(static_cast<std::size_t>(y) * maskWidth, maskWidth);
    for (std::size_t x = 0; x * 4 < pixels.size(); ++x) {
      const std::uint32_t word = x < words.size() ? words[x] : 0;
      if ((word & 0xFF) != 0) {
        pixels[x * 4] = 0;
      } else {
        pixels[x * 4 + 3] = 255;
      }
    }
  }
  return true;
}

Bitplate** DrawIfPresent(const std::optional<Icon>& icon, int width, int height) {
  return icon ? DrawIcon(*icon, width, height) : nullptr;
}

}  // namespace

int IconSideFor(int width, int height) {
  constexpr int kSmall = 16;
  constexpr int kShell = 32;
  const auto distance = [width, height](std::int64_t side) {
    return std::abs(width - side) + std::abs(height - side);
  };
  if (distance(kSmall) < distance(kShell)) return kSmall;
  // Themes have a separate 48-pixel drawing; larger icons are scaled down from one large drawing.
  constexpr int kLarge = 48;
  constexpr int kMaxIconSize = 512;
  const int longer = std::max(width, height);
  if (longer <= (kShell + kLarge) / 2) return kShell;
  return longer <= kLarge + kSmall ? kLarge : std::min(longer, kMaxIconSize);
}

Bitplate** DrawIcon(const Icon& icon, int width, int height) {
  OwnedBitplate plate = NewBitplate(width, height);
  if (!plate) return nullptr;
  bitplateLockPixels(plate.get());
  const Canvas canvas = CanvasOf(plate.get());
  const auto rowLength = static_cast<std::size_t>(icon.width) * 4;
  const std::span<const std::uint8_t> pixels(icon.pixels);
  imaging::StretchPicture(
      {icon.width, icon.height, imaging::kBGRA,
       [&](int y) { return pixels.subspan(static_cast<std::size_t>(y) * rowLength, rowLength); }},
      canvas, {0, 0, width, height});
  const bool drawn = HasAlpha(canvas) || ApplyMask(icon, canvas);
  bitplateUnlockPixels(plate.get());
  return drawn ? plate.release() : nullptr;
}

Bitplate** DrawFolderIcon(const IconSource& source, int width, int height) {
  return DrawIfPresent(source.OfFolder(IconSideFor(width, height)), width, height);
}

Bitplate** DrawIconOfPath(const IconSource& source, const Hestra::UTF16String& path, int width,
                          int height) {
  // Icons depend on name and kind alone, so a missing file gets the icon of an existing one.
  if (Hestra::PathUtils::IsDirectory(path)) return DrawFolderIcon(source, width, height);
  const std::string name = Hestra::MakeStdString(Hestra::PathUtils::GetFullFilePart(path));
  return DrawIfPresent(source.OfFile(name, IconSideFor(width, height)), width, height);
}

}  // namespace Sorvik
