// SPDX-License-Identifier: MIT
// Looks icons up in the freedesktop icon themes below the XDG data folders: Adwaita, then hicolor.
// The theme is fixed, so that no settings service is asked. Only the index of a theme is read; of
// icons, only whether they are there. Immutable once made, so any thread may ask.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace Sorvik::imaging {

// What an icon stands for: the themes keep these apart.
enum class IconContext { kMimeTypes, kPlaces };

struct IconFile {
  std::string path;
  bool isSvg;
};

class IconTheme {
 public:
  // `dataFolders` as in XDG_DATA_HOME and XDG_DATA_DIRS, strongest first, without "icons".
  explicit IconTheme(const std::vector<std::string>& dataFolders);
  // The theme of this machine, read at the first call.
  static const IconTheme& System();

  // The first of `names` that a theme has, in the size nearest to `size`: that size, else the
  // smallest larger one, else the largest. Nothing if no theme has one.
  std::optional<IconFile> Find(const std::vector<std::string>& names, IconContext context,
                               int size) const;

 private:
  // A folder of icons of one size, in every place where the theme is installed.
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
