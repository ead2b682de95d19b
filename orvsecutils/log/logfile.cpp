#include "orvsecutils/log/logfile.h"

#include "orvsecutils/settings/productnames.h"

namespace orvsecutils {

namespace {

std::string preparedpath(const platform& system) {
    const std::string path = logfilepath(system);
    return !path.empty() && system.createdirectory(system.parentfolder(path)) ? path : std::string();
}

}  // namespace

std::string logfilepath(const platform& system) {
    std::string path = system.profilefolder();
    for (const char* part : {companyname, groupkey, "orvsec.log"}) {
        // An empty path stays empty: appending to it would give a path relative to the current folder.
        path = path.empty() ? path : system.appendpath(path, part);
    }
    return path;
}

logfile::logfile(const platform& system) : path(preparedpath(system)) {}

const logfile& logfile::instance() {
    static const logfile instance(currentplatform());
    return instance;
}

}  // namespace orvsecutils
