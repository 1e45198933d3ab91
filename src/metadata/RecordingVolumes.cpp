// SPDX-License-Identifier: MIT
#include "metadata/RecordingVolumes.h"

#include <charconv>

#include "xmp/Namespaces.h"
#include "xmp/XMPFiles.h"

namespace Sorvik {
namespace {

unsigned NumberOf(const xmp::SXMPMeta& meta, const char* name) {
  std::string text;
  unsigned number = 0;
  if (!meta.GetProperty(xmp::kNsBlackmagicRAW, name, &text)) return 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? number : 0;
}

}  // namespace

std::optional<RecordingVolume> ReadRecordingVolume(const std::string& path) {
  xmp::SXMPMeta meta;
  try {
    xmp::SXMPFiles files;
    files.SetWantedProperties(xmp::WantedProperties::None());
    if (!files.OpenFile(path, xmp::kXMP_UnknownFile, xmp::kXMPFiles_OpenForRead)) {
      return std::nullopt;
    }
    files.GetXMP(&meta);
    const RecordingVolume volume{NumberOf(meta, "multicard_volume_number"),
                                 NumberOf(meta, "multicard_volume_count")};
    if (volume.number != 0 && volume.count != 0) return volume;
  } catch (const xmp::XMP_Error&) {
    // A file without readable metadata doesn't count.
  }
  return std::nullopt;
}

}  // namespace Sorvik
