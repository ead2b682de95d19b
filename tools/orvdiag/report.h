#pragma once

#include <string>

#include "tools/orvdiag/answer.h"

namespace orvdiag {

/// Writes all that an engineer asks for into one file at the path `file`, in UTF-8, with the login library looked for
/// in `folder` (empty for the tool's own), as text or as JSON. What comes back says where it is, or why it is not.
answer writereport(const std::string& file, const std::string& folder, bool asjson);

}  // namespace orvdiag
