#pragma once

#include <cstdint>
#include <string>

namespace OrvelLoginClientCLR {

/// Runs the managed method `static int method(string)` of `typeName` in the default application domain and returns its
/// result. Starts the .NET Framework 4 runtime in the process first, or joins the one that is running.
///
/// `assembly`: full path of the assembly's file. `argument`: passed on; may be empty. Any thread may call; the calls of
/// one process run one after another. The caller's floating-point control is the same afterwards.
///
/// Throws `loginRuntimeException` with the HRESULT, and what it means if that is known, when the runtime cannot be
/// started or the method cannot be run. The next call tries again.
std::uint32_t executeInDefaultAppDomain(const std::wstring& assembly, const wchar_t* typeName, const wchar_t* method,
                                        const std::wstring& argument);

/// Whether the process has begun to end. From then on other threads are gone and the runtime may be, so managed code
/// must not be entered any more.
bool processIsEnding() noexcept;

/// Throws `loginRuntimeException` (HOST_E_CLRNOTAVAILABLE) when the process is ending.
void refuseWhileProcessIsEnding();

}  // namespace OrvelLoginClientCLR
