#include "orvsecutils/log/debugsettings.h"

namespace orvsecutils {

debugsettings::debugsettings() : settings(groupname) {}

const debugsettings& debugsettings::instance() {
    static const debugsettings instance;
    return instance;
}

bool debugsettings::logging() const {
    bool on = false;
    return getbool(loggingname, on) && on;
}

}  // namespace orvsecutils
