#include "tools/selftest/hosts.h"

#include <windows.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>

#include "orvsecutils/platform/unicode.h"
#include "tools/selftest/process.h"

namespace selftest {

namespace {

constexpr unsigned secondslimit = 60;

std::string contentof(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// Replaces what differs from run to run.
std::string comparable(std::string text) {
    const struct {
        const char *pattern, *replacement;
    } rows[] = {{"\r", ""}, {"thread [0-9]+", "thread N"}, {"[0-9a-f]{32}", "TOKEN"}, {"[0-9]{18}\\.", "EXPIRES."}};
    for (const auto& row : rows) {
        text = std::regex_replace(text, std::regex(row.pattern), row.replacement);
    }
    return text;
}

}  // namespace

int comparehosts(const std::filesystem::path& folder, const std::filesystem::path& expected,
                 const std::filesystem::path& scratch) {
    // Events on a thread of their own, after a garbage collection that frees every delegate that nobody holds.
    SetEnvironmentVariableW(L"ORVEL_STANDIN", L"events=thread;getTenantName=collect;Dispose=event");
    const std::string wanted = comparable(contentof(expected));
    int programs = 0, different = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != L".exe") {
            continue;
        }
        ++programs;
        const ending result = run(entry.path(), "", folder, secondslimit, scratch);
        const std::string printed = comparable(result.output);
        if (!result.started || result.timedout || printed != wanted) {
            ++different;
            std::printf("%s, status %lu%s, printed:\n%s\nexpected:\n%s\n",
                        orvsecutils::toutf8(entry.path().filename().native()).c_str(), result.status,
                        result.timedout ? " (ended after its time limit)" : "", printed.c_str(), wanted.c_str());
        }
    }
    std::printf("%d programs, %d different\n", programs, different);
    return programs ? different : 1;
}

}  // namespace selftest
