// SPDX-License-Identifier: MIT
#pragma once

#include "SorvikProvider/metadata/XMPSupport.h"
#include "xmp/XMPMeta.h"

namespace Sorvik::XMPSupport {

// The display texts of the wanted fields. Never raises: what can't be read leaves its field empty.
FieldValueMap ConvertFields(const xmp::SXMPMeta& meta, const XMPFieldBits& fields);

}  // namespace Sorvik::XMPSupport
