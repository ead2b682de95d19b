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

const std::string wanted = debugsettings::loggingname;

std::string named(const storedvalue& row) {
    return "the " + whose(row.place) + " setting " + quoted(row.name);
}

bool aboutlogging(const storedvalue& row) {
    return samebutcase(row.name, wanted);
}

// Whether this is the value that the library reads as the switch, even if its kind is wrong.
bool counts(const storedvalue& row) {
    return row.name == wanted && row.place != store::machine32 && !row.ignored;
}

// One sentence for each value that does not have the effect that its author probably expected.
std::vector<std::string> surprises(const std::vector<storedvalue>& rows) {
    std::vector<std::string> sentences;
    for (const storedvalue& row : rows) {
        const std::string start = "T" + named(row).substr(1);
        if (row.badtext && row.place != store::machine32) {
            sentences.push_back(start + " is malformed (not valid UTF-16): the library cannot read the group " +
                                debugsettings::groupname + ".");
        }
        if (!aboutlogging(row)) {
            continue;
        }
        if (row.place == store::machine32) {
            sentences.push_back(start + " lies in the 32-bit view of the registry: the library reads the 64-bit view.");
        } else if (row.name != wanted) {
            sentences.push_back(start + " is spelled differently: the library reads " + quoted(wanted) +
                                " only, so delete it.");
        } else if (row.kind != "number") {
            sentences.push_back(start + " is not a number (REG_DWORD) but of the kind " + row.kind +
                                (row.ignored ? ": the library ignores it." : ": it counts as off."));
        } else if (row.ignored) {
            sentences.push_back(start + " is malformed: the library ignores it.");
        }
    }
    return sentences;
}

std::string reason(const std::vector<storedvalue>& rows, bool groupread) {
    if (!groupread) {
        return std::string("because the group ") + debugsettings::groupname + " cannot be read";
    }
    bool any = false;
    for (const storedvalue& row : rows) {  // sorted: the user's value comes before the machine's
        if (counts(row)) {
            return row.kind == "number" ? "by the " + whose(row.place) + " setting"
                                        : "because " + named(row) + " is not a number";
        }
        any = any || aboutlogging(row);
    }
    return any ? "because no value that the library reads sets it" : "because nobody has set it";
}

}  // namespace

std::string logobstacle(const std::string& path) {
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
        return systemwords(failure);
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
            obstacle = "the folder " + readable(folder.native()) + " cannot be made: " + systemwords(GetLastError());
        }
    }
    if (obstacle.empty() &&
        !open(file.native() + L".trial", FILE_APPEND_DATA | DELETE, CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE)) {
        obstacle =
            "a file in " + readable(file.parent_path().native()) + " cannot be made: " + systemwords(GetLastError());
    }
    for (; !missing.empty(); missing.pop_back()) {
        RemoveDirectoryW(missing.back().c_str());  // fails, as it should, if a program has created a file there
    }
    return obstacle;
}

answer logging(const std::string& word) {
    const std::string call = "orvdiag::logging(" + word + ")";
    if (word == "off") {
        // Before the switch changes: a process reads it once, so the lines about switching the log off are still
        // written.
        loginfo() << call;
    }
    bool written = true;
    if (!word.empty()) {
        // Writes only this value. settings::save() would write back the user's other values too.
        const settingsmap change = {{wanted, makesetting(word == "on" ? 1u : 0u)}};
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
    const std::string because = reason(rows, groupread);
    const std::vector<std::string> sentences = surprises(rows);
    const std::string path = logfilepath(currentplatform());
    const std::string obstacle = logobstacle(path);

    answer result = {0, std::string(), json::object()};
    if (!written) {
        result.text += "The setting cannot be written to the user's registry.\n";
    }
    result.text += std::string("Logging is ") + (on ? "on" : "off") + ", " + because + ".\n";
    for (const std::string& sentence : sentences) {
        result.text += sentence + "\n";
    }
    if (!word.empty()) {
        result.text += "Programs that are running keep their setting until they are started again.\n";
    }
    result.text += "Log file: " + path + "\n";
    result.text += obstacle.empty() ? "It can be written.\n" : "It cannot be written: " + obstacle + "\n";
    result.data = {{"logging", on},
                   {"reason", because},
                   {"remarks", sentences},
                   {"logfile", path},
                   {"writable", obstacle.empty()},
                   {"obstacle", obstacle}};
    const bool asked = word.empty() || (written && on == (word == "on"));
    result.status = !asked || (on && !obstacle.empty()) ? 1 : 0;
    if (word == "on") {
        loginfo() << call;
    }
    if (!word.empty()) {
        orvsecutils::log(result.status == 0) << call << "=" << (on ? "on" : "off");
    }
    return result;
}

}  // namespace orvdiag
