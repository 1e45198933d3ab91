// SPDX-License-Identifier: MIT
// What the structure providers tell of their fields, all taken from the field table.
#pragma once

#include "SorvikProvider/frame/FieldModel.h"

namespace Sorvik {

// The names of all rows.
FieldNameSet AllFields();

// The rows with these names, each with its unresolved label.
FieldLabelMap LabelsOf(const FieldNameSet& names);

}  // namespace Sorvik
