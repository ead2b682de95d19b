#pragma once

#include <string>

#include "orvsecutils/platform/platform.h"

namespace orvsecutils {

/// The path of the log file: `Orvel\LoginManager\orvsec.log` in the user's profile folder, whether or not it exists.
/// Empty if `system` does not know that folder, or if the path is too long for platform::appendpath().
std::string logfilepath(const platform& system);

/// The log file of a process. Creates only the folder; the file is written by the records.
class logfile {
public:
    /// Creates the folder and its parents if they do not exist.
    explicit logfile(const platform& system);
    virtual ~logfile() = default;
    logfile(const logfile&) = delete;
    logfile& operator=(const logfile&) = delete;

    /// The process's only instance. It is created by the first call, on any thread, and destroyed when the process ends
    /// or the library is unloaded.
    static const logfile& instance();

    /// logfilepath(), or empty if the folder could not be created, which is not tried again.
    const std::string path;
};

}  // namespace orvsecutils
