#include "tools/orvdiag/logging.h"

#include <windows.h>

#include <stdexcept>
#include <vector>

#include "orvsecutils/log/debugsettings.h"
#include "orvsecutils/log/log.h"
#include "orvsecutils/log/logfile.h"
#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"
#include "tools/orvdiag/storedvalues.h"
#include "tools/orvdiag/text.h"

namespace orvdiag {

using namespace orvsecutils;

namespace {

const std::string switchname = debugsettings::loggingname;

std::string settingphrase(const storedvalue& row) {
    return "the " + whose(row.location) + " setting " + quoted(row.name);
}

bool hasswitchname(const storedvalue& row) {
    return equalsignorecase(row.name, switchname);
}

// Whether this is the value that the library reads as the switch, even if its kind is wrong.
bool isreadasswitch(const storedvalue& row) {
    return row.name == switchname && row.location != registrylocation::machine32 && !row.ignored;
}

std::vector<std::pair<cause, std::string>> faultsof(const std::vector<storedvalue>& rows) {
    std::vector<std::pair<cause, std::string>> faults;
    for (const storedvalue& row : rows) {
        const bool is32bit = row.location == registrylocation::machine32;
        if (row.badtext && !is32bit) {
            faults.emplace_back(cause::groupmalformed, settingphrase(row));
        } else if (hasswitchname(row)) {
            if (is32bit) {
                faults.emplace_back(cause::valueview, settingphrase(row));
            } else if (row.name != switchname) {
                faults.emplace_back(cause::loggingspelling, settingphrase(row));
            } else if (row.ignored) {
                faults.emplace_back(cause::valueignored, settingphrase(row) + " (" + row.kind + ")");
            } else if (row.kind != "number") {
                faults.emplace_back(cause::loggingtype, settingphrase(row) + " (" + row.kind + ")");
            }
        }
    }
    return faults;
}

std::string switchreason(const std::vector<storedvalue>& rows, bool groupread) {
    if (!groupread) {
        return std::string("because the group ") + debugsettings::groupname + " cannot be read";
    }
    bool any = false;
    std::string unreadable;
    for (const storedvalue& row : rows) {  // sorted: the user's value comes before the machine's
        if (isreadasswitch(row)) {
            return row.kind == numberkind ? "by the " + whose(row.location) + " setting"
                                          : "because " + settingphrase(row) + " is not a number";
        }
        any = any || hasswitchname(row);
        if (row.kind == groupkind && row.location != registrylocation::machine32) {
            unreadable = "because the " + whose(row.location) + " group " + debugsettings::groupname + " " + row.remark;
        }
    }
    if (!unreadable.empty()) {
        return unreadable;
    }
    return any ? "because no value that the library reads sets it" : "because nobody has set it";
}

}  // namespace

logstate readlogstate() {
    const std::vector<storedvalue> rows = storedvalues(debugsettings::groupname);
    try {
        const bool on = debugsettings().logging();  // reads the registry again, unlike instance()
        return {on, switchreason(rows, true), faultsof(rows)};
    } catch (const std::range_error&) {
        return {false, switchreason(rows, false), faultsof(rows)};
    }
}

std::string whylogisnotwritable(const std::string& path) {
    if (path.empty()) {
        return "Windows reports no profile folder for this user";
    }
    const auto open = [](const std::wstring& name, DWORD access, DWORD disposition, DWORD flags) {
        return filehandle(CreateFileW(name.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, disposition, flags, nullptr));
    };
    const std::wstring file = toutf16(path);
    if (open(file, FILE_APPEND_DATA, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL)) {
        return std::string();
    }
    if (const DWORD failure = GetLastError(); failure != ERROR_FILE_NOT_FOUND && failure != ERROR_PATH_NOT_FOUND) {
        return systemmessage(failure);
    }
    // The file does not exist yet, so try what the library would do: create the folders, then a file in them. The file
    // has a different name, because deleting the log itself could delete the first lines of a program.
    const platform& system = currentplatform();
    std::vector<std::string> missing;
    for (std::string folder = system.parentfolder(path);
         !system.pathexists(folder) && folder != system.parentfolder(folder); folder = system.parentfolder(folder)) {
        missing.insert(missing.begin(), folder);
    }
    std::string obstacle;
    for (const std::string& folder : missing) {
        if (obstacle.empty() && !CreateDirectoryW(toutf16(folder).c_str(), nullptr)) {
            obstacle = "the folder " + folder + " cannot be created: " + systemmessage(GetLastError());
        }
    }
    if (obstacle.empty() &&
        !open(file + L".trial", FILE_APPEND_DATA | DELETE, CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE)) {
        obstacle = "a file in " + system.parentfolder(path) + " cannot be created: " + systemmessage(GetLastError());
    }
    for (; !missing.empty(); missing.pop_back()) {
        // Fails, as it should, if a program has created a file there.
        RemoveDirectoryW(toutf16(missing.back()).c_str());
    }
    return obstacle;
}

commandresult logging(const std::string& state) {
    const std::string call = "orvdiag::logging(" + state + ")";
    if (state == "off") {
        // Before the switch changes: a process reads it once, so the lines about switching the log off are still
        // written.
        loginfo() << call;
    }
    bool written = true;
    if (!state.empty()) {
        // Writes only this value. settings::save() would write back the user's other values too.
        const settingsmap change = {{switchname, makesetting(state == "on" ? 1u : 0u)}};
        written = currentplatform().writesettings(settingsscope::user, librarygroup(debugsettings::groupname), change);
    }
    const auto [on, reason, faults] = readlogstate();
    findings found;
    for (const auto& [why, text] : faults) {
        found.add(area::logging, why, text);
    }
    const std::vector<std::string> remarks = found.sentences(area::logging);
    const std::string path = logfilepath(currentplatform());
    const std::string obstacle = whylogisnotwritable(path);

    commandresult result = {0, std::string(), json::object()};
    if (!written) {
        result.text += "The setting cannot be written to the user's registry.\n";
    }
    result.text += std::string("Logging is ") + (on ? "on" : "off") + ", " + reason + ".\n";
    for (const std::string& remark : remarks) {
        result.text += remark + "\n";
    }
    if (!state.empty()) {
        result.text += "Running programs keep their setting until they are restarted.\n";
    }
    result.text += "Log file: " + path + "\n";
    result.text += obstacle.empty() ? "It can be written.\n" : "It cannot be written: " + obstacle + "\n";
    result.data = {{"logging", on},
                   {"reason", reason},
                   {"remarks", remarks},
                   {"logfile", path},
                   {"writable", obstacle.empty()},
                   {"obstacle", obstacle}};
    const bool asrequested = state.empty() || (written && on == (state == "on"));
    result.status = !asrequested || (on && !obstacle.empty()) ? 1 : 0;
    if (state == "on") {
        loginfo() << call;
    }
    if (!state.empty()) {
        orvsecutils::log(result.status == 0) << call << "=" << (on ? "on" : "off");
    }
    return result;
}

}  // namespace orvdiag
