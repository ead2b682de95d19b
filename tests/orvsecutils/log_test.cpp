#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <set>

#include "orvsecutils/log/log.h"
#include "orvsecutils/platform/unicode.h"
#include "tests/orvsecutils/sandbox.h"

using testing::ElementsAre;
using testing::EndsWith;
using testing::SizeIs;

namespace {

static_assert(!std::is_constructible_v<orvsecutils::log, const char*>, "a text is no level");
static_assert(!std::is_copy_constructible_v<orvsecutils::log>, "a line is delivered once");
static_assert(!std::is_convertible_v<int, orvsecutils::log>);

class Log : public testing::Test {
protected:
    Log() { box.setswitch(HKEY_CURRENT_USER, 1); }
    program::outcome child(const wchar_t* mode) { return box.run("log_child.exe", mode); }

    sandbox box;
};

TEST_F(Log, LabelsLevelsAndFiltersNone) {
    const program::outcome run = child(L"levels");
    EXPECT_THAT(box.logged(),
                ElementsAre("TIME,info,log_child.exe,0", "TIME,warn,log_child.exe,1", "TIME,error,log_child.exe,2",
                            "TIME,unknown,log_child.exe,7", "TIME,unknown,log_child.exe,-1",
                            "TIME,info,log_child.exe,true", "TIME,error,log_child.exe,false"));
    EXPECT_EQ(run.output, contentof(box.log())) << "every line is echoed";
    EXPECT_EQ(run.errors, "");
}

TEST_F(Log, KeepsMessagesWhole) {
    child(L"shapes");
    const std::string info = "TIME,info,log_child.exe,";
    EXPECT_THAT(box.logged(),
                ElementsAre(info, info + "two", "lines", info + "日本 Größe 1234567 ff 1.5true", info + "find(x)=null",
                            info + "ended", "", info + "before ", info + std::string(100000, 'x'),
                            "TIME,error,log_child.exe,inner", "TIME,warn,log_child.exe,outer"));
}

TEST_F(Log, ObeysTheSwitchAlone) {
    constexpr int absent = -1;
    constexpr int text = -2;
    const struct {
        int user;
        int machine;
        bool logs;
    } cases[] = {
        {absent, absent, false}, {0, absent, false}, {1, absent, true}, {2, absent, true}, {text, absent, false},
        {absent, 1, true},       {0, 1, false},      {text, 1, false},  {1, 0, true},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(&row - cases);
        std::filesystem::remove_all(box.folder().parent_path());
        for (const auto& [hive, value] : {std::pair(HKEY_CURRENT_USER, row.user), {HKEY_LOCAL_MACHINE, row.machine}}) {
            box.clearswitch(hive);
            if (value != absent) {
                box.setswitch(hive, value == text ? L'1' : value, value == text ? REG_SZ : REG_DWORD);
            }
        }
        const program::outcome run = child(L"one");
        EXPECT_EQ(exists(box.folder().parent_path()), row.logs) << "off, it must not even make folders";
        EXPECT_THAT(box.logged(), SizeIs(row.logs));
        EXPECT_THAT(sandbox::lines(run.output), SizeIs(row.logs));
        EXPECT_EQ(run.errors, "");
    }
}

TEST_F(Log, KeepsTheFirstAnswerOfAProcess) {
    child(L"change");  // to off
    EXPECT_THAT(box.logged(), SizeIs(2));
    child(L"change");  // to on
    EXPECT_THAT(box.logged(), SizeIs(2));
    child(L"one");
    EXPECT_THAT(box.logged(), SizeIs(3));
}

TEST_F(Log, CannotBeHadAndSaysSo) {
    const std::filesystem::path folder = box.folder();
    const std::filesystem::path file = box.log();
    const std::string path = orvsecutils::toutf8(file.native());
    const auto occupy = [](const std::filesystem::path& place) {
        create_directories(place.parent_path());
        std::ofstream(place) << "kept";
        return place.c_str();
    };
    orvsecutils::filehandle holder;
    const struct {
        const char* what;
        std::function<void()> prepare;
        std::string path;
    } cases[] = {
        {"held by another",
         [&] {
             holder = orvsecutils::filehandle(
                 CreateFileW(occupy(file), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
         },
         path},
        {"read-only", [&] { SetFileAttributesW(occupy(file), FILE_ATTRIBUTE_READONLY); }, path},
        {"a folder of its name", [&] { create_directories(file); }, path},
        {"inner folder is a file", [&] { occupy(folder); }, ""},
        {"outer folder is a file", [&] { occupy(folder.parent_path()); }, ""},
        {"no profile folder", [&] { box.moveprofile(folder / "missing"); }, ""},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.what);
        row.prepare();
        const bool canbehad = std::ofstream(file, std::ios::app).is_open();  // as a read-only one by Wine's root
        const program::outcome run = child(L"one");
        EXPECT_EQ(run.errors, canbehad ? "" : "failed to open log file: " + row.path + "\r\n");
        EXPECT_EQ(run.status, 0u);
        EXPECT_THAT(sandbox::lines(run.output), ElementsAre(EndsWith(",one"))) << "the echo does not need the file";
        holder = {};
        SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
        remove_all(folder.parent_path());
    }
}

TEST_F(Log, SurvivesAClosedStandardOutput) {
    EXPECT_EQ(child(L"closed").status, 0u);
    EXPECT_THAT(box.logged(), ElementsAre("TIME,info,log_child.exe,one"));
}

TEST_F(Log, TakesLinesOfManyThreadsAndProcesses) {
    constexpr std::size_t written = 8 * 500;
    const struct {
        std::size_t processes;
        const wchar_t* mode;
    } cases[] = {{1, L"\"8 threads\""}, {8, L"\"1 thread\""}};
    for (const auto& row : cases) {
        std::vector<program> programs;
        while (programs.size() < row.processes) {
            programs.push_back(box.start("log_child.exe", row.mode));
        }
        for (program& running : programs) {
            const program::outcome run = running.wait();
            EXPECT_THAT(sandbox::lines(run.output), SizeIs(written / row.processes));
            EXPECT_EQ(run.errors, "");
        }
        std::set<std::string> whole;
        std::size_t torn = 0;
        const std::string header = "TIME,info,log_child.exe,";
        for (const std::string& line : box.logged()) {
            const bool good = line.compare(0, header.size(), header) == 0 && line.find('|') == line.size() - 1;
            torn += !good || !whole.insert(line).second;
        }
        std::cout << row.processes << " processes: " << written << " lines written, " << whole.size()
                  << " whole in the file, " << torn << " torn or double\n";
        if (GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version")) {
            EXPECT_LE(whole.size(), written);
            EXPECT_GE(whole.size(), written / 2) << "Wine looks for the end of the file before it writes, not while";
        } else {
            EXPECT_EQ(whole.size(), written);
            EXPECT_EQ(torn, 0u);
        }
        std::filesystem::remove(box.log());
    }
}

}  // namespace
