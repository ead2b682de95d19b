#pragma once

#include <string>

#include "login/boundary/Boundary.h"

namespace OrvelLoginClientCLR {

/// Starts the runtime if necessary and makes the first call into the managed part.
///
/// `nativePart`, `managedPart`: full paths of the two files. Throws `loginRuntimeException` if the managed part is
/// missing, if the runtime refuses it, or, naming both versions, if the two do not belong together.
Handshake enterManagedPart(const std::wstring& nativePart, const std::wstring& managedPart);

}  // namespace OrvelLoginClientCLR
