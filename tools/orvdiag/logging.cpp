#include "tools/orvdiag/logging.h"

#include "orvsecutils/log/debugsettings.h"
#include "orvsecutils/log/logfile.h"
#include "orvsecutils/platform/platform.h"
#include "tools/orvdiag/report.h"
#include "tools/orvdiag/settingslist.h"

namespace orvdiag {

using namespace orvsecutils;

namespace {

// Whose value it is that decides.
std::string decider() {
    const settingsdef definition = librarygroup(debugsettings::groupname);
    for (const auto scope : {settingsscope::user, settingsscope::machine}) {
        const settingsmap values = currentplatform().readsettings(scope, definition);
        const auto found = values.find(debugsettings::loggingname);
        if (found != values.end()) {
            const std::string whose = scope == settingsscope::user ? "user's" : "machine's";
            return found->second->type == settingtype::integer
                       ? "by the " + whose + " setting"
                       : "because the " + whose + " setting \"" + debugsettings::loggingname + "\" is not a number";
        }
    }
    return "because nobody has set it";
}

}  // namespace

outcome switchlogging(const arguments& given) {
    if (!given.words.empty()) {
        // This one value, and not the group as a whole: saving would write back what else the user has there.
        const settingsmap change = {{debugsettings::loggingname, makesetting(given.words.front() == "on" ? 1u : 0u)}};
        if (!currentplatform().writesettings(settingsscope::user, librarygroup(debugsettings::groupname), change)) {
            complain("the setting cannot be written to the user's registry");
            return {1, std::nullopt};
        }
    }
    const std::string state = debugsettings().logging() ? "on" : "off";  // read anew
    print("Logging is " + state + ", " + decider() + ".\n");
    if (!given.words.empty()) {
        print("Programs that are running keep their setting until they are started again.\n");
    }
    print("Log file: " + logfilepath(currentplatform()) + "\n");
    return {0, state};
}

}  // namespace orvdiag
