#include "tools/orvdiag/logview.h"

#include <windows.h>

#include <algorithm>
#include <deque>

#include "orvsecutils/log/logfile.h"
#include "orvsecutils/platform/platform.h"
#include "tools/orvdiag/filetail.h"
#include "tools/orvdiag/output.h"
#include "tools/orvdiag/secrets.h"
#include "tools/orvdiag/text.h"

namespace orvdiag {

namespace {

// The position of the level in the first line of a record, as in "11/21/2026 09:14:03+0100,info,host.exe,message"; npos
// if the line does not begin a record.
std::size_t levelat(std::string_view line) {
    constexpr std::string_view pattern = "00/00/0000 00:00:00+0000,";
    if (line.size() < pattern.size()) {
        return std::string_view::npos;
    }
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool matches = pattern[i] == '0'   ? line[i] >= '0' && line[i] <= '9'
                             : pattern[i] == '+' ? line[i] == '+' || line[i] == '-'
                                                 : line[i] == pattern[i];
        if (!matches) {
            return std::string_view::npos;
        }
    }
    return pattern.size();
}

std::string readfailure(const std::string& path, unsigned long failure) {
    return path.empty() ? "there is no log file: Windows reports no profile folder for this user"
                        : "the log file cannot be read: " + systemmessage(failure);
}

// A line of the log as it is shown: whoever writes to the log decides neither what the console does nor what leaves the
// machine.
std::string shown(std::string_view line) {
    return oneline(withoutsecrets(toutf8lossy(line)));
}

// The last `count` lines at present that pass the filter.
std::deque<std::string> lastpassinglines(filetail& tail, std::size_t count, recordfilter& filter, bool unfinished) {
    std::deque<std::string> lines;
    const auto keep = [&](std::string_view line) {
        if (filter.passes(line)) {
            lines.emplace_back(line);
        }
        if (lines.size() > count) {
            lines.pop_front();
        }
    };
    while (tail.next(keep)) {}
    if (unfinished) {
        tail.rest(keep);
    }
    return lines;
}

}  // namespace

bool recordfilter::passes(std::string_view line) {
    if (levels.empty() && program.empty()) {
        return true;
    }
    const std::size_t level = levelat(line);
    if (level == std::string_view::npos) {
        return passing;
    }
    const std::size_t end = line.find(',', level);
    passing =
        end != std::string_view::npos &&
        (levels.empty() || std::find(levels.begin(), levels.end(), line.substr(level, end - level)) != levels.end()) &&
        (program.empty() || equalsignorecase(line.substr(end + 1, program.size() + 1), program + ","));
    return passing;
}

int showlog(logrequest request) {
    const std::string path = orvsecutils::logfilepath(orvsecutils::currentplatform());
    if (path.empty()) {
        printerror(readfailure(path, 0));
        return 1;
    }
    print("Log file: " + path + "\n");
    recordfilter& filter = request.filter;
    filetail tail(path);
    // Without a filter, only the last lines need to be read.
    const bool unfiltered = filter.levels.empty() && filter.program.empty();
    const unsigned long failure = tail.begin(unfiltered ? request.lines : std::nullopt);
    if (failure != 0) {
        printerror(readfailure(path, failure));
    }
    if (request.lines) {
        for (const std::string& line : lastpassinglines(tail, *request.lines, filter, !request.follow)) {
            print(shown(line) + "\n");
        }
    }
    std::string lines;
    const auto collect = [&](std::string_view line) { lines += filter.passes(line) ? shown(line) + "\n" : ""; };
    // Ends when the reader of the pipe has closed it, which shows at the first write after that. Ctrl+C ends the
    // process as usual: there is nothing to clean up.
    while (print(lines)) {
        lines.clear();
        if (tail.next(collect)) {
            continue;
        }
        if (!request.follow) {
            tail.rest(collect);
            print(lines);
            return failure == 0 ? 0 : 1;
        }
        // Short, because lines are missed that were written since the last look when the file is replaced.
        Sleep(20);
    }
    return 0;
}

commandresult lastlines(std::size_t count) {
    commandresult result = {0, std::string(), json::array()};
    const std::string path = orvsecutils::logfilepath(orvsecutils::currentplatform());
    filetail tail(path);
    const unsigned long failure = path.empty() ? ERROR_PATH_NOT_FOUND : tail.begin(count);
    if (failure != 0) {
        return {1, "None: " + readfailure(path, failure) + ".\n", result.data};
    }
    recordfilter nofilter;
    for (const std::string& line : lastpassinglines(tail, count, nofilter, true)) {
        const std::string text = shown(line);
        result.data.push_back(text);
        result.text += text + "\n";
    }
    return result;
}

}  // namespace orvdiag
