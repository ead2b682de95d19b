#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <set>

#include "orvsecutils/log/log.h"
#include "orvsecutils/log/logfile.h"
#include "orvsecutils/platform/unicode.h"
#include "tests/log/sandbox.h"

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;

namespace {

static_assert(!std::is_constructible_v<orvsecutils::log, const char*>, "a text is no level");
static_assert(!std::is_copy_constructible_v<orvsecutils::log>, "a line is delivered once");
static_assert(!std::is_convertible_v<int, orvsecutils::log>);

class Log : public testing::Test {
protected:
    sandbox::outcome child(const wchar_t* mode) { return box.run(std::wstring(L"log_child.exe ") + mode); }
    std::vector<std::string> logged() { return sandbox::lines(sandbox::read(box.log())); }

    // What follows the time, whose form is looked at on the way.
    std::vector<std::string> loggedaftertime() {
        std::vector<std::string> result;
        for (const std::string& line : logged()) {
            EXPECT_THAT(line.substr(0, 25),
                        MatchesRegex("\\d\\d/\\d\\d/\\d\\d\\d\\d \\d\\d:\\d\\d:\\d\\d.\\d\\d\\d\\d,"));
            result.push_back(line.substr(std::min<std::size_t>(line.size(), 25)));
        }
        return result;
    }

