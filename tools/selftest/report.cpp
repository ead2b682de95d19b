#include "tools/selftest/report.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace selftest {

namespace {

std::ptrdiff_t howmany(const std::vector<outcome>& outcomes, verdict result) {
    return std::count_if(outcomes.begin(), outcomes.end(), [&](const outcome& row) { return row.result == result; });
}

std::string inseconds(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", seconds);
    return text;
}

// XML 1.0 allows no control characters but tab and line end; bytes above ASCII are UTF-8 or come from a broken program.
std::string xml(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            default:
                result += static_cast<unsigned char>(c) >= ' ' || c == '\n' || c == '\t' ? c : '?';
        }
    }
    return result;
}

// One program's output has both kinds of line ends.
std::string withoutcarriagereturns(std::string text) {
    std::erase(text, '\r');
    return text;
}

}  // namespace

std::string count(const std::vector<outcome>& outcomes) {
    return std::to_string(howmany(outcomes, verdict::passed)) + " passed, " +
           std::to_string(howmany(outcomes, verdict::failed)) + " failed, " +
           std::to_string(howmany(outcomes, verdict::skipped)) + " skipped";
}

std::string textreport(const std::string& machine, const std::vector<outcome>& outcomes) {
    std::string text = "Self-test of the Orvel login library\n\n" + machine + "\n" + count(outcomes) + "\n";
    const struct {
        verdict result;
        const char* heading;
    } parts[] = {{verdict::failed, "\nFailed\n"}, {verdict::skipped, "\nSkipped\n"}, {verdict::passed, "\nPassed\n"}};
    for (const auto& part : parts) {
        const char* heading = part.heading;
        for (const outcome& row : outcomes) {
            if (row.result == part.result) {
                text += heading + ("  " + row.name) + (row.reason.empty() ? "" : ": " + row.reason) + "\n";
                heading = "";
                if (!row.output.empty()) {
                    text += "----\n" + withoutcarriagereturns(row.output) + "\n----\n";
                }
            }
        }
    }
    std::string lines;
    for (const char c : text) {
        lines += c == '\n' ? "\r\n" : std::string(1, c);
    }
    return lines;
}

std::string junitreport(const std::string& machine, const std::vector<outcome>& outcomes) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuite name=\"orvel-login\" tests=\"" +
                       std::to_string(outcomes.size()) + "\" failures=\"" +
                       std::to_string(howmany(outcomes, verdict::failed)) + "\" skipped=\"" +
                       std::to_string(howmany(outcomes, verdict::skipped)) + "\">\n";
    for (const outcome& row : outcomes) {
        text += "  <testcase name=\"" + xml(row.name) + "\" time=\"" + inseconds(row.seconds) + "\"";
        if (row.result == verdict::passed) {
            text += "/>\n";
            continue;
        }
        const char* element = row.result == verdict::failed ? "failure" : "skipped";
        text += std::string(">\n    <") + element + " message=\"" + xml(row.reason) + "\">" +
                xml(withoutcarriagereturns(row.output)) + "</" + element + ">\n  </testcase>\n";
    }
    return text + "  <system-out>" + xml(machine) + "</system-out>\n</testsuite>\n";
}

}  // namespace selftest
