#pragma once

#include <string>

#include "tools/orvdiag/commandresult.h"

namespace orvdiag {

/// Writes the results of all checks to the file at the path `file`, in UTF-8, as text or as JSON. `folder` is the login
/// library's; empty means the tool's own. The result says where the file is, or why it could not be written.
commandresult writereport(const std::string& file, const std::string& folder, bool asjson);

}  // namespace orvdiag
