// Writes records as its first argument says, in a process of its own: the switch and the file are found once a process.

#include <windows.h>

#include <iomanip>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "orvsecutils/log/debugsettings.h"
#include "orvsecutils/log/log.h"

using namespace orvsecutils;

namespace {

struct unprintable {};
std::ostream& operator<<(std::ostream& stream, unprintable) {
    stream.setstate(std::ios::failbit);
    return stream;
}

void one() {
    loginfo() << "one";
}

void levels() {
    for (const int level : {0, 1, 2, 7, -1}) {
        log(level) << level;
    }
    log(true) << "true";
    log(false) << "false";
    loginfo() << "loginfo";
    logwarn() << "logwarn";
    logerror() << "logerror";
}

void shapes() {
    loginfo();
    loginfo() << "two\nlines";
    loginfo() << "日本" << ' ' << std::string("Größe") << ' ' << 1234567 << ' ' << std::hex << 255u << std::setw(4)
              << 1.5 << std::boolalpha << true;
    const char* const nothing = nullptr;
    loginfo() << "find(x)=" << nothing;
    loginfo() << "ended" << std::endl;
    loginfo() << "before " << unprintable() << "after";
    loginfo() << std::string(100000, 'x');
    logwarn outer;
    logerror inner;
    inner << "inner";
    outer << "outer";
}

// Whatever the store says later, the answer of the first record stays.
void change() {
    one();
    debugsettings group;
    group.setbool(debugsettings::loggingname, !debugsettings::instance().logging());
    group.save();
    one();
}

void closed() {
    fclose(stdout);
    one();
}

void write(int writer) {
    for (int line = 0; line < 500; ++line) {
        loginfo() << GetCurrentProcessId() << '.' << writer << '.' << line << std::string(line % 50, '-') << '|';
    }
}

void lines() {
    write(0);
}

void threads() {
    std::vector<std::thread> writers;
    for (int writer = 0; writer < 8; ++writer) {
        writers.emplace_back(write, writer);
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
}

}  // namespace

int main(int, char** arguments) {
    const std::map<std::string, void (*)()> modes = {{"one", one},       {"levels", levels}, {"shapes", shapes},
                                                     {"change", change}, {"closed", closed}, {"threads", threads},
                                                     {"lines", lines}};
    modes.at(arguments[1])();
}
