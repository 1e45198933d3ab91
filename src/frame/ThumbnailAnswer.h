// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "SorvikProvider/frame/ProviderMessages.h"

namespace Sorvik {

// Returns the message of a request for a picture. If the request was aborted, the thumbnail is
// disposed of.
inline GetThumbnailMessage ThumbnailAnswer(const std::string& path, const std::string& key,
                                           Bitplate** thumbnail, bool aborted) {
  GetThumbnailMessage message;
  message.path = path;
  message.key = key;
  if (aborted) {
    bitplateDispose(thumbnail);
    message.result = kResultAborted;
  } else {
    message.thumbnail = thumbnail;
    message.result = thumbnail != nullptr ? kResultDone : kResultNoContent;
  }
  return message;
}

}  // namespace Sorvik
