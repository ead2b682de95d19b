#include <gmock/gmock.h>

#include <cstdio>
#include <iomanip>
#include <map>
#include <thread>

#include "orvsecutils/log/debugsettings.h"
#include "orvsecutils/log/log.h"
#include "orvsecutils/platform/unicode.h"
#include "tests/orvsecutils/failing_new.h"
#include "tests/support/sandbox.h"

using namespace orvsecutils;
using namespace std::string_view_literals;
using namespace testing;

namespace {

static_assert(!std::is_constructible_v<orvsecutils::log, const char*>, "a text is not a level");
static_assert(!std::is_copy_constructible_v<orvsecutils::log>, "a line is delivered once");
static_assert(!std::is_convertible_v<int, orvsecutils::log>);

// A process reads the switch and finds the log file only once. So the tests start this program again, with one of these
// tasks.

void logonerecord(int) {
    loginfo() << "one";
}

void logallshapes(int) {
    std::locale::global(std::locale(std::locale(), new digitgrouping));
    for (const int level : {0, 1, 2, 7, -1}) {
        orvsecutils::log(level) << level;
    }
    orvsecutils::log(true) << "true";
    orvsecutils::log(false) << "false";
    loginfo();
    logwarn() << "two\nlines";
    loginfo() << "日本" << ' ' << std::string("Größe") << ' ' << 1234567 << ' ' << std::hex << 255u << std::setw(4)
              << 1.5 << std::boolalpha << true << std::setw(9);
    char array[] = "array";
    loginfo() << static_cast<const char*>(nullptr) << static_cast<char*>(nullptr)
              << static_cast<unsigned char*>(nullptr) << array << &array[1];
    loginfo() << "ended" << std::endl;
    loginfo() << "before " << static_cast<std::streambuf*>(nullptr) << "after";  // not readable: the stream fails
    loginfo() << std::string(100000, 'x');
    logwarn outer;
    logerror inner;
    inner << "inner";
    outer << "outer";
}

// The first record decides for the whole process, whatever the registry says later.
void changeswitch(int on) {
    logonerecord(0);
    rawkey(HKEY_CURRENT_USER, view64, sandbox::switchkey).write(L"malformed", REG_DWORD, "");
    debugsettings group;
    group.setbool(debugsettings::loggingname, on != 0);
    group.save();
    std::fclose(stdout);  // the file does not need it
    logonerecord(0);
}

// The process ends with a record that is not delivered.
void logpartialrecord(int) {
    new loginfo;
}

// Repeats one record: first its first allocation fails, then its second, and so on, until none fails.
void logwithoutmemory(int) {
    for (long allocation = 1, left = 0; left == 0; ++allocation) {
        memory::countdown = allocation;
        try {
            loginfo() << "whole";
        } catch (const std::bad_alloc&) {}
        left = memory::countdown.exchange(0);
    }
}

void logfromthreads(int) {
    const auto write = [](char writer) {
        for (int line = 0; line < 500; ++line) {
            loginfo() << GetCurrentProcessId() << writer << line << std::string(line % 50, '-') << '|';
        }
    };
    std::thread other(write, 'a');
    write('b');
    other.join();
}

const std::map<std::string, void (*)(int)> tasks = {
    {"logonerecord", logonerecord},         {"logallshapes", logallshapes},     {"changeswitch", changeswitch},
    {"logpartialrecord", logpartialrecord}, {"logfromthreads", logfromthreads}, {"logwithoutmemory", logwithoutmemory}};

class Log : public Test {
protected:
    Log() { box.setswitch(HKEY_CURRENT_USER, 1); }

    // Runs a task. It must succeed, although its last record is made after the log's objects were destroyed.
    program::result child(const std::wstring& task) {
        const program::result run = box.run("orvsecutils_test.exe", task);
        EXPECT_EQ(run.status, 0u) << toutf8(task);
        return run;
    }

