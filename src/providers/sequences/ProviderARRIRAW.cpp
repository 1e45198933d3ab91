// SPDX-License-Identifier: MIT
#include "providers/sequences/ProviderARRIRAW.h"

#include <utility>

#include "thumbnails/Rendering.h"

namespace Sorvik {

ProviderARRIRAW::ProviderARRIRAW()
    : ProviderFileSequenceBase("com.halvane.Merisk.ProviderARRIRAW",
                               "$$$/Merisk/Libraries/Sorvik/ARRIRAWUIString=ARRIRAW", "*.ari") {}

bool ProviderARRIRAW::IsSequenceFile(const UTF16String& name) const {
  return HasExtension(name, ".ari");
}

void ProviderARRIRAW::AddExtraPaths(FieldValueMap& fields, const std::string& filePath) const {
  auto values = ListFrames(filePath);
  if (!values) return;
  AddIfExists(*values, filePath + ".xmp");
  fields[kExtraPathField] = any_regular_t(std::move(*values));
}

Bitplate** ProviderARRIRAW::GetThumbnail([[maybe_unused]] const std::string& path,
                                         [[maybe_unused]] const std::string& key, int width,
                                         int height,
                                         [[maybe_unused]] ProviderRequest* request) const {
  return RenderTemplatePicture("ArriThumb.png", width, GetMaximumThumbnailHeight(height));
}

}  // namespace Sorvik
