#pragma once

#include <string>

#include "tools/orvdiag/answer.h"

namespace orvdiag {

/// Looks whether the login library in a folder is complete, loads, and gets on with the login manager that lies there.
/// An empty `folder` is the tool's own.
answer checklogin(const std::string& folder);

}  // namespace orvdiag
