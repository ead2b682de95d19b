#pragma once

#include <string>

#include "tools/orvdiag/commandresult.h"

namespace orvdiag {

/// Checks the library in `folder`, and what it and the log need of the machine and the user. For each problem it says
/// the cause and what to do. Nobody is signed in, and nothing is sent anywhere.
commandresult check(const std::wstring& folder);

}  // namespace orvdiag
