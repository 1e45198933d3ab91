// SPDX-License-Identifier: MIT
// Pictures of the entries of one path, as the options ask for: of the clip, else the icon of its
// provider; from the cache if that is wanted.
#pragma once

#include <string>

#include "Commands.h"
#include "PictureCache.h"

namespace host {

// A maximum size; a side of 0 isn't limited.
struct PictureSize {
  int width;
  int height;
};

class ClipPictures {
 public:
  // `icons` is the size of a provider's own pictures.
  ClipPictures(Context& context, const Sorvik::ProviderWrapper& provider, std::string path,
               PictureSize size, PictureSize icons);

  // Requests the picture of an entry. `receive` is called while the session waits, or at once if
  // the picture is in the cache; with an empty picture if there is none.
  void Request(const std::string& key, Session::PictureReceiver receive);

 private:
  void RequestClip(const std::string& key, const std::string& file,
                   const Session::PictureReceiver& receive);
  void RequestIcon(const std::string& key, Session::PictureReceiver receive);
  std::string MainFile(const std::string& key);

  Context& context_;
  const Sorvik::ProviderWrapper& provider_;
  std::string path_;
  PictureSize size_;
  PictureSize icons_;
  PictureCache cache_;
  bool isCached_;
};

}  // namespace host
