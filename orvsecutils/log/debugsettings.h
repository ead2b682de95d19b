#pragma once

#include "orvsecutils/settings/settings.h"

namespace orvsecutils {

/// The settings group with the log's switch. A process reads it once, so a change in the registry takes effect in
/// processes that start afterwards.
class debugsettings : public settings {
public:
    static constexpr char groupname[] = "Debug";      ///< the group
    static constexpr char loggingname[] = "Logging";  ///< the switch: an integer; any value but 0 is on

    /// Reads the group. Throws as `settings` does.
    debugsettings();

    /// The process's only instance. It is created by the first call, on any thread, and destroyed when the process ends
    /// or the library is unloaded. Throws as the constructor does; the next call then tries again.
    static const debugsettings& instance();

    /// Whether records are delivered: "Logging" is an integer other than 0. Any thread may call.
    bool logging() const;
};

}  // namespace orvsecutils
