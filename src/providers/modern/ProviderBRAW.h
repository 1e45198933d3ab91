// SPDX-License-Identifier: MIT
// Folders with Blackmagic RAW recordings. These cameras write no index: files belong together by
// their stem.
//   A001_08151512_C001.braw     the recording
//   A001_08151512_C001.braw2    every other frame, of a recording on two cards
//   A001_08151512_C001.sidecar  JSON; its values take precedence over those in the file
//   A001_08151512_S001.braw     a still
//   Proxy/A001_08151512_C001.mp4
// Names are camera and reel, month, day, hour and minute, and the clip. One entry for each
// recording, keyed by its file name.
#pragma once

#include "providers/modern/ProviderMediaFilesBase.h"

namespace Sorvik {

class ProviderBRAW final : public ProviderMediaFilesBase {
 public:
  ProviderBRAW();

 private:
  std::shared_ptr<const MediaList> ListOf(const std::string& root) const override;
  // With reservation if the folder contains media of no recording.
  Recognition Recognize(const std::string& root) const override;
  void DescribeMore(const std::string& root, const MediaList& list,
                    CardDescription& card) const override;
};

}  // namespace Sorvik
