#pragma once

#include <functional>
#include <string>
#include <vector>

namespace orvdiag {

/// A parsed command line. Exactly one of the three is set.
struct request {
    std::function<int()> command;  ///< runs the command, prints its result, and returns the exit status
    std::string text;              ///< help or version, to be printed
    std::string complaint;         ///< one line that says why the command line is invalid
    bool writesfile = false;       ///< the command succeeds even if standard output cannot be written
};

/// Parses the arguments of a command line, without the program's name.
request parse(std::vector<std::string> arguments);

}  // namespace orvdiag
