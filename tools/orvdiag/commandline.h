#pragma once

#include <functional>
#include <string>
#include <vector>

namespace orvdiag {

/// What a command line asks for. Exactly one of the three is set.
struct request {
    std::function<int()> command;  ///< does it, prints what it finds, and returns the process's status
    std::string text;              ///< help or version, to be printed
    std::string complaint;         ///< one line that says why the command line is invalid
};

/// Reads a command line, without the program's name.
request parse(std::vector<std::string> words);

}  // namespace orvdiag
