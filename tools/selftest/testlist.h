#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// @file
/// The tests of one architecture, as its folder lists them.
namespace selftest {

/// One row of the list. Strings are UTF-8.
struct test {
    std::string name;               ///< as CTest names it, after the name of the architecture
    std::filesystem::path folder;   ///< of the architecture
    std::filesystem::path program;  ///< below `folder`; empty if the runner itself compares the hosts of `arguments`
    std::string arguments;          ///< the rest of the command line
    unsigned secondslimit = 0;      ///< after which the test is ended
    std::string neverrun;           ///< why it cannot run in a self-test; empty if it can
    std::string needs;              ///< a DLL that the system may lack; the test is skipped without it
};

/// Reads the file tests.json in each folder in `root`. Throws an exception derived from `std::exception` if a list is
/// missing, empty or malformed.
std::vector<test> readtests(const std::filesystem::path& root);

}  // namespace selftest
