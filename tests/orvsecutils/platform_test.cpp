#include <windows.h>

#include <winsvc.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <locale>
#include <string>
#include <tuple>
#include <vector>

#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"
#include "tests/support/temporary_folder.h"

using namespace orvsecutils;

namespace {

const platform& here = currentplatform();

// Another way to know what the platform tells.
std::string environment(const wchar_t* name) {
    wchar_t value[1000];
    return toutf8({value, GetEnvironmentVariableW(name, value, 1000)});
}

class Files : public testing::Test {
protected:
    std::string file(const std::string& name, const std::string& content) const {
        std::ofstream(std::filesystem::path(toutf16(folder + "\\" + name)), std::ios::binary) << content;
        return folder + "\\" + name;
    }

    const temporary_folder temporary;
    const std::string folder = toutf8(temporary.path.native());
};

}  // namespace

TEST(Facts, AgreeWithTheEnvironment) {
    const std::pair<std::string, const wchar_t*> cases[] = {
        {here.username(), L"USERNAME"},
        {here.profilefolder(), L"USERPROFILE"},
        {here.localappdatafolder(), L"LOCALAPPDATA"},
        {here.roamingappdatafolder(), L"APPDATA"},
        {here.programfilesfolder(), L"ProgramFiles"},
        {here.programfilesx86folder(), L"ProgramFiles(x86)"},
        {here.publicfolder(), L"PUBLIC"},
    };
    for (const auto& [actual, variable] : cases) {
        EXPECT_EQ(actual, environment(variable)) << toutf8(variable);
        EXPECT_NE(actual, "");
    }
    std::string computer = here.computername();
    std::transform(computer.begin(), computer.end(), computer.begin(), ::toupper);
    EXPECT_EQ(computer.substr(0, 15), environment(L"COMPUTERNAME"));  // the variable has the NetBIOS name
    EXPECT_EQ(here.executablename(), "orvsecutils_platform_test.exe");
    EXPECT_TRUE(here.pathexists(here.executablefolder() + "\\" + here.executablename()));
}

TEST(Facts, NumbersAreNotGroupedByTheHostsLocale) {
    struct grouping : std::numpunct<char> {
        std::string do_grouping() const override { return "\1"; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale(), new grouping));
    const std::string version = here.osversion(), languages = here.languageids(), processors = here.processorinfo();
    std::locale::global(before);
    EXPECT_EQ(std::count(version.begin(), version.end(), ','), 4) << version;
    EXPECT_EQ(languages, std::to_string(GetUserDefaultLangID()) + "," + std::to_string(GetSystemDefaultLangID()));
    EXPECT_EQ(processors.substr(0, processors.find(',')), environment(L"NUMBER_OF_PROCESSORS"));
    EXPECT_EQ(std::count(processors.begin(), processors.end(), ','), 2) << processors;
}

TEST(Paths, AreTakenApartAtTheirLastComponent) {
    const std::string longPath = "C:\\" + std::string(300, 'x');
    const std::string cases[][3] = {
        {"", "", ""},
        {"a", "", "a"},
        {"C:\\", "C:\\", "C:\\"},
        {"C:\\a\\", "C:\\a", "a\\"},
        {"\\\\server\\share", "\\\\server", "share"},
        {"\\\\server\\share\\a", "\\\\server\\share", "a"},
        {"\\\\?\\C:\\a\\b", "\\\\?\\C:\\a", "b"},
        {"C:\\\xE5\xAD\x97\\\xF0\x9F\x98\x80", "C:\\\xE5\xAD\x97", "\xF0\x9F\x98\x80"},
        {longPath + "\\" + std::string(300, 'y'), longPath, std::string(300, 'y')},
    };
    for (const auto& [path, parent, name] : cases) {
        EXPECT_EQ(here.parentfolder(path), parent) << path;
        EXPECT_EQ(here.filename(path), name) << path;
    }
}

TEST(Paths, AreJoinedWithOneSeparatorOrNotAtAll) {
    const std::string longest = "C:\\" + std::string(250, 'x'), tooLong = longest + "123456789";
    const std::string cases[][3] = {
        {"C:\\a\\", "\\b", "C:\\a\\b"},
        {"C:\\", "b", "C:\\b"},
        {"C:\\a", "", "C:\\a"},
        {"", "b", "b"},
        {"C:\\a", "..\\\xE5\xAD\x97", "C:\\\xE5\xAD\x97"},
        {"C:\\a", "D:\\b", "D:\\b"},
        {"\\\\server\\share", "b", "\\\\server\\share\\b"},
        {longest, "12345", longest + "\\12345"},
        {longest, "123456", ""},
        {"a", tooLong, ""},
        {"a", std::string(100000, 'b'), ""},
    };
    for (const auto& [path, more, joined] : cases) {
        EXPECT_EQ(here.appendpath(path, more), joined) << path << " and " << more.substr(0, 20);
    }
}

