// SPDX-License-Identifier: MIT
#include "SorvikProvider/foundation/Hestra.h"

namespace Hestra {

Exception::~Exception() = default;

NullInterfaceException::NullInterfaceException()
    : Exception("A NULL interface pointer has been dereferenced.") {}

NullInterfaceException::~NullInterfaceException() = default;

HestraUnknown::~HestraUnknown() = default;

}  // namespace Hestra
