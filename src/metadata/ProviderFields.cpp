// SPDX-License-Identifier: MIT
#include "metadata/ProviderFields.h"

#include "SorvikProvider/metadata/XMPSupport.h"

namespace Sorvik {

using XMPSupport::kXMPCrossReference;
using XMPSupport::XMPCrossReference;

FieldNameSet AllFields() {
  FieldNameSet names;
  for (const XMPCrossReference& row : kXMPCrossReference) names.insert(row.propertyName);
  return names;
}

FieldLabelMap LabelsOf(const FieldNameSet& names) {
  FieldLabelMap labels;
  for (const XMPCrossReference& row : kXMPCrossReference) {
    if (names.contains(row.propertyName)) labels.emplace(row.propertyName, row.labelKey);
  }
  return labels;
}

}  // namespace Sorvik
