#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The tool for the engineer on a customer's machine. All texts are UTF-8.
namespace orvdiag {

/// What a command came to.
struct outcome {
    int status;                         ///< of the process: 0, or 1 when something is wrong with what was looked at
    std::optional<std::string> result;  ///< for the trace; none when what was asked for is not there
};

/// What a command was given.
struct arguments {
    std::vector<std::string> words;
    bool option = false;
};

struct command {
    std::string_view name;
    std::string_view word;                  ///< what its word stands for; empty when it takes none
    bool wordneeded;                        ///< whether it cannot do without
    std::vector<std::string_view> choices;  ///< the words it knows; empty for any
    std::string_view option;                ///< empty when it has none
    std::string_view summary;
    std::string_view help;
    outcome (*run)(const arguments&);
};

/// The commands, in the order in which help lists them.
const std::vector<command>& commands();

/// What a command line asks for: to run `chosen`, or to show help (for `chosen`, or for the tool when it is null), or
/// nothing that makes sense.
struct request {
    const command* chosen = nullptr;
    arguments given;
    bool help = false;
    std::string complaint;  ///< one line that says what makes no sense; empty otherwise
};

/// Reads a command line, without the program's name.
request parse(const std::vector<std::string>& texts);

/// Help for a command, or for the tool when it is null.
std::string helptext(const command* chosen);

}  // namespace orvdiag
