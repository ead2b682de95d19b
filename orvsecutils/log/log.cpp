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

// Whether the process has begun to destroy what records need. A destructor of one of the host's static objects may make
// a record after that; it is lost. The flag itself has no destructor, so it can always be asked.
std::atomic<bool> ended{false};

// Made after the object that records need, and so destroyed before it.
struct endmark {
    endmark() = default;
    ~endmark() { ended = true; }
    endmark(const endmark&) = delete;
    endmark& operator=(const endmark&) = delete;
};

// The answer of `ask`, or `otherwise` if the system's texts are malformed. Exhausted memory is no answer: it is thrown,
// as std::bad_alloc whatever the platform calls it.
template <class Answer, class Call>
Answer answer(Call ask, Answer otherwise) {
    try {
        return ask();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const platformerror&) {
        throw std::bad_alloc();
    } catch (const std::exception&) {
        return otherwise;
    }
}

// What the process's first record finds out for all of them. A failure to read the switch counts as off, also when the
// store is mended later: all records of a process share one answer.
struct sharedfacts {
    const bool enabled = answer([] { return debugsettings::instance().logging(); }, false);
    const std::string executable = answer([] { return currentplatform().executablename(); }, std::string());
};

const sharedfacts& facts() {
    static const sharedfacts found;  // not kept when the constructor throws: the next record tries again
    static const endmark mark;
    return found;
}

void deliver(const std::string& line) {
    // Not by std::cout: the host may have made it throw, or left it in a state of failure.
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
        return;  // without a header: the executable's name is gone, too
    }
    if (enabled) {
        buffer.imbue(std::locale::classic());
    }
    // Built when logging is off as well, so that switching it on changes nothing but the delivery: what building a
    // record needs is exercised in every process, not only in those that support looks at.
    putheader(*buffer.rdbuf(), currentwalltime(), level, facts().executable);
}

log::log(bool ok) : log(ok ? 0 : 2) {}

log::~log() {
    if (!enabled || ended) {
        return;
    }
    try {
        buffer.rdbuf()->sputc('\n');  // not by insertion, which does nothing once another one has failed
        deliver(buffer.str());
    } catch (...) {
        // Lost: a destructor cannot report it, and the caller must not be disturbed.
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
