#pragma once

#include "orvsecutils/settings/settings.h"

namespace orvsecutils {

/// The settings group that says whether the log is written. Read once in a process's life: a change in the store takes
/// effect in the next process.
class debugsettings : public settings {
public:
    static constexpr char groupname[] = "Debug";
    static constexpr char loggingname[] = "Logging";

    /// Reads the group. Throws as `settings` does.
    debugsettings();

    /// The process's one object. Made at the first call, by whichever thread; destroyed when the process ends or the
    /// library is unloaded. Throws as the constructor does, and the next call tries again.
    static const debugsettings& instance();

    /// Whether records are delivered: "Logging" is an integer and not 0. Any thread may call.
    bool logging() const;
};

}  // namespace orvsecutils
