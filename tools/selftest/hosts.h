#pragma once

#include <filesystem>

/// @file
/// The example hosts, built by several compilers: all of them print the same.
namespace selftest {

/// Runs each program in `folder` and compares what it prints with the file `expected`. Differences go to standard
/// output. Returns the number of programs that differ, or 1 if there are none to run.
int comparehosts(const std::filesystem::path& folder, const std::filesystem::path& expected,
                 const std::filesystem::path& scratch);

}  // namespace selftest
