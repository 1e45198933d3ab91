// SPDX-License-Identifier: MIT
#include "providers/sequences/ProviderCinemaDNG.h"

#include <utility>

#include "SorvikProvider/foundation/Environment.h"
#include "SorvikProvider/thumbnails/Thumbnails.h"
#include "foundation/hestra/PathUtils.h"

namespace Sorvik {

namespace PathUtils = Hestra::PathUtils;

ProviderCinemaDNG::ProviderCinemaDNG()
    : ProviderFileSequenceBase("com.halvane.Merisk.ProviderCinemaDNG",
                               "$$$/Merisk/Libraries/Sorvik/CinemaDNGUIString=Cinema DNG") {}

bool ProviderCinemaDNG::IsSequenceFile(const UTF16String& name) const {
  return HasExtension(name, u".dng");
}

void ProviderCinemaDNG::AddExtraPaths(FieldValueMap& fields, const std::string& filePath) const {
  auto values = ListFrames(filePath);
  if (!values) return;
  const UTF16String head = Hestra::MakeString(filePath);
  const UTF16String title = PathUtils::GetFilePart(head);
  const UTF16String stem = title.substr(0, title.rfind(u'_'));
  AddIfExists(*values, PathUtils::CombinePaths(PathUtils::GetDirectoryPart(head), stem + u".WAV"));
  fields[kExtraPathField] = any_regular_t(std::move(*values));
}

Bitplate** ProviderCinemaDNG::GetThumbnail([[maybe_unused]] const std::string& path,
                                           [[maybe_unused]] const std::string& key, int width,
                                           int height,
                                           [[maybe_unused]] ProviderRequest* request) const {
  const UTF16String picture =
      Hestra::DirectoryRegistry::FindDirectory("document.templates") + u"CinemaDNGThumb.png";
  if (!PathUtils::ExistsOnDisk(picture)) return nullptr;
  return RenderThumbnail(picture, width, GetMaximumThumbnailHeight(height));
}

}  // namespace Sorvik
