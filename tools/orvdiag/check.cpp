#include "tools/orvdiag/check.h"

#include <exception>
#include <utility>

#include "orvsecutils/log/logfile.h"
#include "orvsecutils/platform/platform.h"
#include "tools/orvdiag/findings.h"
#include "tools/orvdiag/libraryfiles.h"
#include "tools/orvdiag/logging.h"
#include "tools/orvdiag/storedvalues.h"
#include "tools/orvdiag/systemfacts.h"
#include "tools/orvdiag/text.h"
#include "tools/orvdiag/trial.h"

namespace orvdiag {

namespace {

using orvsecutils::currentplatform;

void checksettings(findings& found) {
    const std::vector<storedvalue> rows = allstoredvalues();
    found.good(area::settings, rows.empty() ? "none" : std::to_string(rows.size()) + " values");
    for (const storedvalue& row : rows) {
        const std::string name = whose(row.location) + " " + row.group + "\\" + row.name;
        if (row.location == registrylocation::machine32) {
            found.add(area::settings, cause::valueview, name);
        } else if (row.badtext) {
            found.add(area::settings, cause::groupmalformed, name);
        } else if (row.kind == groupkind) {
            found.add(area::settings, cause::groupunreadable,
                      whose(row.location) + " " + row.group + " (" + row.remark + ")");
        } else if (row.ignored) {
            found.add(area::settings, cause::valueignored, name + " (" + row.kind + ")");
        }
    }
}

void checklogging(findings& found) {
    const logstate state = readlogstate();
    found.good(area::logging, "on, " + state.reason);
    if (!state.on) {
        found.add(area::logging, cause::loggingoff, state.reason);
    }
    for (const auto& [why, text] : state.faults) {
        found.add(area::logging, why, text);
    }
}

void checklogfile(findings& found) {
    const std::string path = orvsecutils::logfilepath(currentplatform());
    if (path.empty()) {
        found.add(area::logfile, cause::nottried, "there is no profile folder");
        return;
    }
    const std::string obstacle = whylogisnotwritable(path);
    if (!obstacle.empty()) {
        found.add(area::logfile, cause::logunwritable, obstacle);
    }
    found.good(area::logfile, path + (currentplatform().pathexists(path) ? "" : ", does not exist yet"));
}

void checkprofile(findings& found) {
    const std::string folder = currentplatform().profilefolder();
    const std::string user = currentplatform().username();
    const std::string sessionuser = usernameofsession();
    if (folder.empty()) {
        found.add(area::profile, cause::profilemissing, std::string());
    }
    if (!sessionuser.empty() && !equalsignorecase(user, sessionuser)) {
        found.add(area::profile, cause::userother, user + " instead of " + sessionuser);
    }
    found.good(area::profile, folder);
}

void checknetwork(findings& found) {
    const trial address = trynetworkaddress();
    found.good(area::network, address.text);
    if (!address.succeeded) {
        found.add(area::network, cause::networkfails, address.text);
    } else if (address.text.empty()) {
        found.add(area::network, cause::networkmissing, std::string());
    }
}

constexpr std::pair<area, void (*)(findings& found)> checks[] = {{area::settings, checksettings},
                                                                 {area::logging, checklogging},
                                                                 {area::logfile, checklogfile},
                                                                 {area::profile, checkprofile},
                                                                 {area::network, checknetwork}};

}  // namespace

commandresult check(const std::wstring& folder) {
    findings found;
    checklibrary(folder, found);
    for (const auto& [where, run] : checks) {
        try {
            run(found);
        } catch (const std::exception& failed) {
            found.add(where, cause::nottried, failed.what());
        }
    }
    commandresult result = found.summary();
    const std::string name = toutf8lossy(folder);
    result.text.insert(0, "Folder: " + name + "\n");
    result.data["folder"] = name;
    return result;
}

}  // namespace orvdiag
