// SPDX-License-Identifier: MIT
#include "formats/MediaProbe.h"

#include <algorithm>

#include "formats/probe/Probes.h"
#include "foundation/CardFolder.h"
#include "foundation/Paths.h"

namespace Sorvik::formats {
namespace {

using platform::RegularFile;

struct Container {
  std::string_view extension;
  MediaProbe (*probe)(const RegularFile&);
  bool isMedia = true;
};

constexpr Container kContainers[] = {
    {".mxf", probe::ProbeMxf},
    {".mp4", probe::ProbeIsoMedia},
    {".mov", probe::ProbeIsoMedia},
    {".lrv", probe::ProbeIsoMedia},
    {".lrf", probe::ProbeIsoMedia},
    {".360", probe::ProbeIsoMedia},
    {".crm", probe::ProbeIsoMedia},
    {".braw", probe::ProbeIsoMedia},
    {".braw2", probe::ProbeIsoMedia},
    {".mts", probe::ProbeTransportStream},
    {".m2ts", probe::ProbeTransportStream},
    {".m2t", probe::ProbeTransportStream},
    {".ts", probe::ProbeTransportStream},
    {".wav", probe::ProbeRiff},
    {".avi", probe::ProbeRiff},
    {".dv", probe::ProbeDV},
    {".ari", probe::ProbeAri},
    {".dng", probe::ProbeDng},
    {".rmf", probe::ProbeRmf},
    {".r3d", probe::ProbeR3d},
    {".bmp", probe::ProbeBmp, false},
    {".jpg", probe::ProbeJpeg, false},
    {".jpeg", probe::ProbeJpeg, false},
    {".thm", probe::ProbeJpeg, false},
    {".mpl", probe::ProbeAvchdIndex, false},
    {".mpls", probe::ProbeAvchdIndex, false},
    {".cpi", probe::ProbeAvchdIndex, false},
    {".clpi", probe::ProbeAvchdIndex, false},
    {".bdm", probe::ProbeAvchdIndex, false},
    {".bdmv", probe::ProbeAvchdIndex, false},
};

const Container* ContainerOf(std::string_view path) {
  const auto* const found = std::ranges::find_if(kContainers, [path](const Container& container) {
    return foundation::HasExtension(path, container.extension);
  });
  return found == std::end(kContainers) ? nullptr : found;
}

}  // namespace

MediaProbe ProbeMedia(const std::string& path) {
  const Container* container = ContainerOf(path);
  if (container == nullptr) return {};
  const auto file = foundation::OpenOnCard(path);
  if (!file) return {MediaProbe::Result::kUnreadable, "can't be opened"};
  return container->probe(*file);
}

bool IsMediaName(std::string_view path) {
  const Container* container = ContainerOf(path);
  return container != nullptr && container->isMedia;
}

}  // namespace Sorvik::formats
