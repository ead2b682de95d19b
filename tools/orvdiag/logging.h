#pragma once

#include <string>

#include "tools/orvdiag/commandresult.h"

namespace orvdiag {

/// Tries to write the log file at `path`. Returns why the library could not write it; empty if it could. Leaves neither
/// a file nor a folder behind.
std::string whylogisnotwritable(const std::string& path);

/// Switches the log for this user if `state` is "on" or "off". Returns whether it is on, why, and whether its file can
/// be written.
commandresult logging(const std::string& state);

}  // namespace orvdiag
