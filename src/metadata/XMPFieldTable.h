// SPDX-License-Identifier: MIT
// The field table with the conversion rule of each row.
#pragma once

#include "SorvikProvider/metadata/XMPSupport.h"
#include "xmp/Reader.h"
#include "xmp/XMPMeta.h"

namespace Sorvik::XMPSupport {

// Returns the display texts of the wanted fields. Never throws for bad data: a property that can't
// be read leaves its field empty.
FieldValueMap ConvertFields(const xmp::SXMPMeta& meta, const XMPFieldBits& fields);

// Returns the properties that ConvertFields reads for the wanted fields.
xmp::WantedProperties PropertiesOf(const XMPFieldBits& fields);

}  // namespace Sorvik::XMPSupport
