// SPDX-License-Identifier: MIT
// A picture by which a clip can be recognised, for providers whose GetThumbnail draws an icon.
#pragma once

#include <string>

#include "SorvikProvider/foundation/Bitplate.h"
#include "SorvikProvider/foundation/Export.h"
#include "SorvikProvider/foundation/Hestra.h"
#include "SorvikProvider/foundation/ImmutableString.h"
#include "SorvikProvider/frame/ProviderMessages.h"
#include "SorvikProvider/frame/ProviderRequest.h"

namespace Sorvik {

// Renders the best picture of the entry `key` that the provider `identification` lists at `path`:
//  1. the picture that the camera stored next to the clip;
//  2. else a preview inside the file;
//  3. else a frame of the video at 10 % of its duration, or a developed raw frame. These need the
//     helper program sorvik-frame; without it they are missing.
// The buffer has the size of the picture, reduced with its aspect ratio to fit `width` by `height`
// pixels and 4096 by 4096; 0 means no other limit. It is never enlarged and has no border. The
// picture is upright, rows are top-down. The caller owns it (bitplateDispose).
//
// Returns nullptr if there is no such picture, the entry or the provider doesn't exist, `request`
// is aborted, or decoding takes longer than 5 seconds. Damaged files never affect the process. Any
// thread, between ProviderHost::Initialize and the last Shutdown.
SORVIK_EXPORT Bitplate** RenderClipPicture(const std::string& path,
                                           const std::string& identification,
                                           const std::string& key, int width, int height,
                                           ProviderRequest* request = nullptr);

// What RequestClipPicture queues; ends in a GetThumbnailMessage.
class SORVIK_EXPORT ClipPictureRequest final : public ProviderRequest {
 public:
  ClipPictureRequest(tarnwick::utility::ImmutableString station, std::string path,
                     std::string identification, std::string key, int width, int height);
  void Run() override;
  Hestra::InterfaceRef<ProviderRequest, Hestra::IThreadedQueueRequest> GetRef() override;

 private:
  void PostAborted() const override;

  std::string path_;
  std::string identification_;
  std::string key_;
  int width_;
  int height_;
};

// Renders on the provider executor. The result is posted to `station` as a GetThumbnailMessage with
// kResultNoContent if there is no picture; the returned reference can abort the request.
SORVIK_EXPORT Hestra::InterfaceRef<ClipPictureRequest, Hestra::IThreadedQueueRequest>
RequestClipPicture(const std::string& path, const std::string& identification,
                   const std::string& key, int width, int height,
                   tarnwick::utility::ImmutableString station);

}  // namespace Sorvik
