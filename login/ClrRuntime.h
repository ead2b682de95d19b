#pragma once

#include <string>

namespace OrvelLoginClientCLR {

/// Runs the managed method `static int method(string)` of `typeName` in the default application domain. Starts the
/// .NET Framework 4 runtime in the process first, or joins the one that is running. An `argument` must be given.
///
/// Throws `loginRuntimeException` with the HRESULT when the runtime cannot be started or the method not be run; the
/// next call tries again.
void executeInDefaultAppDomain(const std::wstring& assembly, const wchar_t* typeName, const wchar_t* method,
                               const std::wstring& argument);

}  // namespace OrvelLoginClientCLR
