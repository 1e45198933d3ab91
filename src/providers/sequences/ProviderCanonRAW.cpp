// SPDX-License-Identifier: MIT
#include "providers/sequences/ProviderCanonRAW.h"

#include <utility>

#include "foundation/hestra/PathUtils.h"
#include "thumbnails/Rendering.h"

namespace Sorvik {

ProviderCanonRAW::ProviderCanonRAW()
    : ProviderFileSequenceBase("com.halvane.Merisk.ProviderCanonRAW",
                               "$$$/Merisk/Libraries/Sorvik/CanonRAWUIString=Canon RAW") {}

bool ProviderCanonRAW::IsSequenceFile(const UTF16String& name) const {
  return HasExtension(name, u".rmf");
}

void ProviderCanonRAW::AddExtraPaths(FieldValueMap& fields, const std::string& filePath) const {
  namespace PathUtils = Hestra::PathUtils;
  auto values = ListFrames(filePath);
  if (!values) return;
  const UTF16String head = Hestra::MakeString(filePath);
  const UTF16String folder = PathUtils::GetDirectoryPart(head);
  AddIfExists(*values, PathUtils::CombinePaths(folder, PathUtils::GetFilePart(head) + u".WAV"));
  AddIfExists(*values, head + u".xmp");
  AddIfExists(*values, PathUtils::CombinePaths(folder, u"CLIPINFO.XML"));
  AddIfExists(*values, PathUtils::CombinePaths(folder, u"HrClip.inf"));
  fields[kExtraPathField] = any_regular_t(std::move(*values));
}

Bitplate** ProviderCanonRAW::GetThumbnail([[maybe_unused]] const std::string& path,
                                          [[maybe_unused]] const std::string& key, int width,
                                          int height,
                                          [[maybe_unused]] ProviderRequest* request) const {
  return RenderNamedIcon(u"SP_VideoColored", width, height);
}

}  // namespace Sorvik