    sandbox box;
    const std::string rest = ",orvsecutils_test.exe,", info = "TIME,info" + rest;
};

TEST_F(Log, KeepsMessagesWholeAndLabelsLevels) {
    create_directories(box.folder());
    // A record is written even if someone else has the file open to read, write and delete it.
    filehandle other(CreateFileW(box.log().c_str(), GENERIC_READ | GENERIC_WRITE | DELETE,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS, 0,
                                 nullptr));
    const program::result run = child(L"logallshapes");
    other = {};
    const std::string warn = "TIME,warn" + rest, error = "TIME,error" + rest, unknown = "TIME,unknown" + rest;
    EXPECT_THAT(box.logged(),
                ElementsAre(info + "0", warn + "1", error + "2", unknown + "7", unknown + "-1", info + "true",
                            error + "false", info, warn + "two", "lines", info + "日本 Größe 1234567 ff 1.5true",
                            info + "nullnullnullarrayrray", info + "ended", "", info + "before ",
                            info + std::string(100000, 'x'), error + "inner", warn + "outer"));
    EXPECT_EQ(run.output, contentof(box.log())) << "every line is echoed";
    EXPECT_EQ(run.errors, "");
}

TEST_F(Log, ReadsTheSwitchOncePerProcess) {
    EXPECT_EQ(child(L"logpartialrecord").output, "") << "the objects that records share were destroyed before";
    box.setswitch(HKEY_CURRENT_USER, 0);
    EXPECT_EQ(child(L"changeswitch 1").output, "");
    EXPECT_FALSE(exists(box.folder().parent_path())) << "with logging off, not even folders are created";
    EXPECT_THAT(sandbox::lines(child(L"changeswitch 0").output), ElementsAre(EndsWith(",info" + rest + "one")));
    EXPECT_THAT(box.logged(), SizeIs(2)) << "the second record without standard output";
    // A malformed value counts as off, even after it was repaired.
    rawkey(HKEY_CURRENT_USER, view64, sandbox::switchkey).write(L"malformed", REG_SZ, bytesof(L"\xD800\0"sv));
    EXPECT_EQ(child(L"changeswitch 1").output, "");
    EXPECT_TRUE(debugsettings().logging());
    EXPECT_THAT(box.logged(), SizeIs(2));
}

TEST_F(Log, RecordsAreWholeOrLostWhenMemoryRunsOut) {
    child(L"logwithoutmemory");
    // A failure after the constructor may lose the message only.
    EXPECT_THAT(box.logged(), Each(AnyOf(info, info + "whole")));
    EXPECT_EQ(box.logged().back(), info + "whole");
}

TEST_F(Log, SaysWhenTheFileCannotBeOpened) {
    const auto expectfailure = [this](const std::string& path) {
        const program::result run = child(L"logonerecord");
        EXPECT_EQ(run.errors, "failed to open log file: " + path + "\r\n");
        EXPECT_THAT(sandbox::lines(run.output), ElementsAre(EndsWith(",one"))) << "the echo does not need the file";
    };
    create_directories(box.log());
    expectfailure(toutf8(box.log().native()));
    remove_all(box.folder());
    if (!onwine()) {
        return;  // Windows does not move a profile
    }
    box.moveprofile(box.folder() / std::string(255 - box.folder().native().size(), 'p'));  // too long to append to
    expectfailure("");
    box.moveprofile(box.folder().parent_path().parent_path());
    std::ofstream(box.folder()) << "in the way";
    expectfailure("");
    box.moveprofile(box.folder() / "missing");
    expectfailure("");
}

TEST_F(Log, TakesLinesOfManyThreadsAndProcesses) {
    std::vector<program> programs;
    for (int i = 0; i < 4; ++i) {
        programs.push_back(box.start("orvsecutils_test.exe", L"logfromthreads"));
    }
    for (const program& running : programs) {
        const program::result run = running.wait();
        EXPECT_THAT(sandbox::lines(run.output), SizeIs(1000));
        EXPECT_EQ(run.errors, "");
    }
    const std::vector<std::string> lines = box.logged();
    const auto iswhole = [this](const std::string& line) {
        return line.find(info) == 0 && line.find('|') == line.size() - 1;
    };
    // Wine finds the end of the file before it writes, not as part of the write.
    EXPECT_GE(std::count_if(lines.begin(), lines.end(), iswhole), onwine() ? 2000 : 4000);
}

}  // namespace

int main(int count, char** arguments) {
    InitGoogleTest(&count, arguments);
    if (count == 1) {
        return RUN_ALL_TESTS();
    }
    // Constructed before the log's own objects, and so destroyed after them: its record is lost.
    static const struct late {
        ~late() { loginfo() << "late"; }
    } late;
    tasks.at(arguments[1])(count > 2 ? std::atoi(arguments[2]) : 0);
}
