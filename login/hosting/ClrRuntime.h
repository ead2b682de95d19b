#pragma once

#include <cstdint>
#include <string>

namespace OrvelLoginClientCLR {

/// The version of the runtime, which is also the name of its folder. All of the .NET Framework 4 have this one.
inline constexpr wchar_t runtimeVersion[] = L"v4.0.30319";

/// Runs the managed method `static int method(string)` of `typeName` in the default application domain and returns its
/// result. Starts the .NET Framework 4 runtime in the process first, or joins the one that is running.
///
/// `assembly`: full path of the assembly's file. `argument`: passed to the method; may be empty. Any thread may call;
/// the calls of a process are serialised. The caller's x87 control word and MXCSR are unchanged afterwards.
///
/// Throws `loginRuntimeException` if the runtime cannot be started or the method cannot be run, with the HRESULT and
/// its meaning if known. The next call tries again.
std::uint32_t executeInDefaultAppDomain(const std::wstring& assembly, const wchar_t* typeName, const wchar_t* method,
                                        const std::wstring& argument);

/// Passes on where the managed part announces the runtime's shutdown: `flag` becomes 1 and must stay readable until the
/// process ends.
void watchRuntimeEnding(const volatile std::int32_t* flag) noexcept;

/// Whether the process is ending: the runtime's shutdown has begun, or the system has ended all other threads. Then
/// managed code must not be called.
bool processIsEnding() noexcept;

/// Throws `loginRuntimeException` (HOST_E_CLRNOTAVAILABLE) if the process is ending.
void refuseWhileProcessIsEnding();

}  // namespace OrvelLoginClientCLR
