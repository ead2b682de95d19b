#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "login/loginRuntimeException.h"

namespace OrvelLoginClientCLR {

/// A managed exception of type `typeName`, as the host sees it.
loginRuntimeException managedFailure(std::wstring typeName, std::wstring message, std::int32_t hresult);

/// A failure before any managed code ran: `words`, followed by the HRESULT.
loginRuntimeException startFailure(const std::wstring& words, std::int32_t hresult);

/// The runtime could not be started. Says what `hresult` means, if that is known.
loginRuntimeException cannotStart(std::int32_t hresult);

/// The runtime was started but could not run `method`, which names the method and its assembly's file.
loginRuntimeException cannotRun(const std::wstring& method, std::int32_t hresult);

/// What converting a null managed string ends in.
loginRuntimeException nullStringFailure();

/// Length of a native string for the managed side. Throws `loginRuntimeException` above 2147483647 units.
std::int32_t managedLength(std::size_t units);

}  // namespace OrvelLoginClientCLR
