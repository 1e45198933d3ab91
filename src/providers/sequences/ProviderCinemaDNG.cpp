// SPDX-License-Identifier: MIT
#include "providers/sequences/ProviderCinemaDNG.h"

#include <string_view>
#include <utility>

#include "SorvikProvider/foundation/Environment.h"
#include "SorvikProvider/thumbnails/Thumbnails.h"
#include "foundation/Paths.h"
#include "foundation/hestra/PathUtils.h"

namespace Sorvik {

ProviderCinemaDNG::ProviderCinemaDNG()
    : ProviderFileSequenceBase("com.halvane.Merisk.ProviderCinemaDNG",
                               "$$$/Merisk/Libraries/Sorvik/CinemaDNGUIString=Cinema DNG",
                               "*.dng") {}

bool ProviderCinemaDNG::IsSequenceFile(const UTF16String& name) const {
  return HasExtension(name, ".dng");
}

void ProviderCinemaDNG::AddExtraPaths(FieldValueMap& fields, const std::string& filePath) const {
  auto values = ListFrames(filePath);
  if (!values) return;
  const std::string_view title = foundation::FileStem(filePath);
  const std::string clip(title.substr(0, title.rfind('_')));
  AddIfExists(*values, foundation::JoinPath(foundation::ParentFolder(filePath), clip + ".WAV"));
  fields[kExtraPathField] = any_regular_t(std::move(*values));
}

Bitplate** ProviderCinemaDNG::GetThumbnail([[maybe_unused]] const std::string& path,
                                           [[maybe_unused]] const std::string& key, int width,
                                           int height,
                                           [[maybe_unused]] ProviderRequest* request) const {
  const UTF16String picture =
      Hestra::DirectoryRegistry::FindDirectory("document.templates") + u"CinemaDNGThumb.png";
  if (!Hestra::PathUtils::ExistsOnDisk(picture)) return nullptr;
  return RenderThumbnail(picture, width, GetMaximumThumbnailHeight(height));
}

}  // namespace Sorvik
