#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <set>
#include <stdexcept>

#include "orvsecutils/log/debugsettings.h"
#include "orvsecutils/log/log.h"
#include "orvsecutils/platform/unicode.h"
#include "tests/orvsecutils/sandbox.h"

using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::SizeIs;
using testing::StartsWith;

namespace {

static_assert(!std::is_constructible_v<orvsecutils::log, const char*>, "a text is no level");
static_assert(!std::is_copy_constructible_v<orvsecutils::log>, "a line is delivered once");
static_assert(!std::is_convertible_v<int, orvsecutils::log>);

class Log : public testing::Test {
protected:
    Log() { box.setswitch(HKEY_CURRENT_USER, 1); }

    // Runs a child, which must end well although it makes its last record when the log has ended already.
    program::outcome child(const std::wstring& mode) {
        const program::outcome run = box.run("log_child.exe", mode);
        EXPECT_EQ(run.status, 0u) << orvsecutils::toutf8(mode);
        return run;
    }

    sandbox box;
};

TEST_F(Log, KeepsMessagesWholeAndLabelsLevels) {
    create_directories(box.folder());
    // A record can be written to a file that another has open for everything.
    orvsecutils::filehandle other(CreateFileW(box.log().c_str(), GENERIC_READ | GENERIC_WRITE | DELETE,
                                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                              OPEN_ALWAYS, 0, nullptr));
    const program::outcome run = child(L"shapes");
    other = {};
    const std::string info = "TIME,info,log_child.exe,";
    EXPECT_THAT(box.logged(),
                ElementsAre(info + "0", "TIME,warn,log_child.exe,1", "TIME,error,log_child.exe,2",
                            "TIME,unknown,log_child.exe,7", "TIME,unknown,log_child.exe,-1", info + "true",
                            "TIME,error,log_child.exe,false", info, "TIME,warn,log_child.exe,two", "lines",
                            info + "日本 Größe 1234567 ff 1.5true", info + "find(x)=nullnullnullarrayrray",
                            info + "ended", "", info + "before ", info + std::string(100000, 'x'),
                            "TIME,error,log_child.exe,inner", "TIME,warn,log_child.exe,outer"));
    EXPECT_EQ(run.output, contentof(box.log())) << "every line is echoed";
    EXPECT_EQ(run.errors, "");
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
        for (const auto& [hive, value] : {std::pair(HKEY_CURRENT_USER, row.user), {HKEY_LOCAL_MACHINE, row.machine}}) {
            box.clearswitch(hive);
            if (value != absent) {
                box.setswitch(hive, value == text ? L'1' : value, value == text ? REG_SZ : REG_DWORD);
            }
        }
        EXPECT_EQ(orvsecutils::debugsettings().logging(), row.logs) << row.user << " and " << row.machine;
    }
}

TEST_F(Log, KeepsTheFirstAnswerOfAProcess) {
    box.setswitch(HKEY_CURRENT_USER, 0);
    EXPECT_EQ(child(L"change 1").output, "");
    EXPECT_FALSE(exists(box.folder().parent_path())) << "off, it must not even make folders";
    EXPECT_THAT(sandbox::lines(child(L"change 0").output), ElementsAre(EndsWith(",info,log_child.exe,one")));
    EXPECT_THAT(box.logged(), SizeIs(2)) << "the second one without a standard output";
    // A malformed value counts as off, also after it has been mended.
    const wchar_t malformed[] = L"\xD800";
    RegSetKeyValueW(HKEY_CURRENT_USER, sandbox::switchkey, L"malformed", REG_SZ, malformed, sizeof malformed);
    EXPECT_THROW(orvsecutils::debugsettings(), std::range_error);
    EXPECT_EQ(child(L"change 1").output, "");
    EXPECT_TRUE(orvsecutils::debugsettings().logging());
    EXPECT_THAT(box.logged(), SizeIs(2));
}

TEST_F(Log, RecordsAreWholeOrLostWhenMemoryRunsOut) {
    const std::string header = "TIME,info,log_child.exe,";
    for (int allocation = 1, missed = 0; missed < 2 && allocation < 1000; ++allocation) {
        SCOPED_TRACE(allocation);
        const std::vector<std::string> outcomes =
            sandbox::lines(child(L"memory " + std::to_wstring(allocation)).errors);
        ASSERT_THAT(outcomes, SizeIs(2));
        const std::vector<std::string> logged = box.logged();
        EXPECT_THAT(logged, Each(StartsWith(header)));
        EXPECT_EQ(logged.back(), header + "third");
        missed = 0;
        for (const int record : {0, 1}) {  // one that fails elsewhere than in its constructor may lose its message only
            const auto whole = std::count(logged.begin(), logged.end(), header + (record == 0 ? "first" : "second"));
            EXPECT_LE(whole, outcomes[record] == "thrown hit" ? 0 : 1);
            EXPECT_GE(whole, outcomes[record] == "missed" ? 1 : 0);
            missed += outcomes[record] == "missed";
        }
        std::filesystem::remove(box.log());
    }
}

TEST_F(Log, SaysWhenTheFileCannotBeOpened) {
    const auto expectfailure = [this](const std::string& path) {
        const program::outcome run = child(L"one");
        EXPECT_EQ(run.errors, "failed to open log file: " + path + "\r\n");
        EXPECT_THAT(sandbox::lines(run.output), ElementsAre(EndsWith(",one"))) << "the echo does not need the file";
    };
    create_directories(box.log());
    expectfailure(orvsecutils::toutf8(box.log().native()));
    remove_all(box.folder());
    std::ofstream(box.folder()) << "in the way";
    expectfailure("");
    box.moveprofile(box.folder() / "missing");
    expectfailure("");
}

TEST_F(Log, TakesLinesOfManyThreadsAndProcesses) {
    constexpr std::size_t written = 8 * 500;
    for (const std::size_t processes : {1, 8}) {
        std::vector<program> programs;
        while (programs.size() < processes) {
            programs.push_back(box.start("log_child.exe", L"threads " + std::to_wstring(8 / processes)));
        }
        for (program& running : programs) {
            const program::outcome run = running.wait();
            EXPECT_THAT(sandbox::lines(run.output), SizeIs(written / processes));
            EXPECT_EQ(run.errors, "");
        }
        const std::vector<std::string> logged = box.logged();
        const std::set<std::string> lines(logged.begin(), logged.end());
        const auto whole = std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
            return line.find("TIME,info,log_child.exe,") == 0 && line.find('|') == line.size() - 1;
        });
        std::cout << processes << " processes: " << written << " lines written, " << whole << " whole in the file\n";
        // Wine finds the end of the file before it writes, not as part of the write.
        const bool wine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
        EXPECT_GE(whole, static_cast<std::ptrdiff_t>(wine ? written / 2 : written));
        std::filesystem::remove(box.log());
    }
}

}  // namespace
