#include "tools/orvdiag/logview.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <deque>

#include "orvsecutils/log/logfile.h"
#include "orvsecutils/platform/platform.h"
#include "tools/orvdiag/filetail.h"
#include "tools/orvdiag/logging.h"
#include "tools/orvdiag/output.h"
#include "tools/orvdiag/text.h"

namespace orvdiag {

namespace {

std::atomic<bool> interrupted = false;

BOOL WINAPI interrupt(DWORD event) {
    interrupted = true;
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        Sleep(2000);  // the system ends the process when this returns, so leave the main thread time to clean up
    }
    return TRUE;
}

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

// Calls `take` with each line that passes the filter, including its line feed.
template <class Take>
void foreachline(std::string_view text, recordfilter& filter, Take take) {
    while (!text.empty()) {
        const std::string_view line = text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1);
        text.remove_prefix(line.size());
        if (filter.passes(line)) {
            take(line);
        }
    }
}

std::string filtered(std::string_view text, recordfilter& filter) {
    std::string result;
    foreachline(text, filter, [&](std::string_view line) { result += line; });
    return result;
}

std::string readfailure(const std::string& path, unsigned long failure) {
    return path.empty() ? "there is no log file: Windows reports no profile folder for this user"
                        : "the log file cannot be read: " + systemmessage(failure);
}

// The last `count` lines at present that pass the filter.
std::deque<std::string> lastpassinglines(filetail& tail, std::size_t count, recordfilter& filter, bool unfinished) {
    std::deque<std::string> lines;
    const auto keep = [&](std::string_view line) {
        lines.emplace_back(line);
        if (lines.size() > count) {
            lines.pop_front();
        }
    };
    for (std::string text; !(text = tail.next()).empty();) {
        foreachline(text, filter, keep);
    }
    if (unfinished) {
        foreachline(tail.rest(), filter, keep);
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
    const std::size_t end = std::min(line.find(',', level), line.size());
    const std::string_view rest = line.substr(std::min(end + 1, line.size()));
    passing =
        (levels.empty() || std::find(levels.begin(), levels.end(), line.substr(level, end - level)) != levels.end()) &&
        (program.empty() || equalsignorecase(rest.substr(0, program.size() + 1), program + ","));
    return passing;
}

int showlog(logrequest request) {
    constexpr DWORD pausemilliseconds = 20;
    const std::string path = orvsecutils::logfilepath(orvsecutils::currentplatform());
    if (path.empty()) {
        printerror(readfailure(path, 0));
        return 1;
    }
    if (request.follow) {
        SetConsoleCtrlHandler(interrupt, TRUE);
    }
    print("Log file: " + path + "\n");
    recordfilter& filter = request.filter;
    filetail tail(path, request.follow);
    // Without a filter, only the last lines need to be read.
    const bool unfiltered = filter.levels.empty() && filter.program.empty();
    const unsigned long failure = tail.begin(unfiltered ? request.lines : std::nullopt);
    if (failure != 0) {
        printerror(readfailure(path, failure));
    } else if (request.lines) {
        for (const std::string& line : lastpassinglines(tail, *request.lines, filter, !request.follow)) {
            print(line);
        }
    } else {
        for (std::string text; !(text = tail.next()).empty() && print(filtered(text, filter));) {}
    }
    if (!request.follow) {
        print(filtered(tail.rest(), filter));
        return failure == 0 ? 0 : 1;
    }
    while (!interrupted) {
        const std::string text = tail.next();
        if (!print(filtered(text, filter))) {
            break;  // the reader of the pipe has closed it, which shows at the first write after that
        }
        if (text.empty()) {
            Sleep(pausemilliseconds);
        }
    }
    return 0;
}

commandresult lastlines(std::size_t count) {
    commandresult result = {0, std::string(), json::array()};
    const std::string path = orvsecutils::logfilepath(orvsecutils::currentplatform());
    filetail tail(path, false);
    const unsigned long failure = path.empty() ? ERROR_PATH_NOT_FOUND : tail.begin(count);
    if (failure != 0) {
        return {1, "None: " + readfailure(path, failure) + ".\n", result.data};
    }
    recordfilter nofilter;
    for (const std::string& line : lastpassinglines(tail, count, nofilter, true)) {
        const std::string text = toutf8lossy(line);
        result.text += text;
        result.data.push_back(text.substr(0, text.find('\n')));
    }
    result.text += result.text.empty() || result.text.back() == '\n' ? "" : "\n";
    return result;
}

}  // namespace orvdiag
