#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "login/loginRuntimeException.h"

namespace OrvelLoginClientCLR {

/// The failure for a managed exception of type `typeName`.
loginRuntimeException managedFailure(std::wstring typeName, std::wstring message, std::int32_t hresult);

/// The failure if no managed code ran: `explanation`, followed by the HRESULT.
loginRuntimeException nativeFailure(const std::wstring& explanation, std::int32_t hresult);

/// The failure if the runtime could not be started, with the meaning of `hresult` if known.
loginRuntimeException runtimeStartFailure(std::int32_t hresult);

/// The failure if the runtime could not run `method`. `method` names the method and the file of its assembly.
loginRuntimeException methodRunFailure(const std::wstring& method, std::int32_t hresult);

/// The failure of converting a null managed string.
loginRuntimeException nullStringFailure();

/// Converts the length of a native string for the managed side. Throws `loginRuntimeException` above 2147483647 code
/// units.
std::int32_t managedLength(std::size_t units);

}  // namespace OrvelLoginClientCLR
