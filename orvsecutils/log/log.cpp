#include "orvsecutils/log/log.h"

#include <atomic>
#include <cstdio>
#include <locale>
#include <new>
#include <string>

#include "orvsecutils/log/appendfile.h"
#include "orvsecutils/log/debugsettings.h"
#include "orvsecutils/log/logfile.h"
#include "orvsecutils/log/recordheader.h"
#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/platformerror.h"

namespace orvsecutils {

namespace {

// Whether the objects that records need have begun to be destroyed. A record that a static object of the host makes
// later, in its destructor, is lost. The flag has no destructor, so reading it is always safe.
std::atomic<bool> ended{false};

// A static object that is created after one that records need, and therefore destroyed before it.
struct endmark {
    endmark() = default;
    ~endmark() { ended = true; }
    endmark(const endmark&) = delete;
    endmark& operator=(const endmark&) = delete;
};

// The result of `call`, or `fallback` if the system's strings are malformed. Exhausted memory is always thrown as
// std::bad_alloc, also where the platform throws platformerror for it.
template <class Result, class Call>
Result valueor(Call call, Result fallback) {
    try {
        return call();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const platformerror&) {
        throw std::bad_alloc();
    } catch (const std::exception&) {
        return fallback;
    }
}

// Determined by the first record, used by all later ones. If the switch cannot be read, logging stays off
// for the life of the process, even if the registry is repaired meanwhile.
struct sharedfacts {
    const bool enabled = valueor([] { return debugsettings::instance().logging(); }, false);
    const std::string executable = valueor([] { return currentplatform().executablename(); }, std::string());
};

const sharedfacts& facts() {
    static const sharedfacts found;  // if the constructor throws, the next record tries again
    static const endmark mark;
    return found;
}

void deliver(const std::string& line) {
    // Not std::cout: the host may have enabled its exceptions, or left it in a failed state.
    std::fwrite(line.data(), 1, line.size(), stdout);
    static const std::string& path = logfile::instance().path;
    static const endmark mark;
    if (!appendtofile(path, line)) {
        const std::string message = "failed to open log file: " + path + "\n";
        std::fwrite(message.data(), 1, message.size(), stderr);
    }
}

}  // namespace

log::log(int levelIn) : enabled(!ended && facts().enabled), level(levelIn) {
    if (ended) {
        return;  // without a header, because the executable's name has been destroyed
    }
    if (enabled) {
        buffer.imbue(std::locale::classic());
    }
    // Built even if logging is off, so that switching it on changes only the delivery: a fault in building a record
    // shows in every process, not only in those that support looks at.
    putheader(*buffer.rdbuf(), currentwalltime(), level, facts().executable);
}

log::log(bool ok) : log(ok ? 0 : 2) {}

log::~log() {
    if (!enabled || ended) {
        return;
    }
    try {
        buffer.rdbuf()->sputc('\n');  // not by <<, which does nothing after a failed insertion
        deliver(buffer.str());
    } catch (...) {
        // The record is lost: a destructor must not throw, and logging must not disturb the caller.
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
