#include "tools/orvdiag/logging.h"

#include <windows.h>

#include <filesystem>
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

// One sentence for each value that does not have the effect that its author probably expected.
std::vector<std::string> settingremarks(const std::vector<storedvalue>& rows) {
    std::vector<std::string> remarks;
    for (const storedvalue& row : rows) {
        const std::string start = "T" + settingphrase(row).substr(1);
        if (row.badtext && row.location != registrylocation::machine32) {
            remarks.push_back(start + " is malformed (not valid UTF-16): the library cannot read the group " +
                              debugsettings::groupname + ".");
        }
        if (!hasswitchname(row)) {
            continue;
        }
        if (row.location == registrylocation::machine32) {
            remarks.push_back(start + " lies in the 32-bit view of the registry: the library reads the 64-bit view.");
        } else if (row.name != switchname) {
            remarks.push_back(start + " is spelled differently: the library reads " + quoted(switchname) +
                              " only, so delete it.");
        } else if (row.kind != "number") {
            remarks.push_back(start + " is not a number (REG_DWORD) but of the kind " + row.kind +
                              (row.ignored ? ": the library ignores it." : ": it counts as off."));
        } else if (row.ignored) {
            remarks.push_back(start + " is malformed: the library ignores it.");
        }
    }
    return remarks;
}

std::string switchreason(const std::vector<storedvalue>& rows, bool groupread) {
    if (!groupread) {
        return std::string("because the group ") + debugsettings::groupname + " cannot be read";
    }
    bool any = false;
    for (const storedvalue& row : rows) {  // sorted: the user's value comes before the machine's
        if (isreadasswitch(row)) {
            return row.kind == "number" ? "by the " + whose(row.location) + " setting"
                                        : "because " + settingphrase(row) + " is not a number";
        }
        any = any || hasswitchname(row);
    }
    return any ? "because no value that the library reads sets it" : "because nobody has set it";
}

}  // namespace

std::string whylogisnotwritable(const std::string& path) {
    if (path.empty()) {
        return "Windows reports no profile folder for this user";
    }
    const std::filesystem::path file = toutf16(path);
    const auto open = [](const std::filesystem::path& name, DWORD access, DWORD disposition, DWORD flags) {
        return filehandle(CreateFileW(name.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, disposition, flags, nullptr));
    };
    if (open(file, FILE_APPEND_DATA, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL)) {
        return std::string();
    }
    if (const DWORD failure = GetLastError(); failure != ERROR_FILE_NOT_FOUND && failure != ERROR_PATH_NOT_FOUND) {
        return systemmessage(failure);
    }
    // The file does not exist yet, so try what the library would do: create the folders, then a file in them. The file
    // has a different name, because deleting the log itself could delete the first lines of a program.
    std::vector<std::filesystem::path> missing;
    for (std::filesystem::path folder = file.parent_path(); !exists(folder); folder = folder.parent_path()) {
        missing.insert(missing.begin(), folder);
    }
    std::string obstacle;
    for (const std::filesystem::path& folder : missing) {
        if (obstacle.empty() && !CreateDirectoryW(folder.c_str(), nullptr)) {
            obstacle =
                "the folder " + toutf8lossy(folder.native()) + " cannot be made: " + systemmessage(GetLastError());
        }
    }
    if (obstacle.empty() &&
        !open(file.native() + L".trial", FILE_APPEND_DATA | DELETE, CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE)) {
        obstacle = "a file in " + toutf8lossy(file.parent_path().native()) +
                   " cannot be made: " + systemmessage(GetLastError());
    }
    for (; !missing.empty(); missing.pop_back()) {
        RemoveDirectoryW(missing.back().c_str());  // fails, as it should, if a program has created a file there
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
    bool on = false;
    bool groupread = true;
    try {
        on = debugsettings().logging();  // reads the registry again, unlike instance()
    } catch (const std::range_error&) {
        groupread = false;
    }
    const std::vector<storedvalue> rows = storedvalues(debugsettings::groupname);
    const std::string reason = switchreason(rows, groupread);
    const std::vector<std::string> remarks = settingremarks(rows);
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
        result.text += "Programs that are running keep their setting until they are started again.\n";
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
