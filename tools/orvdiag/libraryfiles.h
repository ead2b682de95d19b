#pragma once

#include <string>

#include "tools/orvdiag/commandresult.h"
#include "tools/orvdiag/findings.h"

namespace orvdiag {

/// Checks whether the library in `folder` is complete and intact, loads, starts the runtime, and can use the login
/// manager there.
void checklibrary(const std::wstring& folder, findings& found);

/// The library's files in `folder`, with version, size and SHA-256.
commandresult listfiles(const std::wstring& folder);

/// The running programs that have loaded one of the library's DLLs, each with the DLL's path.
std::vector<std::string> programswithlibrary();

}  // namespace orvdiag
