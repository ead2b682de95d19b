// Writes records as its first argument says, in a process of its own: the switch and the file are found once a process.

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <iomanip>
#include <locale>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "orvsecutils/log/debugsettings.h"
#include "orvsecutils/log/log.h"
#include "tests/orvsecutils/failing_new.h"

using namespace orvsecutils;

namespace {

// Constructed before the log's own objects, and so destroyed after them: its record is lost.
struct late {
    ~late() { loginfo() << "late"; }
} lateobject;

void one(int) {
    loginfo() << "one";
}

struct grouping : std::numpunct<char> {
    std::string do_grouping() const override { return "\1"; }
};

void shapes(int) {
    std::locale::global(std::locale(std::locale(), new grouping));
    for (const int level : {0, 1, 2, 7, -1}) {
        log(level) << level;
    }
    log(true) << "true";
    log(false) << "false";
    loginfo();
    logwarn() << "two\nlines";
    loginfo() << "日本" << ' ' << std::string("Größe") << ' ' << 1234567 << ' ' << std::hex << 255u << std::setw(4)
              << 1.5 << std::boolalpha << true << std::setw(9);
    const char* const nothing = nullptr;
    char* const nothingtowrite = nullptr;
    unsigned char* const nobytes = nullptr;
    char array[] = "array";
    loginfo() << "find(x)=" << nothing << nothingtowrite << nobytes << array << &array[1];
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
void change(int on) {
    one(0);
    RegDeleteKeyValueW(HKEY_CURRENT_USER, L"software\\Orvel\\LoginManager\\Debug", L"malformed");
    debugsettings group;
    group.setbool(debugsettings::loggingname, on != 0);
    group.save();
    std::fclose(stdout);  // the file does not need it
    one(0);
}

// Two records with an allocation that fails, and a third one.
void memoryfails(int allocation) {
    for (const char* message : {"first", "second"}) {
        memory::countdown = allocation;
        try {
            loginfo() << message;
        } catch (const std::bad_alloc&) {
            std::fputs("thrown ", stderr);
        }
        std::fputs(memory::countdown == 0 ? "hit\n" : "missed\n", stderr);
        memory::countdown = 0;
    }
    loginfo() << "third";
}

void write(int threads) {
    std::vector<std::thread> writers;
    for (int writer = 0; writer < threads; ++writer) {
        writers.emplace_back([writer] {
            for (int line = 0; line < 500; ++line) {
                loginfo() << GetCurrentProcessId() << '.' << writer << '.' << line << std::string(line % 50, '-')
                          << '|';
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
}

}  // namespace

int main(int count, char** arguments) {
    const std::map<std::string, void (*)(int)> modes = {
        {"one", one}, {"shapes", shapes}, {"change", change}, {"memory", memoryfails}, {"threads", write}};
    modes.at(arguments[1])(count > 2 ? std::atoi(arguments[2]) : 0);
}
