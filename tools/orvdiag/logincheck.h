#pragma once

#include <string>

#include "tools/orvdiag/commandresult.h"

namespace orvdiag {

/// Checks whether the login library in `folder` is complete, loads, and can use the login manager there. An empty
/// `folder` means the tool's own.
commandresult checklogin(const std::string& folder);

}  // namespace orvdiag
