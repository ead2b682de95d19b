#pragma once

#include <nlohmann/json.hpp>
#include <string>

/// The tool for the engineer on a customer's machine. All texts are UTF-8.
namespace orvdiag {

/// Keeps the order in which members are added.
using json = nlohmann::ordered_json;

/// What a command found, in both forms in which it can be shown.
struct answer {
    int status;        ///< of the process: 0, or 1 when something is missing or wrong
    std::string text;  ///< lines for people, each ending in a line feed
    json data;         ///< the same for programs
};

}  // namespace orvdiag
