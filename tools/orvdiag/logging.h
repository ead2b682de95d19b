#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tools/orvdiag/commandresult.h"
#include "tools/orvdiag/findings.h"

namespace orvdiag {

/// Whether this user's programs log.
struct logstate {
    bool on;
    std::string reason;                                 ///< why, for example "by the user's setting"
    std::vector<std::pair<cause, std::string>> faults;  ///< values without the effect that was probably expected
};

/// Reads the switch from the registry.
logstate readlogstate();

/// Tries to write the log file at `path`. Returns why the library could not write it; empty if it could. Leaves neither
/// a file nor a folder behind.
std::string whylogisnotwritable(const std::string& path);

/// Switches the log for this user if `state` is "on" or "off". Returns whether it is on, why, and whether its file can
/// be written.
commandresult logging(const std::string& state);

}  // namespace orvdiag
