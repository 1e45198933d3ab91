// SPDX-License-Identifier: MIT
// Looks up icons in the freedesktop icon themes in the XDG data folders: Adwaita, then hicolor. The
// themes are fixed, so no settings service is needed. Reads only the index of a theme and checks
// whether icon files exist. Immutable; any thread.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace Sorvik::imaging {

// The context of an icon in the theme specification.
enum class IconContext { kMimeTypes, kPlaces };

struct IconFile {
  std::string path;
  bool isSvg;
};

class IconTheme {
 public:
  // `dataFolders` as in XDG_DATA_HOME and XDG_DATA_DIRS, highest priority first, without "icons".
  explicit IconTheme(const std::vector<std::string>& dataFolders);
  // The themes of this machine, read at the first call.
  static const IconTheme& System();

  // Returns the first of `names` that a theme has, in the size nearest to `size`: that size, else
  // the smallest larger one, else the largest. Returns nullopt if no theme has any of them.
  std::optional<IconFile> Find(const std::vector<std::string>& names, IconContext context,
                               int size) const;

 private:
  // A folder of icons of one size, in each data folder with the theme.
  struct Section {
    std::vector<std::string> folders;
    IconContext context;
    int size;
  };
  using Theme = std::vector<Section>;

  static Theme ReadTheme(const std::vector<std::string>& dataFolders, const std::string& name);

  std::array<Theme, 2> themes_;
};

}  // namespace Sorvik::imaging
