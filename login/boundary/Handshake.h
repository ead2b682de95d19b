#pragma once

#include <string>

#include "login/boundary/Boundary.h"

namespace OrvelLoginClientCLR {

/// The file name of the managed part, which is in the folder of the native library.
inline constexpr wchar_t managedPartName[] = L"OrvelLoginClientCLR.dll";

/// Starts the runtime if necessary and makes the first call into the managed part.
///
/// `nativePart`, `managedPart`: full paths of the two files. Throws `loginRuntimeException` if the managed part is
/// missing, if the runtime refuses it, or, naming files and versions, if the two do not belong together or the process
/// has already loaded another managed part.
Handshake enterManagedPart(const std::wstring& nativePart, const std::wstring& managedPart);

}  // namespace OrvelLoginClientCLR
