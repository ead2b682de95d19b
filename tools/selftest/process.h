#pragma once

#include <filesystem>
#include <string>

/// @file
/// Runs one program with a time limit.
namespace selftest {

/// How a program ended.
struct ending {
    bool started = false;
    bool timedout = false;     ///< it was still running after its limit and has been ended
    unsigned long status = 0;  ///< its exit status, or the system's error number if it could not be started
    std::string output;        ///< what it wrote to standard output and standard error, as written
    double seconds = 0;
};

/// Runs `program` in the working folder `folder` and waits for it and for the processes that it started, which are
/// ended with it. `arguments` is the rest of the command line, in UTF-8. What it prints goes through a file in
/// `scratch`, so that a process left behind cannot keep a pipe open.
ending run(const std::filesystem::path& program, const std::string& arguments, const std::filesystem::path& folder,
           unsigned secondslimit, const std::filesystem::path& scratch);

}  // namespace selftest