    sandbox box;
};

TEST_F(Log, LabelsLevelsAndFiltersNone) {
    box.setswitch(HKEY_CURRENT_USER, 1);
    const sandbox::outcome run = child(L"levels");
    EXPECT_THAT(
        loggedaftertime(),
        ElementsAre("info,log_child.exe,0", "warn,log_child.exe,1", "error,log_child.exe,2", "unknown,log_child.exe,7",
                    "unknown,log_child.exe,-1", "info,log_child.exe,true", "error,log_child.exe,false",
                    "info,log_child.exe,loginfo", "warn,log_child.exe,logwarn", "error,log_child.exe,logerror"));
    EXPECT_EQ(run.output, sandbox::read(box.log())) << "every line is echoed";
    EXPECT_EQ(run.errors, "");
}

TEST_F(Log, KeepsMessagesWhole) {
    box.setswitch(HKEY_CURRENT_USER, 1);
    child(L"shapes");
    const std::string info = "info,log_child.exe,";
    std::string text = sandbox::read(box.log());
    // The lines without a header of their own get one, so that the others can be looked at as ever.
    const std::string header = text.substr(0, text.find("\r\n"));
    text.insert(text.find("\r\nlines") + 2, header);
    text.insert(text.find("ended\r\n\r\n") + 7, header);
    std::ofstream(box.log(), std::ios::binary) << text;
    EXPECT_THAT(loggedaftertime(),
                ElementsAre(info, info + "two", info + "lines", info + "日本 Größe 1234567 ff 1.5true",
                            info + "find(x)=null", info + "ended", info, info + "before ",
                            info + std::string(100000, 'x'), "error,log_child.exe,inner", "warn,log_child.exe,outer"));
}

TEST_F(Log, ObeysTheSwitchAlone) {
    const HKEY user = HKEY_CURRENT_USER;
    const HKEY machine = HKEY_LOCAL_MACHINE;
    const auto number = [this](HKEY hive, DWORD value) { return [=] { box.setswitch(hive, value); }; };
    const auto text = [this](HKEY hive) { return [=] { box.setswitch(hive, REG_SZ, L"1", 4); }; };
    const auto nothing = [] {};
    const struct {
        std::function<void()> first;
        std::function<void()> second;
        bool logs;
    } cases[] = {
        {nothing, nothing, false},
        {number(user, 0), nothing, false},
        {number(user, 1), nothing, true},
        {number(user, 2), nothing, true},
        {text(user), nothing, false},
        {number(machine, 1), nothing, true},
        {number(machine, 1), number(user, 0), false},
        {number(machine, 1), text(user), false},
        {number(machine, 0), number(user, 1), true},
    };
    for (const auto& row : cases) {
        row.first();
        row.second();
        const sandbox::outcome run = child(L"one");
        SCOPED_TRACE(&row - cases);
        EXPECT_EQ(std::filesystem::exists(box.folder().parent_path()), row.logs)
            << "off, it must not even make folders";
        EXPECT_THAT(logged(), SizeIs(row.logs ? 1 : 0));
        EXPECT_THAT(sandbox::lines(run.output), SizeIs(row.logs ? 1 : 0));
        EXPECT_EQ(run.errors, "");
        box.clearswitch(user);
        box.clearswitch(machine);
        std::filesystem::remove_all(box.folder().parent_path());
    }
}

TEST_F(Log, KeepsTheFirstAnswerOfAProcess) {
    box.setswitch(HKEY_CURRENT_USER, 1);
    child(L"change");  // to off
    EXPECT_THAT(logged(), SizeIs(2));
    child(L"change");  // to on
    EXPECT_THAT(logged(), SizeIs(2));
    child(L"one");
    EXPECT_THAT(logged(), SizeIs(3));
}

TEST_F(Log, CannotBeHadAndSaysSo) {
    box.setswitch(HKEY_CURRENT_USER, 1);
    const std::filesystem::path folder = box.folder();
    const std::filesystem::path file = box.log();
    const std::string path = orvsecutils::toutf8(file.native());
    const auto occupy = [](const std::filesystem::path& place) { std::ofstream(place) << "kept"; };
    const auto permit = [&](DWORD attributes) { SetFileAttributesW(file.c_str(), attributes); };
    orvsecutils::filehandle holder;
    const struct {
        const char* what;
        std::function<void()> prepare;
        std::string path;
    } cases[] = {
        {"held by another",
         [&] {
             create_directories(folder);
             holder.reset(CreateFileW(file.c_str(), GENERIC_READ, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
         },
         path},
        {"read-only", [&] { create_directories(folder), occupy(file), permit(FILE_ATTRIBUTE_READONLY); }, path},
        {"a folder of its name", [&] { create_directories(file); }, path},
        {"inner folder is a file", [&] { create_directories(folder.parent_path()), occupy(folder); }, ""},
        {"outer folder is a file", [&] { occupy(folder.parent_path()); }, ""},
        {"no profile folder", [&] { box.moveprofile(folder / "missing"); }, ""},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.what);
        row.prepare();
        const bool canbehad = std::ofstream(file, std::ios::app).is_open();  // as a read-only one by Wine's root
        const sandbox::outcome run = child(L"one");
        EXPECT_EQ(run.errors, canbehad ? "" : "failed to open log file: " + row.path + "\r\n");
        EXPECT_EQ(run.status, 0u);
        EXPECT_THAT(sandbox::lines(run.output), ElementsAre(EndsWith(",one"))) << "the echo does not need the file";
        holder.reset();
        permit(FILE_ATTRIBUTE_NORMAL);
        std::filesystem::remove_all(folder.parent_path());
    }
}

TEST_F(Log, SurvivesAClosedStandardOutput) {
    box.setswitch(HKEY_CURRENT_USER, 1);
    EXPECT_EQ(child(L"closed").status, 0u);
    EXPECT_THAT(loggedaftertime(), ElementsAre("info,log_child.exe,one"));
}

// Counts the writers' lines in the file: each ends in "|" and is there once.
void expectlines(const std::vector<std::string>& lines, std::size_t written, const char* writers) {
    std::set<std::string> whole;
    std::size_t torn = 0;
    for (const std::string& line : lines) {
        const bool good = line.size() > 25 && line.back() == '|' && std::count(line.begin(), line.end(), '|') == 1 &&
                          line.find(",info,log_child.exe,") == 24;
        good ? static_cast<void>(whole.insert(line.substr(44))) : static_cast<void>(++torn);
    }
    std::cout << writers << ": " << written << " lines written, " << whole.size() << " whole in the file, " << torn
              << " torn\n";
    EXPECT_LE(whole.size(), written);
    if (GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version")) {
        EXPECT_GE(whole.size(), written / 2) << "Wine looks for the end of the file before it writes, not while";
    } else {
        EXPECT_EQ(whole.size(), written);
        EXPECT_EQ(torn, 0u);
    }
}

TEST_F(Log, TakesLinesOfManyThreads) {
    box.setswitch(HKEY_CURRENT_USER, 1);
    const sandbox::outcome run = child(L"threads");
    EXPECT_THAT(sandbox::lines(run.output), SizeIs(8 * 500));
    EXPECT_EQ(run.errors, "");
    expectlines(logged(), 8 * 500, "8 threads");
}

TEST_F(Log, TakesLinesOfManyProcesses) {
    box.setswitch(HKEY_CURRENT_USER, 1);
    std::vector<sandbox::program> programs;
    for (int i = 0; i < 8; ++i) {
        programs.emplace_back(box, L"log_child.exe lines");
    }
    for (sandbox::program& program : programs) {
        const sandbox::outcome run = program.wait();
        EXPECT_THAT(sandbox::lines(run.output), SizeIs(500));
        EXPECT_EQ(run.errors, "");
    }
    expectlines(logged(), 8 * 500, "8 processes");
}

}  // namespace
