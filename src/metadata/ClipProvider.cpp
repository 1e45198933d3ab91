// SPDX-License-Identifier: MIT
#include "metadata/ClipProvider.h"

#include <algorithm>
#include <utility>

#include "SorvikProvider/foundation/Localizer.h"
#include "SorvikProvider/metadata/XMPSupport.h"

namespace Sorvik {

using XMPSupport::kXMPCrossReference;
using XMPSupport::XMPCrossReference;

ClipProvider::ClipProvider(Facts facts) : facts_(std::move(facts)) {}

FieldNameSet ClipProvider::GetFieldList() const {
  FieldNameSet names;
  for (const XMPCrossReference& row : kXMPCrossReference) names.insert(row.propertyName);
  return names;
}

FieldNameList ClipProvider::GetDefaultFieldList() const { return facts_.defaultFields; }

FieldLabelMap ClipProvider::GetFieldLabelList() const {
  FieldLabelMap labels;
  for (const XMPCrossReference& row : kXMPCrossReference) {
    if (!facts_.labelFields.contains(row.propertyName)) continue;
    labels.emplace(row.propertyName, row.labelKey);
  }
  return labels;
}

std::string ClipProvider::GetIdentification() const { return facts_.identification; }

std::string ClipProvider::GetUIString() const {
  return tarnwick::config::Localizer::Get().GetUTF8String(facts_.uiString);
}

int ClipProvider::GetMaximumThumbnailHeight(int height) const {
  return std::min(height, facts_.maxThumbnailHeight);
}

bool ClipProvider::ShouldCheckFilter() const { return false; }

bool ClipProvider::IsFileBased() const { return true; }

}  // namespace Sorvik
