#pragma once

#include <nlohmann/json.hpp>
#include <string>

/// The diagnostics tool for support engineers. All texts are UTF-8.
namespace orvdiag {

/// Keeps the order in which members are added.
using json = nlohmann::ordered_json;

/// The result of a command, as text and as JSON.
struct commandresult {
    int status;        ///< the process's exit status: 0, or 1 if something is missing or wrong
    std::string text;  ///< lines, each ending in a line feed
    json data;         ///< the same as JSON
};

}  // namespace orvdiag
