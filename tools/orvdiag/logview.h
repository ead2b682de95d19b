#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/orvdiag/commandresult.h"

namespace orvdiag {

/// Selects records of the log.
struct recordfilter {
    std::vector<std::string> levels;  ///< empty for all
    std::string program;              ///< file name, in any case; empty for all

    /// Whether a line belongs to a selected record. Must be called with all lines in order, because a line that does
    /// not begin a record belongs to the record before it.
    bool passes(std::string_view line);

private:
    bool passing = false;
};

/// The arguments of the command `log`.
struct logrequest {
    std::optional<std::size_t> lines = 20;  ///< number of lines; none for all
    bool follow = false;
    recordfilter filter;
};

/// Prints the path and the last lines of the log file, without control characters and secrets; with `follow`, also new
/// lines until interrupted. Returns the exit status.
int showlog(logrequest request);

/// The last lines of the log, at most `count`, as showlog() prints them, or why there are none.
commandresult lastlines(std::size_t count);

}  // namespace orvdiag
