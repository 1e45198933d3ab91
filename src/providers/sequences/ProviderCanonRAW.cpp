// SPDX-License-Identifier: MIT
#include "providers/sequences/ProviderCanonRAW.h"

#include <string_view>
#include <utility>

#include "foundation/Paths.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {

ProviderCanonRAW::ProviderCanonRAW()
    : ProviderFileSequenceBase("com.halvane.Merisk.ProviderCanonRAW",
                               "$$$/Merisk/Libraries/Sorvik/CanonRAWUIString=Canon RAW", "*.rmf") {}

bool ProviderCanonRAW::IsSequenceFile(const UTF16String& name) const {
  return HasExtension(name, ".rmf");
}

void ProviderCanonRAW::AddExtraPaths(FieldValueMap& fields, const std::string& filePath) const {
  auto values = ListFrames(filePath);
  if (!values) return;
  const std::string_view headName = foundation::FileName(filePath);
  const std::string prefix = filePath.substr(0, filePath.size() - headName.size());
  AddIfExists(*values, prefix + std::string(foundation::FileStem(headName)) + ".WAV");
  AddIfExists(*values, filePath + ".xmp");
  AddIfExists(*values, prefix + "CLIPINFO.XML");
  AddIfExists(*values, prefix + "HrClip.inf");
  fields[kExtraPathField] = any_regular_t(std::move(*values));
}

Bitplate** ProviderCanonRAW::GetThumbnail([[maybe_unused]] const std::string& path,
                                          [[maybe_unused]] const std::string& key, int width,
                                          int height,
                                          [[maybe_unused]] ProviderRequest* request) const {
  return RenderNamedIcon(u"SP_VideoColored", width, height);
}

}  // namespace Sorvik
