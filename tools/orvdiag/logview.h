#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/orvdiag/answer.h"

namespace orvdiag {

/// Which records of the log are wanted.
struct recordfilter {
    std::vector<std::string> levels;  ///< empty for all
    std::string program;              ///< file name, in any case; empty for all

    /// Whether a line belongs to such a record. Lines are given in their order: one without a record's beginning
    /// belongs to the record before it.
    bool passes(std::string_view line);

private:
    bool passing = false;
};

/// What `log` was asked for.
struct logrequest {
    std::optional<std::size_t> lines = 20;  ///< none for all
    bool follow = false;
    recordfilter filter;
};

/// Prints the log file's path and last lines; following, goes on with new ones until interrupted. The process's status.
int showlog(logrequest request);

/// The log's last lines, at most `count`, or why there are none.
answer lastlines(std::size_t count);

}  // namespace orvdiag
