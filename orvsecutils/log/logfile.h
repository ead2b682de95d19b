#pragma once

#include <string>

#include "orvsecutils/platform/platform.h"

namespace orvsecutils {

/// The path of the log file: `Orvel\LoginManager\orvsec.log` in the profile folder of the user, whether or not it
/// exists. Empty when `system` does not know that folder, or the path is too long for platform::appendpath().
std::string logfilepath(const platform& system);

/// The log file of a process. It prepares the folder; records write the file.
class logfile {
public:
    /// Creates the folder, with its parents, if it does not exist.
    explicit logfile(const platform& system);
    virtual ~logfile() = default;
    logfile(const logfile&) = delete;
    logfile& operator=(const logfile&) = delete;

    /// The object of the process. It is created by the first call, on any thread, and destroyed when the process ends
    /// or the library is unloaded.
    static const logfile& instance();

    /// logfilepath(), or empty when the folder could not be created; that is not tried again.
    const std::string path;
};

}  // namespace orvsecutils
