#pragma once

#include <string_view>

namespace orvdiag {

/// Keeps standard output for the report: what else writes there from now on, as the log's echo does, goes to standard
/// error.
void claimstandardoutput();

/// Adds UTF-8 text to the report. False when that cannot be done, now or at an earlier call.
bool print(std::string_view text);

/// Writes one line about a failure to standard error.
void complain(std::string_view line);

}  // namespace orvdiag
