#pragma once

#include <string>

#include "tools/orvdiag/answer.h"

namespace orvdiag {

/// Why the library could not write the log file at `path`, as found by trying; empty when it could. Leaves neither a
/// file nor a folder behind.
std::string logobstacle(const std::string& path);

/// Switches the log for this user when `word` is "on" or "off", and tells whether it is on, why, and whether its file
/// can be written.
answer logging(const std::string& word);

}  // namespace orvdiag
