#include "orvsecutils/log/log.h"

#include <cstdio>
#include <locale>
#include <string>

#include "orvsecutils/log/appendfile.h"
#include "orvsecutils/log/debugsettings.h"
#include "orvsecutils/log/logfile.h"
#include "orvsecutils/log/recordheader.h"
#include "orvsecutils/platform/platform.h"

namespace orvsecutils {

namespace {

// Off when the settings cannot be read.
bool loggingenabled() {
    try {
        return debugsettings::instance().logging();
    } catch (const std::exception&) {
        return false;
    }
}

// Asked once: a process keeps the name that it was started under.
const std::string& executable() {
    static const std::string name = [] {
        try {
            return currentplatform().executablename();
        } catch (const std::exception&) {
            return std::string();  // a name that is no text
        }
    }();
    return name;
}

void deliver(const std::string& line) {
    // Not by std::cout, which is the host's to change: it may throw, or be in a state of failure.
    std::fwrite(line.data(), 1, line.size(), stdout);
    const std::string& path = logfile::instance().path;
    if (!appendtofile(path, line)) {
        const std::string message = "failed to open log file: " + path + "\n";
        std::fwrite(message.data(), 1, message.size(), stderr);
    }
}

}  // namespace

log::log(int levelIn) : enabled(loggingenabled()), level(levelIn) {
    if (enabled) {
        buffer.imbue(std::locale::classic());
    }
    buffer << recordheader(currentwalltime(), level, executable());
}

log::log(bool ok) : log(ok ? 0 : 2) {}

log::~log() {
    if (!enabled) {
        return;
    }
    try {
        buffer.clear();  // whatever an insertion has failed at, the rest is worth having
        buffer << '\n' << std::flush;
        deliver(buffer.str());
    } catch (...) {
        // Lost: there is nobody to tell.
    }
}

log& log::operator<<(const char* text) {
    if (enabled) {
        buffer << (text ? text : "null");
    }
    return *this;
}

log& log::operator<<(std::ostream& (*manipulator)(std::ostream&)) {
    if (enabled) {
        manipulator(buffer);
    }
    return *this;
}

log& log::operator<<(std::ios_base& (*manipulator)(std::ios_base&)) {
    if (enabled) {
        manipulator(buffer);
    }
    return *this;
}

}  // namespace orvsecutils
