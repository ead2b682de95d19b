#pragma once

#include <string>

#include "orvsecutils/platform/platform.h"

namespace orvsecutils {

/// Where the log file of a system's user lies, whether or not it is there: `Orvel\LoginManager\orvsec.log` in his
/// profile folder. Empty when the system cannot name that folder, or the path is too long for it.
std::string logfilepath(const platform& system);

/// The log file of a process. Knows where it is and prepares its folder; records write it.
class logfile {
public:
    /// Makes the folder, with its parents, when it is missing.
    explicit logfile(const platform& system);
    virtual ~logfile() = default;
    logfile(const logfile&) = delete;
    logfile& operator=(const logfile&) = delete;

    /// The process's one object. Made at the first call, by whichever thread; destroyed when the process ends or the
    /// library is unloaded.
    static const logfile& instance();

    /// logfilepath(), or empty when the folder could not be made; that is not tried again.
    const std::string path;
};

}  // namespace orvsecutils
