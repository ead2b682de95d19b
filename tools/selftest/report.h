#pragma once

#include <string>
#include <vector>

/// @file
/// What became of each test, and the two files that tell it.
namespace selftest {

enum class verdict { passed, failed, skipped };

/// The outcome of one test. Strings are UTF-8; `output` may contain any bytes.
struct outcome {
    std::string name;
    verdict result = verdict::passed;
    std::string reason;  ///< why it failed or was skipped, in one line; empty if it passed
    std::string output;  ///< what it printed; kept for failures only
    double seconds = 0;
};

/// "118 passed, 1 failed, 4 skipped".
std::string count(const std::vector<outcome>& outcomes);

/// The report for people: the machine, the count, each failure with its output, each skipped test with its reason, and
/// the names of those that passed. Lines end in CR LF.
std::string textreport(const std::string& machine, const std::vector<outcome>& outcomes);

/// The same in the XML format of JUnit, for programs that collect results of tests.
std::string junitreport(const std::string& machine, const std::vector<outcome>& outcomes);

}  // namespace selftest
