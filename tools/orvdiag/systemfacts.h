#pragma once

#include "tools/orvdiag/commandresult.h"

namespace orvdiag {

/// Windows, the .NET Framework, the user's rights, the search path, and the programs that have loaded the library.
commandresult systemfacts();

/// The user who is signed in to this session of Windows; empty if unknown.
std::string usernameofsession();

/// The name of Windows. The registry still says "Windows 10" on Windows 11, from build 22000 on.
std::string windowsname(std::string product, int build);

}  // namespace orvdiag
