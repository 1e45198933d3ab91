// SPDX-License-Identifier: MIT
// The field table with the conversion rule of each row.
#pragma once

#include <string>
#include <string_view>

#include "SorvikProvider/metadata/MachineValues.h"
#include "SorvikProvider/metadata/XMPSupport.h"
#include "xmp/Reader.h"
#include "xmp/XMPMeta.h"

namespace Sorvik::XMPSupport {

// Returns the display texts of the wanted fields. Never throws for bad data: a property that can't
// be read leaves its field empty.
FieldValueMap ConvertFields(const xmp::SXMPMeta& meta, const XMPFieldBits& fields);

// Returns the typed values of the wanted fields; those without a value are left out.
MachineFields ConvertToMachineValues(const xmp::SXMPMeta& meta, const XMPFieldBits& fields);

// Parses a display text. Fields that aren't in the table are texts.
MachineValue MachineValueOfText(std::string_view field, const std::string& text);

// Returns the properties that ConvertFields reads for the wanted fields.
xmp::WantedProperties PropertiesOf(const XMPFieldBits& fields);

}  // namespace Sorvik::XMPSupport
