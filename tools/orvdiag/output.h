#pragma once

#include <string_view>

namespace orvdiag {

/// Keeps standard output for print(): what else writes there from now on, as the log's echo does, goes to standard
/// error. Called once, before anything is written.
void claimstandardoutput();

/// Writes UTF-8 text to standard output: to a console as characters, whatever its code page; to a file or a pipe as
/// UTF-8 with a text file's line ends. False when that fails, now or at an earlier call.
bool print(std::string_view text);

/// Writes one line about a failure to standard error, in the same way.
void complain(std::string_view line);

}  // namespace orvdiag
