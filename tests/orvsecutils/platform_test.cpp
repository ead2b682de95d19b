#include <windows.h>

#include <shlobj.h>

#include <gmock/gmock.h>

#include <thread>

#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/com.h"
#include "orvsecutils/platform/windows/filetime.h"
#include "orvsecutils/platform/windows/wmiconnection.h"
#include "orvsecutils/platform/wmi.h"
#include "tests/orvsecutils/fakewmi.h"
#include "tests/support/sandbox.h"

using namespace orvsecutils;
using namespace std::string_literals;
using namespace testing;

namespace {

const platform& windows = currentplatform();

// A second source for the platform's facts.
std::string environment(const wchar_t* name) {
    wchar_t value[1000];
    return toutf8({value, GetEnvironmentVariableW(name, value, 1000)});
}

std::string registrytext(const wchar_t* key, const wchar_t* name) {
    wchar_t value[256];
    DWORD bytes = sizeof value;
    const LSTATUS status = RegGetValueW(HKEY_LOCAL_MACHINE, key, name, RRF_RT_REG_SZ, nullptr, value, &bytes);
    return status == ERROR_SUCCESS ? toutf8(value) : std::string();
}

FILETIME filetime(std::int64_t seconds) {
    const std::int64_t ticks = (seconds + 11644473600) * 10000000;
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

class Files : public Test {
protected:
    std::string file(const std::string& name, const std::string& content) const {
        std::ofstream(std::filesystem::path(toutf16(folder + "\\" + name)), std::ios::binary) << content;
        return folder + "\\" + name;
    }

    const temporary_folder temporary;
    const std::string folder = toutf8(temporary.path.native());
};

class WmiOnFakes : public Test {
protected:
    ~WmiOnFakes() override {
        EXPECT_EQ(fakewmi.references, 0);
        fakewmi = untouched;
    }
    const struct fakewmi untouched = fakewmi;
    std::vector<wmirow> rows;
};

}  // namespace

TEST(Facts, AgreeWithOtherSources) {
    { const sandbox restored; }  // a test that was killed leaves the profile folder moved
    wchar_t profile[MAX_PATH] = L"";
    SHGetFolderPathW(nullptr, CSIDL_PROFILE, nullptr, 0, profile);
    // The host's locale does not matter.
    const std::locale before = std::locale::global(std::locale(std::locale(), new digitgrouping));
    const DWORD build = GetVersion();
    const std::string pack = registrytext(L"Software\\Microsoft\\Windows NT\\CurrentVersion", L"CSDVersion");
    const std::pair<std::string, std::string> facts[] = {
        {windows.computername(), registrytext(L"SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters", L"Hostname")},
        {windows.username(), environment(L"USERNAME")},
        {windows.profilefolder(), toutf8(profile)},
        {windows.localappdatafolder(), environment(L"LOCALAPPDATA")},
        {windows.roamingappdatafolder(), environment(L"APPDATA")},
        {windows.programfilesfolder(), environment(L"ProgramFiles")},
        {windows.programfilesx86folder(), environment(L"ProgramFiles(x86)")},
        {windows.publicfolder(), environment(L"PUBLIC")},
        {windows.executablename(), "orvsecutils_test.exe"},
        {windows.executablefolder(), toutf8(program::ownfolder().native())},
        {windows.osversion(), std::to_string(LOBYTE(build)) + "," + std::to_string(HIBYTE(LOWORD(build))) + "," +
                                  std::to_string(HIWORD(build)) + "," + (pack.empty() ? "0" : pack.substr(13)) + ",0"},
        {windows.languageids(),
         std::to_string(GetUserDefaultLangID()) + "," + std::to_string(GetSystemDefaultLangID())},
        {windows.processorinfo(),
         environment(L"NUMBER_OF_PROCESSORS") + (sizeof(void*) == 8 ? ",9," : ",0,") + environment(L"PROCESSOR_LEVEL")},
    };
    std::locale::global(before);
    for (const auto& [actual, expected] : facts) {
        EXPECT_EQ(actual, expected);
        EXPECT_NE(actual, "") << expected;
    }
}

// Also run with several languages and time zones in the environment.
TEST(Environment, DecidesLanguageAndFileTimes) {
    const std::string expected = environment(L"EXPECTED_LANGUAGE");
    EXPECT_EQ(std::to_string(windows.uilanguage()), expected.empty() ? "3" : expected);

    // File times are off by the difference between today's offset from UTC and the one at that time.
    TIME_ZONE_INFORMATION zone;
    const bool summer = GetTimeZoneInformation(&zone) == TIME_ZONE_ID_DAYLIGHT,
               hassummer = zone.DaylightDate.wMonth != 0;
    for (const std::int64_t seconds :
         {1705320001LL, 1721044859LL, 4102488000LL}) {  // January and July 2024, January 2100
        const bool wassummer = hassummer && seconds == 1721044859;
        EXPECT_EQ(calendartime(filetime(seconds)), seconds + 3600 * (summer - wassummer)) << seconds;
    }
    EXPECT_EQ(calendartime({}), -1) << "in the year 1601";
}

TEST(Paths, AreSplitAndJoined) {
    const std::string longpath = "C:\\" + std::string(300, 'x'), longest = "C:\\" + std::string(250, 'x');
    const std::tuple<std::string, std::string, std::string> split[] = {
        {"a", "", "a"},
        {"C:\\", "C:\\", "C:\\"},
        {"C:\\a\\", "C:\\a", "a\\"},
        {longpath + "\\\xF0\x9F\x98\x80", longpath, "\xF0\x9F\x98\x80"}};
    for (const auto& [path, parent, name] : split) {
        EXPECT_EQ(windows.parentfolder(path), parent) << path;
        EXPECT_EQ(windows.filename(path), name) << path;
    }
    const std::string joined[][3] = {{"C:\\a\\", "\\b", "C:\\a\\b"},
                                     {"", "b", "b"},
                                     {"C:\\a", "..\\\xE5\xAD\x97", "C:\\\xE5\xAD\x97"},
                                     {"C:\\a", "D:\\b", "D:\\b"},
                                     {longest, "12345", longest + "\\12345"},
                                     {longest, "123456", ""},
                                     {"a", longpath, ""}};
    for (const auto& [path, more, whole] : joined) {
        EXPECT_EQ(windows.appendpath(path, more), whole) << path << " and " << more.substr(0, 20);
    }
}

TEST_F(Files, FoldersAreCreatedUnlessSomethingIsInTheWay) {
    const std::string plain = file("plain", "content");
    const std::string deep = "\\a\\\xE5\xAD\x97\\c", longname = "\\" + std::string(200, 'l');
    const std::string longpath = "\\\\?\\" + folder + longname + longname;
    for (const std::string& path :
         {folder, folder + deep, folder + deep, folder + "\\new\\sub\\", folder + "/one/two/three", longpath}) {
        EXPECT_TRUE(windows.createdirectory(path)) << path;
        EXPECT_TRUE(windows.directoryexists(path)) << path;
    }
    for (const std::string& path : {plain, plain + "\\below\\further", folder + "\\a?\\b", std::string(),
                                    "Q:\\none\\such"s, "\\\\orvsecutils.invalid\\share\\a\\b"s}) {
        EXPECT_FALSE(windows.createdirectory(path)) << path;
        EXPECT_FALSE(windows.directoryexists(path)) << path;
    }
    std::filesystem::remove(toutf16(longpath));  // too long for remove_all
    EXPECT_EQ(contentof(toutf16(plain)), "content") << "the file in the way is left alone";
}

TEST_F(Files, TimesAndNamesOfEntriesAreReported) {
    std::int64_t creation = 1, access = 2, write = 3;
    EXPECT_FALSE(windows.filetimes(folder + "\\none", creation, access, write));
    EXPECT_THAT(std::tie(creation, access, write), FieldsAre(1, 2, 3)) << "untouched on failure";

    const std::string path = file(".\xE5\xAD\x97.txt", "");
    windows.createdirectory(folder + "\\sub");
    {
        const filehandle opened(
            CreateFileW(toutf16(path).c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        const FILETIME times[] = {filetime(3000), filetime(2000), filetime(3000)};
        EXPECT_TRUE(SetFileTime(opened.get(), &times[0], &times[1], &times[2]));
    }
    std::vector<fileentry> entries = {{"old", 0}};
    EXPECT_FALSE(windows.findfiles(folder + "\\*.none", entries));
    EXPECT_THAT(entries, IsEmpty());
    EXPECT_TRUE(windows.findfiles(folder + "\\*.txt", entries));
    EXPECT_THAT(entries, SizeIs(1));
    EXPECT_TRUE(windows.findfiles(folder + "\\*", entries));
    EXPECT_TRUE(currentplatform().filetimes(path, creation, access, write));
    // Wine reports the time of the last write as the time of creation.
    EXPECT_THAT(std::tie(creation, access, write),
                FieldsAre(calendartime(filetime(3000)), calendartime(filetime(2000)), calendartime(filetime(3000))));
    EXPECT_THAT(entries, UnorderedElementsAre(FieldsAre("sub", Gt(write)), FieldsAre(".\xE5\xAD\x97.txt", write)));
    windows.deletefile(folder + "\\sub");
    windows.deletefile(path);
    EXPECT_TRUE(windows.pathexists(folder + "\\sub")) << "a folder is not a file";
    EXPECT_FALSE(windows.pathexists(path));
}

TEST_F(Files, IniValuesAreCutWhereTheBufferEnds) {
    std::wstring content =
        L"\xFEFF[section]\r\nshort=\x5B57\r\nempty=\r\nlong=" + std::wstring(300, L'x') + L"\r\npair=";
    content += std::wstring(258, L'x') + L"\xD83D\xDE00\r\n";
    const std::string path = file("values.ini", {reinterpret_cast<const char*>(content.data()), 2 * content.size()});
    const std::pair<const char*, std::string> cases[] = {
        {"short", "\xE5\xAD\x97"}, {"long", std::string(259, 'x')}, {"pair", std::string(258, 'x')}, {"empty", ""}};
    for (const auto& [key, expected] : cases) {
        std::string value = "old";
        EXPECT_EQ(windows.readinivalue(path, "section", key, value), !expected.empty()) << key;
        EXPECT_EQ(value, expected) << key;
    }
}

TEST_F(Files, ProcessesAreRunToTheirEnd) {
    EXPECT_EQ(windows.runprocess(environment(L"ComSpec"), {"/c", "exit", "7"}), 7);
    EXPECT_EQ(windows.runprocess(folder + "\\none.exe", {"a"}), -1);
}

TEST(Services, AreReportedAsInstalled) {
    if (!administrator()) {
        GTEST_SKIP() << needsrights;
    }
    const std::string name = "orvsecutils-test-" + std::to_string(GetCurrentProcessId());
    const servicehandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
    const servicehandle service(CreateServiceW(manager.get(), toutf16(name).c_str(), L"Test \x5B57", SERVICE_ALL_ACCESS,
                                               SERVICE_WIN32_SHARE_PROCESS, SERVICE_DISABLED, SERVICE_ERROR_SEVERE,
                                               L"C:\\\x416 none\\service.exe -k", L"test group", nullptr, nullptr,
                                               nullptr, nullptr));
    ASSERT_TRUE(service);
    serviceconfiguration actual = {};
    EXPECT_TRUE(windows.serviceconfig(name, actual));
    DeleteService(service.get());
    // Not the dependencies: Wine does not keep them.
    EXPECT_THAT(actual, FieldsAre(0x20, 4, 2, "C:\\\xD0\x96 none\\service.exe -k", "test group", 0, "", "LocalSystem",
                                  "Test \xE5\xAD\x97"));
    actual.displayname = "kept";
    EXPECT_FALSE(windows.serviceconfig(name + "-none", actual));
    EXPECT_EQ(actual.displayname, "kept");
}

TEST_F(WmiOnFakes, AnyStepThatFailsLeavesNoConnection) {
    for (HRESULT* step : {&fakewmi.locator, &fakewmi.connection, &fakewmi.blanket}) {
        *step = E_ACCESSDENIED;
        EXPECT_EQ(wmiconnection::connect(fakewmi.source), nullptr);
        *step = S_OK;
    }
}

TEST_F(WmiOnFakes, AFailureKeepsTheRowsReadBefore) {
    const std::shared_ptr<wmi> connection = wmiconnection::connect(fakewmi.source);
    fakewmi.afterobject = fakewmi.afterproperty = E_FAIL;
    EXPECT_TRUE(connection->query("q", rows));
    fakewmi.result = E_FAIL;
    EXPECT_TRUE(connection->query("q", rows)) << "rows from before count";
    EXPECT_TRUE(wmiconnection().query("q", rows)) << "also without a connection";
    EXPECT_THAT(rows, ElementsAre(ElementsAre(Pair("name", "x"))));
    rows.clear();
    EXPECT_FALSE(connection->query("q", rows));
    EXPECT_FALSE(wmiconnection().query("q", rows)) << "without a connection";
    fakewmi.result = S_OK;
    fakewmi.value = L"\xD800";
    EXPECT_THROW(connection->query("q", rows), std::range_error);
}

TEST_F(WmiOnFakes, RowsHoldTextsOnlyAndTheFirstOfAName) {
    const std::tuple<const wchar_t*, VARTYPE, const wchar_t*> properties[] = {
        {L"b", VT_BSTR, L"1"}, {L"b", VT_BSTR, L"2"}, {L"n", VT_I4, L""}, {L"e", VT_BSTR, L""}, {L"Ä", VT_BSTR, L"日"}};
    wmirow row;
    for (const auto& [name, type, content] : properties) {
        variant property;
        V_BSTR(&property.value) = makebstr(content + L"\0"s).release();
        V_VT(&property.value) = type;
        addproperty(row, makebstr(name).get(), property.value);
    }
    EXPECT_THAT(row, ElementsAre(Pair("b", "1\0"s), Pair("e", "\0"s), Pair("Ä", "日\0"s)));
    variant cleared;  // must release the object that it refers to
    V_VT(&cleared.value) = VT_UNKNOWN;
    fakewmi.source(reinterpret_cast<IWbemLocator**>(&V_UNKNOWN(&cleared.value)));
}

TEST(WmiOfTheMachine, AnswersUnlessTheThreadIsInTheMultithreadedApartment) {
    std::vector<wmirow> rows;
    wmi::connect();
    const std::shared_ptr<wmi> connection = wmi::connect();
    ASSERT_NE(connection, nullptr) << "also if the thread has initialised COM in the same model";
    EXPECT_TRUE(connection->query("SELECT Caption, BuildNumber FROM Win32_OperatingSystem", rows));
    EXPECT_THAT(rows, ElementsAre(Contains(Pair("Caption", Not("")))));
    EXPECT_EQ(currentplatform().macaddress(), adapteraddress(connection.get()));
    std::thread([] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        EXPECT_EQ(wmi::connect(), nullptr);
        EXPECT_EQ(currentplatform().macaddress(), "");
    }).join();
}
