// SPDX-License-Identifier: MIT
// Pictures kept on disk, in the folders and the format that the thumbnail specification of
// freedesktop.org defines, so that file managers share them: $XDG_CACHE_HOME/thumbnails, a PNG per
// file and size class. Any thread.
#pragma once

#include <optional>
#include <string>

#include "Picture.h"

namespace host {

class PictureCache {
 public:
  // The cache for pictures of at most `width` by `height` pixels; a side of 0 isn't limited.
  PictureCache(int width, int height);

  // The longest side of cached pictures. 0 if no size class is large enough: nothing is cached.
  int Side() const noexcept { return side_; }

  // Returns the picture of `file`; nullopt if there is none or the file has changed since.
  std::optional<Picture> Find(const std::string& file) const;
  // Stores the picture of `file`. Failures are ignored: the picture is made again next time.
  void Store(const std::string& file, const Picture& picture) const;

 private:
  int side_ = 0;
  std::string folder_;  // empty if nothing is cached
};

}  // namespace host