TEST_F(Files, FoldersAreMadeUnlessSomethingIsInTheWay) {
    const std::string plain = file("plain", "content");
    const std::string deep = "\\a\\\xE5\xAD\x97\\c", longName = "\\" + std::string(200, 'l');
    const std::string longPath = "\\\\?\\" + folder + longName + longName;
    const std::pair<std::string, bool> cases[] = {
        {folder, true},
        {folder + deep, true},
        {folder + deep, true},
        {folder + "\\sub\\", true},
        {plain, false},
        {plain + "\\below\\further", false},
        {folder + "\\a?\\b", false},
        {longPath, true},
        {"", false},
        {"C:\\", true},
        {"Q:\\none\\such", false},
        {"\\\\orvsecutils.invalid\\share\\a\\b", false},
    };
    for (const auto& [path, made] : cases) {
        EXPECT_EQ(here.createdirectory(path), made) << path;
        EXPECT_EQ(here.directoryexists(path), made) << path;
    }
    std::filesystem::remove(toutf16(longPath));  // too long for remove_all
    EXPECT_TRUE(here.pathexists(plain) && !here.directoryexists(plain));
    std::ifstream content(toutf16(plain).c_str());
    EXPECT_EQ(content.get(), 'c') << "the file in the way is left alone";
}

TEST_F(Files, TimesAndNamesOfEntriesAreTold) {
    std::int64_t creation = 1, access = 2, write = 3;
    EXPECT_FALSE(here.filetimes(folder + "\\none", creation, access, write));
    EXPECT_TRUE(creation == 1 && access == 2 && write == 3) << "untouched on failure";

    const std::string path = file("\xE5\xAD\x97.txt", "");
    here.createdirectory(folder + "\\sub");
    const std::int64_t now = std::time(nullptr);
    EXPECT_TRUE(currentplatform().filetimes(path, creation, access, write));
    std::vector<fileentry> entries = {{"old", 0}};
    EXPECT_FALSE(here.findfiles(folder + "\\*.none", entries));
    EXPECT_TRUE(entries.empty());
    EXPECT_TRUE(here.findfiles(folder + "\\*", entries));
    const auto lately = [&](std::int64_t time) { return std::abs(time - now) <= 5; };
    EXPECT_TRUE(lately(creation) && lately(access) && lately(write));
    const auto entry = [&](const char* name) { return testing::FieldsAre(name, testing::Truly(lately)); };
    EXPECT_THAT(entries, testing::UnorderedElementsAre(entry("sub"), entry("\xE5\xAD\x97.txt")));

    here.deletefile(folder + "\\sub");
    here.deletefile(path);
    EXPECT_TRUE(here.pathexists(folder + "\\sub")) << "a folder is not a file";
    EXPECT_FALSE(here.pathexists(path));
}

TEST_F(Files, IniValuesAreCutWhereTheBufferEnds) {
    const std::wstring content = L"\xFEFF[section]\r\nshort=\x5B57\r\nempty=\r\nlong=" + std::wstring(300, L'x') +
                                 L"\r\npair=" + std::wstring(258, L'x') + L"\xD83D\xDE00\r\n";
    const std::string path = file(
        "values.ini", std::string(reinterpret_cast<const char*>(content.data()), content.size() * sizeof(wchar_t)));
    const std::string cases[][3] = {
        {"section", "short", "\xE5\xAD\x97"},
        {"section", "long", std::string(259, 'x')},
        {"section", "pair", std::string(258, 'x')},
        {"section", "empty", ""},
        {"none", "short", ""},
    };
    for (const auto& [section, key, expected] : cases) {
        std::string value = "old";
        EXPECT_EQ(here.readinivalue(path, section, key, value), !expected.empty()) << key;
        EXPECT_EQ(value, expected) << key;
    }
}

TEST_F(Files, ProcessesAreRunToTheirEnd) {
    const std::string shell = environment(L"ComSpec");
    EXPECT_EQ(here.runprocess(shell, {"/c", "exit", "7"}), 7);
    const std::string output = folder + "\\output";
    EXPECT_EQ(
        here.runprocess(shell, {"/c", "ping", "-n", "2", "127.0.0.1", ">nul", "&", "mkdir", "\"" + output + "\""}), 0);
    EXPECT_TRUE(here.directoryexists(output)) << "waited for the end";
    EXPECT_EQ(here.runprocess(folder + "\\none.exe", {"a"}), -1);
}

TEST(Services, AreToldAsTheyWereInstalled) {
    const std::string name = "orvsecutils-test-" + std::to_string(GetCurrentProcessId());
    const servicehandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    const servicehandle service(CreateServiceW(manager.get(), toutf16(name).c_str(), L"Test \x5B57", SERVICE_ALL_ACCESS,
                                               SERVICE_WIN32_SHARE_PROCESS, SERVICE_DISABLED, SERVICE_ERROR_SEVERE,
                                               L"C:\\\x416 none\\service.exe -k", L"test group", nullptr, nullptr,
                                               nullptr, nullptr));
    ASSERT_TRUE(service);
    serviceconfiguration actual = {};
    const bool found = here.serviceconfig(name, actual);
    DeleteService(service.get());
    EXPECT_TRUE(found);
    // Not the dependencies: Wine does not keep them.
    EXPECT_THAT(std::tie(actual.servicetype, actual.starttype, actual.errorcontrol, actual.tagid),
                testing::FieldsAre(0x20, 4, 2, 0));
    EXPECT_THAT(
        std::tie(actual.binarypathname, actual.loadordergroup, actual.servicestartname, actual.displayname),
        testing::FieldsAre("C:\\\xD0\x96 none\\service.exe -k", "test group", "LocalSystem", "Test \xE5\xAD\x97"));

    actual.displayname = "kept";
    EXPECT_FALSE(here.serviceconfig(name + "-none", actual));
    EXPECT_EQ(actual.displayname, "kept");
}
