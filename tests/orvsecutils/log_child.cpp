// Writes records as its argument says, in a process of its own: the switch and the file are found once a process.

#include <windows.h>

#include <cstdio>
#include <iomanip>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "orvsecutils/log/debugsettings.h"
#include "orvsecutils/log/log.h"

using namespace orvsecutils;

namespace {

void one() {
    loginfo() << "one";
}

void levels() {
    for (const int level : {0, 1, 2, 7, -1}) {
        log(level) << level;
    }
    log(true) << "true";
    log(false) << "false";
}

void shapes() {
    loginfo();
    loginfo() << "two\nlines";
    loginfo() << "日本" << ' ' << std::string("Größe") << ' ' << 1234567 << ' ' << std::hex << 255u << std::setw(4)
              << 1.5 << std::boolalpha << true;
    const char* const nothing = nullptr;
    loginfo() << "find(x)=" << nothing;
    loginfo() << "ended" << std::endl;
    std::streambuf* const unreadable = nullptr;
    loginfo() << "before " << unreadable << "after";
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

void lines(int writer) {
    for (int line = 0; line < 500; ++line) {
        loginfo() << GetCurrentProcessId() << '.' << writer << '.' << line << std::string(line % 50, '-') << '|';
    }
}

template <int Threads>
void write() {
    std::vector<std::thread> writers;
    for (int writer = 0; writer < Threads; ++writer) {
        writers.emplace_back(lines, writer);
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
}

}  // namespace

int main(int, char** arguments) {
    const std::map<std::string, void (*)()> modes = {{"one", one},           {"levels", levels}, {"shapes", shapes},
                                                     {"change", change},     {"closed", closed}, {"1 thread", write<1>},
                                                     {"8 threads", write<8>}};
    modes.at(arguments[1])();
}
