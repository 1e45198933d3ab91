// SPDX-License-Identifier: MIT
// The reel folder of an ARRI camera that records one MXF or MOV file for each clip:
//   A001R1JL/A001C010_100610_R1JL.mov              ALEXA Classic to Mini LF
//   A_0001_12NR/A_0001C001_230202_052359_h12NR.mxf ALEXA 35
// The name of a clip begins with the camera and the reel and ends with the serial number of the
// camera, in base 36. Folders are recognised by these names, whatever their own name is. One entry
// for each clip, keyed by its file name.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "providers/modern/ProviderMediaFilesBase.h"

namespace Sorvik {

struct ArriClipName {
  std::string reel;  // "A001R1JL", "A_0001_12NR", in upper case
  std::string camera;
};
// Returns nullopt for other names. Ignores case.
std::optional<ArriClipName> ParseArriClipName(std::string_view stem);

class ProviderARRIReel final : public ProviderMediaFilesBase {
 public:
  ProviderARRIReel();

 private:
  std::shared_ptr<const MediaList> ListOf(const std::string& root) const override;
  // None if the clips are of several reels. With reservation if the folder contains other media.
  Recognition Recognize(const std::string& root) const override;
  void DescribeMore(const std::string& root, const MediaList& list,
                    CardDescription& card) const override;
};

}  // namespace Sorvik
