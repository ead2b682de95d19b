// selftest: runs the library's tests on a machine without CMake, each in a process of its own, and writes one report.

#include <windows.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "orvsecutils/platform/unicode.h"
#include "tools/selftest/hosts.h"
#include "tools/selftest/machine.h"
#include "tools/selftest/process.h"
#include "tools/selftest/report.h"
#include "tools/selftest/testlist.h"

namespace selftest {

namespace {

constexpr char help[] =
    "selftest [NAME]: runs all tests, or those whose names contain NAME, and writes selftest-report.txt and\n"
    "selftest-report.xml beside this program.\n"
    "selftest --list: prints the names of the tests.\n"
    "Ends with 0 if no test failed, otherwise with 1; with 2 for a wrong command line.\n";

std::filesystem::path ownpath() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

// The line in which GoogleTest says why a test skipped itself; empty if it did not.
std::string skippedbecause(const std::string& output) {
    if (output.find("[  SKIPPED ]") == std::string::npos) {
        return std::string();
    }
    const std::size_t mark = output.find("Skipped");
    const std::size_t start = mark == std::string::npos ? mark : output.find('\n', mark);
    if (start == std::string::npos) {
        return "it says no reason";
    }
    return output.substr(start + 1, output.find_first_of("\r\n", start + 1) - start - 1);
}

outcome judge(const test& row, const ending& result) {
    outcome judged{row.name, verdict::failed, std::string(), result.output, result.seconds};
    char code[16];
    std::snprintf(code, sizeof code, "0x%08lX", result.status);
    if (!result.started) {
        judged.reason = std::string("cannot be started (error ") + std::to_string(result.status) + ")";
    } else if (result.timedout) {
        judged.reason = "did not end within " + std::to_string(row.secondslimit) + " seconds";
    } else if (result.status >= 0x80000000) {
        judged.reason = std::string("crashed (") + code + ")";
    } else if (result.status != 0) {
        judged.reason = "ended with status " + std::to_string(result.status);
    } else {
        judged.reason = skippedbecause(result.output);
        judged.result = judged.reason.empty() ? verdict::passed : verdict::skipped;
        judged.output.clear();
    }
    return judged;
}

outcome execute(const test& row, const std::filesystem::path& scratch) {
    if (!row.neverrun.empty()) {
        return {row.name, verdict::skipped, row.neverrun, std::string(), 0};
    }
    if (row.folder.filename() == "x64" && !runs64bitprograms()) {
        return {row.name, verdict::skipped, "needs a 64-bit Windows", std::string(), 0};
    }
    if (!row.needs.empty() && !systemhas(row.needs)) {
        return {row.name, verdict::skipped, "needs " + row.needs + ", which this machine lacks", std::string(), 0};
    }
    const std::filesystem::path program = row.program.empty() ? ownpath() : row.folder / row.program;
    // In the folder with the compiler's runtime, for the programs that are not in it themselves.
    return judge(row, run(program, row.arguments, row.folder / "bin", row.secondslimit, scratch));
}

const char* word(verdict result) {
    return result == verdict::passed ? "ok" : result == verdict::failed ? "FAILED" : "skipped";
}

// Writes the whole file, or throws.
void writefile(const std::filesystem::path& path, const std::string& content) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content << std::flush;
    if (!file) {
        throw std::runtime_error("cannot write " + orvsecutils::toutf8(path.native()));
    }
}

int runtests(const std::filesystem::path& root, const std::vector<test>& tests) {
    // Before anything is touched: the tests delete what the product keeps.
    const std::string kept = whattheproductkeeps();
    if (!kept.empty()) {
        std::printf(
            "The product is in use on this machine: %s exist(s), and the tests would delete it.\n"
            "Nothing was run or changed. Use an account or a machine without the product.\n",
            kept.c_str());
        return 1;
    }
    const std::filesystem::path report = root / "selftest-report.txt", junit = root / "selftest-report.xml";
    // Before the tests, which take minutes.
    writefile(report, "The self-test has not finished.\r\n");
    const std::string machine = describemachine();
    std::printf("%s\n", machine.c_str());
    std::vector<outcome> outcomes;
    {
        const scratchfolder scratch;
        for (const test& row : tests) {
            std::printf("[%3zu/%zu] %s ", outcomes.size() + 1, tests.size(), row.name.c_str());
            std::fflush(stdout);
            outcomes.push_back(execute(row, scratch.path));
            const outcome& last = outcomes.back();
            std::printf("%s%s%s (%.1f s)\n", word(last.result), last.reason.empty() ? "" : ": ", last.reason.c_str(),
                        last.seconds);
            std::fflush(stdout);
        }
    }
    removewhattestsleft();
    writefile(report, textreport(machine, outcomes));
    writefile(junit, junitreport(machine, outcomes));
    std::printf("\n%s\nThe report: %s\n", count(outcomes).c_str(), orvsecutils::toutf8(report.native()).c_str());
    for (const outcome& row : outcomes) {
        if (row.result == verdict::failed) {
            return 1;
        }
    }
    return 0;
}

int runprogram(const std::vector<std::wstring>& arguments) {
    SetConsoleOutputCP(CP_UTF8);
    // A test that crashes must not wait for a click.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    const std::filesystem::path root = ownpath().parent_path();
    if (arguments.size() == 3 && arguments[0] == L"--hosts") {  // how the lists call this program for a row of hosts
        const scratchfolder scratch;
        const std::filesystem::path architecture = root / arguments[1];
        return comparehosts(architecture / L"hosts" / arguments[2], architecture / L"signin.txt", scratch.path);
    }
    if (arguments.size() > 1 || (!arguments.empty() && arguments[0].starts_with(L"-") && arguments[0] != L"--list")) {
        std::fputs(help, arguments[0] == L"--help" ? stdout : stderr);
        return arguments[0] == L"--help" ? 0 : 2;
    }
    std::vector<test> tests = readtests(root);
    if (arguments.empty()) {
        return runtests(root, tests);
    }
    if (arguments[0] == L"--list") {
        for (const test& row : tests) {
            std::printf("%s\n", row.name.c_str());
        }
        return 0;
    }
    const std::string part = orvsecutils::toutf8(arguments[0]);
    std::erase_if(tests, [&](const test& row) { return row.name.find(part) == std::string::npos; });
    if (tests.empty()) {
        std::fprintf(stderr, "selftest: no test has a name with \"%s\" in it; --list prints the names\n", part.c_str());
        return 2;
    }
    return runtests(root, tests);
}

}  // namespace

}  // namespace selftest

int wmain(int count, wchar_t** arguments) {
    try {
        return selftest::runprogram(std::vector<std::wstring>(arguments + 1, arguments + count));
    } catch (const std::exception& failed) {
        std::fprintf(stderr, "selftest: %s\n", failed.what());
        return 1;
    }
}
