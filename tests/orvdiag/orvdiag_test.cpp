#include <gmock/gmock.h>

#include "orvsecutils/log/appendfile.h"
#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/unicode.h"
#include "tests/support/deploy.h"
#include "tests/support/sandbox.h"
#include "tools/orvdiag/commandline.h"
#include "tools/orvdiag/facts.h"
#include "tools/orvdiag/filetail.h"
#include "tools/orvdiag/image.h"
#include "tools/orvdiag/settingslist.h"
#include "tools/orvdiag/text.h"

using namespace orvdiag;
using namespace std::literals;
using namespace testing;
using orvsecutils::appendtofile;
using orvsecutils::toutf8;

namespace fs = std::filesystem;

namespace {

const fs::path built = program::ownfolder();

TEST(CommandLine, RunsPrintsOrRejects) {
    // How the printed text starts; a complaint follows a vertical bar.
    const std::pair<const char*, const char*> rows[] = {
        {"", "Shows what the Orvel"},
        {"help settings", "a settings group"},
        {"log /?", "where the log file is"},
        {"--version", "orvdiag " ORVDIAG_VERSION "\n"},
        {"facts --json", "(runs)"},
        {"login /tmp --json", "(runs)"},
        {"fact", "|unknown command: fact (orvdiag --help"},
        {"facts a\x1b", "|unexpected argument: a\\u001b (orvdiag facts --help"},
        {"facts --follow", "|unknown option: --follow (orvdiag facts --help"},
        {"logging On", "|invalid argument: STATE: On"},
        {"log -n -1", "|invalid argument: "},
        {"log -n 1 --all", "|-n excludes --all"},
        {"log --level bad", "|invalid argument: --level: bad"},
        {"settings", "|GROUP is required"},
    };
    for (const auto& [line, expected] : rows) {
        std::istringstream arguments(line);
        const request parsed = parse({std::istream_iterator<std::string>(arguments), {}});
        EXPECT_THAT((parsed.command ? "(runs)" : "") + parsed.text + "|" + parsed.complaint, StartsWith(expected))
            << line;
    }
    for (const char* command : {"login", "report", "settings"}) {
        EXPECT_THAT(parse({command, ""}).complaint, StartsWith("invalid argument: ")) << command;
    }
}

TEST(Texts, ExplainNumbersAndReplaceMalformedBytes) {
    const std::string sees = std::string(" as a ") + (is64bit ? "64" : "32") + "-bit process sees it, level ";
    const std::pair<std::string, std::string> rows[] = {
        {toutf8lossy(L"a\xD800 日"), "a\uFFFD 日"},
        {toutf8lossy("a\xFF 日"sv), "a\uFFFD 日"},
        {quoted("C:\\a \"b\"\n\x1F\x7F日\xFF"), "\"C:\\\\a \\\"b\\\"\\n\\u001f\\u007f日\uFFFD\""},
        {table({{"é", "b", "c"}, {"aaa", "", ""}}), "é    b  c\naaa\n"},
        {explainlanguage("0"), "Chinese (traditional)"},
        {explainlanguage("10"), "Portuguese (Brazil)"},
        {explainlanguage("14"), "unknown"},
        {explainversion("10,0,22000,0,0"), "Windows 11 or Windows Server 2025, build 22000"},
        {explainversion("10,0,19045,0,0"), "Windows 10 or Windows Server 2016 to 2022, build 19045"},
        {explainversion("6,1,7601,1,0"), "Windows 7 or Windows Server 2008 R2, build 7601, service pack 1.0"},
        {explainversion("6,0,6002,2,1"), "Windows Vista or Windows Server 2008, build 6002, service pack 2.1"},
        {explainversion("5,1,2600,0,0"), "a Windows that this tool does not know, build 2600"},
        {explainversion(""), ""},
        {explainlocales("1031,2057"), "user: German, Germany; system: English, United Kingdom"},
        {explainprocessor("1,0,6"), "1 processor, x86" + sees + "6"},
        {explainprocessor("8,9,25"), "8 processors, x64" + sees + "25"},
        {explainprocessor("8,77,1"), "8 processors, architecture 77" + sees + "1"},
        {gccversion("\0\0GCC: (GNU) 12 20220819\0GCC: (GNU) 12-posix\0GCC: (GNU) 12 2022"s), "12-posix"},
        {gccversion("GCC: (Rev3, Built by MSYS2 project) 13.2.0"), "13.2.0"},
        {gccversion("GCC: ("), ""},
    };
    for (const auto& [actual, expected] : rows) {
        EXPECT_EQ(actual, expected);
    }
    EXPECT_TRUE(equalsignorecase("aZ1", "Az1"));
    EXPECT_FALSE(equalsignorecase("aZ1", "Az"));
    EXPECT_FALSE(equalsignorecase("{", "["));
    EXPECT_TRUE(samegcc("12-posix", "12"));
    EXPECT_TRUE(samegcc("12", "12-win32"));
    EXPECT_TRUE(samegcc("13.2.0", "13.1.0"));
    EXPECT_FALSE(samegcc("12-posix", "12-win32"));
    EXPECT_FALSE(samegcc("13.2.0", "1-posix"));
    EXPECT_FALSE(issecretname("Logging"));
    for (const char* name :
         {"Password", "DBPWD", "clientSecret", "AccessToken", "apiKey", "Credentials", "CASCookie", "LoginTicket"}) {
        EXPECT_TRUE(issecretname(name)) << name;
    }
}

TEST(FileTail, LosesNothingWhenTheFileIsDeletedRenamedReplacedOrEmptied) {
    const temporary_folder folder;
    const fs::path file = folder.path / "log";
    const fs::path other = folder.path / "other";
    const fs::path leftbehind = folder.path / "log.follow-4294967280";
    const std::string path = toutf8(file.native());
    const std::string unseen = "unfinished\nunseen\nend\n";
    const std::string longer = "in place of the last, and longer than that\n";
    std::ofstream(other) << longer;
    std::ofstream(leftbehind) << "by a process that was ended";
    auto owner = std::make_unique<filetail>(path, true);
    filetail& tail = *owner;
    EXPECT_FALSE(exists(leftbehind));
    EXPECT_NE(tail.begin(9), 0u);
    const std::pair<std::function<void()>, std::string> rows[] = {
        {[&] { fs::remove(file); }, unseen + "new\n"},
        {[&] { fs::rename(file, folder.path / "old"); }, unseen + "new\n"},
        {[&] { fs::rename(other, file); }, unseen + longer + "new\n"},
        {[&] { fs::resize_file(file, 0); }, "unfin\nnew\n"},
    };
    for (const auto& [change, expected] : rows) {
        appendtofile(path, "seen\nunfin");
        EXPECT_EQ(tail.next(), "seen\n");
        appendtofile(path, "ished\nunseen\nend");
        change();
        appendtofile(path, "new\n");
        std::string text;
        for (int call = 0; call < 6; ++call) {
            text += tail.next();
        }
        EXPECT_EQ(text, expected);
    }
    // A program that opened the file before it was renamed writes to it only afterwards.
    orvsecutils::filehandle late(CreateFileW(file.c_str(), FILE_APPEND_DATA,
                                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                             OPEN_EXISTING, 0, nullptr));
    fs::rename(file, folder.path / "older");
    EXPECT_EQ(tail.next(), "");
    DWORD written = 0;
    WriteFile(late.get(), "late\n", 5, &written, nullptr);
    EXPECT_EQ(tail.next(), "late\n");
    late = {};
    appendtofile(path, "new\n");
    EXPECT_EQ(tail.next() + tail.next(), "new\n");
    const auto names = [&folder] { return std::distance(fs::directory_iterator(folder.path), {}); };
    const auto following = names();
    owner.reset();
    EXPECT_EQ(names(), following - 1) << "the tail removes its own link to the file";
}

const std::string one("\1\0\0\0", 4);
const std::string zero(4, '\0');
const std::string broken = bytesof(L"x\xDC00\0"sv);
constexpr auto user = registrylocation::user, machine = registrylocation::machine,
               machine32 = registrylocation::machine32;

class Orvdiag : public Test {
protected:
    program::result run(const std::wstring& arguments) { return box.run("orvdiag.exe", arguments); }

    void plant(registrylocation location, const wchar_t* name, DWORD type, const std::string& data,
               const char* group = "Debug") {
        rawkey(location == user ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE, location == machine32 ? view32 : view64,
               "software\\Orvel\\LoginManager\\"s + group)
            .write(name, type, data);
    }

    sandbox box;
    const fs::path profile = box.folder().parent_path().parent_path();
    const std::string log = toutf8(box.log().native());
};

TEST_F(Orvdiag, SaysWhyLoggingIsOffAndWhetherItCouldBeSwitchedOn) {
    const std::string nobody = "off, because nobody has set it";
    const std::string nothing = "off, because no value that the library reads sets it";
    const std::string text = "off, because the user's setting \"Logging\" is not a number";
    const std::string group = "off, because the group Debug cannot be read";
    const std::tuple<registrylocation, const wchar_t*, DWORD, std::string, std::string, std::string, DWORD> rows[] = {
        {machine, L"Other", REG_DWORD, one, nobody, "", 0},
        {machine32, L"Other", REG_SZ, broken, nobody, "", 0},
        {user, L"Logging", REG_DWORD, one, "on, by the user's setting", "", 0},
        {user, L"Logging", REG_DWORD, zero, "off, by the user's setting", "", 0},
        {machine, L"Logging", REG_DWORD, one, "on, by the machine's setting", "", 0},
        {user, L"Logging", REG_SZ, "1\0\0\0"s, text, "of the kind text: it counts as off.", 0},
        {user, L"Logging", REG_QWORD, zero + one, nothing, "64-bit number: the library ignores it.", 0},
        {user, L"Logging", REG_DWORD, "12", nothing, "The user's setting \"Logging\" is malformed: ", 0},
        {user, L"LOGGING", REG_DWORD, one, nothing, "\"LOGGING\" is spelled differently: ", 1},
        {machine32, L"Logging", REG_DWORD, one, nothing, "machine's setting \"Logging\" lies in the 32-bit", 0},
        {machine, L"Text", REG_SZ, broken, group, "The machine's setting \"Text\" is malformed (not valid", 1},
    };
    for (const auto& [location, name, type, data, state, remark, status] : rows) {
        SCOPED_TRACE(state + "\n" + remark);
        plant(location, name, type, data);
        const json parsed = json::parse(run(L"logging --json").output);
        EXPECT_EQ((parsed["logging"] ? "on, " : "off, ") + parsed["reason"].get<std::string>(), state);
        EXPECT_EQ(parsed["remarks"].size(), remark.empty() ? 0u : 1u);
        const std::string sentence = remark.empty() ? "" : parsed["remarks"][0].get<std::string>() + "\r\n";
        EXPECT_THAT(sentence, HasSubstr(remark));
        const program::result plain = run(L"logging");
        EXPECT_THAT(plain.output, StartsWith("Logging is " + state + ".\r\n" + sentence + "Log file: "));
        EXPECT_EQ(plain.status, 0u);
        const program::result switched = run(L"logging on");
        EXPECT_THAT(switched.output, StartsWith(status == 0 ? "Logging is on, by the user's" : "Logging is off, "));
        EXPECT_EQ(switched.status, status);
        removecompany(L"Orvel");
    }
}

TEST_F(Orvdiag, SaysWhetherTheLogCanBeWritten) {
    EXPECT_THAT(run(L"logging").output, EndsWith("It can be written.\r\n"));
    EXPECT_EQ(json::parse(run(L"logging --json").output)["writable"], true);
    EXPECT_FALSE(exists(profile / "Orvel")) << "trying leaves nothing behind";
    create_directories(box.log());  // in the file's place
    EXPECT_THAT(run(L"logging").output, AllOf(HasSubstr("It cannot be written: "), EndsWith("(code 5)\r\n")));
    fs::remove_all(profile / "Orvel");
    std::ofstream(profile / "Orvel") << "in the folder's place";
    const program::result blocked = run(L"logging on");
    EXPECT_THAT(blocked.output, HasSubstr("It cannot be written: the folder "));
    EXPECT_EQ(blocked.status, 1u);
    EXPECT_EQ(run(L"logging off").status, 0u);
}

TEST_F(Orvdiag, LogsWhatItChangesAndNothingElse) {
    const program::result switched = run(L"logging on");
    EXPECT_THAT(switched.output, Not(HasSubstr("orvdiag::"))) << "the log's echo belongs to standard error";
    EXPECT_THAT(switched.errors, HasSubstr("orvdiag::logging(on)=on"));
    for (const wchar_t* arguments : {L"facts", L"settings Debug", L"settings None", L"logging", L"log", L"report"}) {
        run(arguments);
    }
    EXPECT_EQ(run(L"bad").status, 2u);
    EXPECT_EQ(run(L"help").status, 0u);
    run(L"logging off");
    run(L"logging off");
    const std::string start = "TIME,info,orvdiag.exe,orvdiag::logging(";
    EXPECT_THAT(box.logged(), ElementsAre(start + "on)", start + "on)=on", start + "off)", start + "off)=off"));
}

TEST_F(Orvdiag, ListsAGroupWithAllItsFaults) {
    EXPECT_EQ(run(L"settings Größe").status, 1u);
    plant(user, L"a", REG_DWORD, one, "Größe");
    plant(user, L"b", REG_EXPAND_SZ, bytesof(L"%OS%日!\0"sv), "Größe");
    plant(user, L"c", REG_MULTI_SZ, bytesof(L"1\0\"2\0\0"sv), "Größe");
    plant(user, L"d", REG_BINARY, "123", "Größe");
    plant(user, L"e", 0x77, "", "Größe");
    plant(user, L"f", REG_SZ, std::string(1001, 'o'), "Größe");  // the longest
    plant(user, L"g", REG_MULTI_SZ, "odd", "Größe");
    plant(machine, L"a", REG_SZ, bytesof(L" \0"sv), "Größe");
    plant(machine, L"d", REG_DWORD, zero, "Größe");
    plant(machine32, L"a", REG_SZ, broken, "Größe");
    const program::result good = run(L"settings Größe --json");
    EXPECT_EQ(good.status, 0u);
    EXPECT_EQ(
        json::parse(good.output)["values"][1].dump(),
        R"({"group":"Größe","name":"a","kind":"text","value":" ","scope":"machine","remark":"hidden by the user's"})");
    plant(user, L"d\xD800", REG_DWORD, one, "Größe");
    plant(machine, L"ab", REG_MULTI_SZ, broken + zero, "Größe");
    const program::result bad = run(L"settings Größe");
    EXPECT_EQ(bad.status, 1u);
    const std::string malformed = "malformed: not valid UTF-16, so the library cannot read the group\r\n";
    EXPECT_EQ(
        bad.output,
        "NAME  KIND      VALUE           SCOPE\r\n"
        "a     number    1               user\r\n"
        "a     text      \" \"             machine, hidden by the user's\r\n"
        "a     text      \"x\uFFFD\"            machine, 32-bit view, not read: the library reads the 64-bit view\r\n"
        "ab    list      [\"x\uFFFD\"]          machine, " +
            malformed +
            "b     text      \"Windows_NT日!\"  user\r\n"
            "c     list      [\"1\", \"\\\"2\"]    user\r\n"
            "d     binary                    user, ignored: the library reads no values of this kind\r\n"
            "d     number    0               machine\r\n"
            "d\uFFFD    number    1               user, " +
            malformed +
            "e     type 119                  user, ignored: the library reads no values of this kind\r\n"
            "f     text                      user, ignored: malformed\r\n"
            "g     list                      user, ignored: malformed\r\n");
}

TEST_F(Orvdiag, ShowsTheLog) {
    const program::result missing = run(L"log");
    EXPECT_EQ(missing.status, 1u);
    EXPECT_THAT(missing.errors, AllOf(StartsWith("orvdiag: the log file cannot be read: "), HasSubstr("(code 3)")));
    create_directories(box.folder());
    // Lines that belong to no record, the first of them longer than a block, then records. Each has its own last
    // letter.
    appendtofile(log, std::string(1500000, 'x') + "A\nB\nC\nD\nE\nF\nG\nH\nI\nJ\nK\nL\nM\nN\nO\nP\n");
    appendtofile(log, "11/21/2026 09:14:03+0100,info,日,b.exe,a\n2,error,日.exe, of b\n");
    appendtofile(log, "11/21/2026 09:14:03-0100,error,c.exe,c\n11/21/2026 09:14:03+0100,warn\n");
    appendtofile(log, "11/21/2026 09:14:03+0100,warn,日,B.EXE,d\n11.21/2026 09:14:03+0100,info,e");
    const std::pair<const wchar_t*, const char*> rows[] = {
        {L"", "CDEFGHIJKLMNOPabcnde"},
        {L"-n 0", ""},
        {L"-n 2", "de"},
        {L"-n 23", "ABCDEFGHIJKLMNOPabcnde"},
        {L"--all", "ABCDEFGHIJKLMNOPabcnde"},
        {L"--level info", "ab"},
        {L"--level info --level error -n 2", "bc"},
        {L"--program 日,b.exe", "abde"},
        {L"--program 日,B.exe --level warn", "de"},
        {L"--program c", ""},
        {L"--all --level warn", "de"},
    };
    for (const auto& [arguments, expected] : rows) {
        const program::result result = run(L"log "s + arguments);
        EXPECT_EQ(result.status, 0u);
        std::istringstream lines(result.output);
        std::string letters;
        for (std::string line; std::getline(lines, line);) {
            letters += line[line.find_last_not_of('\r')];
        }
        EXPECT_EQ(letters, "g"s + expected) << toutf8(arguments) << ", after the first line, which ends in orvsec.log";
    }
}

TEST_F(Orvdiag, FollowsTheLogWithoutFallingBehind) {
    const program follower = box.start("orvdiag.exe", L"log --follow --program a.exe");
    const auto shows = [&](const std::string& text) {
        return eventually([&] { return follower.outputsofar().find(text) != std::string::npos; });
    };
    EXPECT_TRUE(shows("Log file: " + log + "\r\n"));
    create_directories(box.folder());
    std::string expected = "Log file: " + log + "\n";
    for (int i = 0; i < 60; ++i) {
        const std::string record = "11/21/2026 09:14:03+0100,info,a.exe,日 " + std::to_string(i) + "\n";
        const std::string lines = record + std::string(100000, 'x') + "\n";
        appendtofile(log, "11/21/2026 09:14:03+0100,info,b.exe,not wanted\n" + lines);
        expected += lines;
        if (i % 20 == 10) {
            Sleep(200);  // a file that exists only between two reads is missed
            fs::rename(box.log(), box.folder() / std::to_string(i));
        }
    }
    EXPECT_TRUE(shows("日 59\r\n"));
    follower.end();
    EXPECT_TRUE(follower.wait().output == orvsecutils::withcrlf(expected));
}

class Login : public Orvdiag {
protected:
    Login() { deploy(folder); }

    const fs::path folder = profile / L"日 é";
};

TEST_F(Login, NamesWhatIsWrongInAFolder) {
    const char* const client = "OrvelLoginManagerClient\\OrvelLoginClient.dll";
    const char* const utils = "OrvelLoginManagerClient\\loginManagerUtils.dll";
    const char* const part = "OrvelLoginClientCLR.dll";
    const char* const library = "orvellogin.dll";
    const char* const other = "orvelloginc.dll";
    const char* const libgcc = "libgcc_s_dw2-1.dll";
    const char* const libcpp = "libstdc++-6.dll";
    const std::string assembly = contentof(built / client);
    std::string later = assembly;
    later[later.find("\x22\0\0\0\0\0\xCE\x13"s)] = 35;
    const std::string native = contentof(built / library);
    const std::string othergcc = std::regex_replace(contentof(built / libgcc), std::regex("U\\) 12-"), "U) 99-");
    // A file, its content (empty: the file is missing), the exit status, and a part of the output.
    const std::tuple<const char*, std::string, DWORD, std::string> rows[] = {
        {other, "", 0, "assembly version 34.0.0.5070; has all members that the library calls\r\n"},
        {other, native, 1, "it is not the login library: it does not export orvellogin_version"},
        {libgcc, "", 1, "FAIL libgcc_s_dw2-1.dll is missing\r\n"},
        {libgcc, "", 1, "cannot be loaded: Module not found. (code 126); it needs libgcc_s_dw2-1.dll: Module"},
        {libgcc, othergcc, 0,
         "warn libgcc_s_dw2-1.dll built by a different GCC (99-posix) than the library (12-posix)"},
        {libcpp, contentof(built / libcpp) + "x", 0, "warn libstdc++-6.dll not the file that ships with the library"},
        {library, native.substr(0, 1024), 1, "FAIL orvellogin.dll is cut short: 1024 of at least "},
        {library, contentof(built / "orvdiag.exe"), 1, "FAIL orvellogin.dll is damaged or not a DLL\r\n"},
        {library, contentof("C:\\windows\\sysnative\\version.dll"), 1, "FAIL orvellogin.dll is for 64-bit programs"},
        {library, contentof(built / "ending.dll"), 1, "cannot be loaded: ends the process (status 0x00000000)"},
        {library, assembly, 1, "FAIL orvellogin.dll is a managed assembly, not this library\r\n"},
        {library, "MZ" + std::string(58, '\0') + "\xFF\xFF\xFF\x7F", 1, "FAIL orvellogin.dll is damaged or not"},
        {part, assembly, 1, "warn OrvelLoginClientCLR.dll file version 34.0.0.5070; not the same version as the "},
        {part, assembly, 1, "FAIL .NET Framework runtime v4.0.30319 these two files do not belong together: "},
        {part, "", 1, "FAIL .NET Framework runtime v4.0.30319 not tried: the managed part is missing\r\n"},
        {part, "", 1, "\\OrvelLoginClient.dll file version 34.0.0.5070; not opened, as the managed part does not run"},
        {part, "text", 1, "FAIL .NET Framework runtime v4.0.30319 not tried: the managed part is damaged\r\n"},
        {client, assembly.substr(0, assembly.size() - 1), 1, "OrvelLoginClient.dll is cut short: "},
        {client, later, 0,
         "\nwarn OrvelLoginManagerClient\\OrvelLoginClient.dll file version 34.0.0.5070; assembly version 35.0.0.5070 "
         "instead of 34.0.0.5070; has all members that the library calls\r\n"},
        {client, contentof(built / "deployment/old/OrvelLoginClient.dll"), 1,
         "33.1.0.0 instead of 34.0.0.5070; lacks LoginManagerClient: LoginResponse login(), L"},
        {"OrvelLoginManagerClient", "", 1, "FAIL OrvelLoginManagerClient\\OrvelLoginClient.dll is missing\r\n"},
        {utils, "", 1, "; cannot be used by the runtime: System.IO.FileNotFoundException"},
        {utils, contentof(built / "deployment/none/loginManagerUtils.dll"), 1,
         "; lacks LoginManagerException: loginManagerStatusCode status\r\n"},
        {utils, native, 1, "\\loginManagerUtils.dll is not a managed assembly\r\n"},
        {utils, assembly, 1, "holds another assembly, OrvelLoginClient"},
    };
    const auto check = [this] {
        const program::result result = run(L"login \"" + folder.native() + L"\"");
        return std::to_string(result.status) + std::regex_replace(result.output, std::regex(" +"), " ");
    };
    for (const auto& [file, content, status, expected] : rows) {
        std::error_code absent;
        fs::rename(folder / file, folder / "kept", absent);
        if (!content.empty()) {
            std::ofstream(folder / file, std::ios::binary) << content;
        }
        EXPECT_THAT(check(), AllOf(StartsWith(std::to_string(status)), HasSubstr(expected))) << file;
        fs::remove(folder / file);
        fs::rename(folder / "kept", folder / file, absent);
    }
    fs::remove(folder / library);
    fs::remove(folder / libgcc);
    copy_file(built / other, folder / other);
    EXPECT_THAT(run(L"login none").output, HasSubstr("there is no such folder"));
    EXPECT_THAT(check(), AllOf(StartsWith("0"), Not(HasSubstr(library)), HasSubstr(other)));
}

TEST_F(Login, WritesAReportWithoutSecrets) {
    plant(user, L"ApiToken", REG_SZ, bytesof(L"hush\0"sv), "Größe\\Inner");
    plant(machine, L"ApiToken", REG_DWORD, one);  // in another group, so neither hides the other
    plant(machine32, L"Server", REG_SZ, bytesof(L"日\0"sv));
    create_directories(box.folder());
    for (int i = 100; i <= 350; ++i) {
        appendtofile(log, "line " + std::to_string(i) + " \xFF\n");
    }
    copy_file(built / "orvdiag.exe", profile / "orvdiag.exe");  // alone in its folder
    const program::result written = program(profile / "orvdiag.exe", L"report", profile).wait();
    EXPECT_EQ(written.status, 0u);
    EXPECT_THAT(written.output, AllOf(HasSubstr("\\orvdiag-report.txt\r\n"), HasSubstr("personal data")));
    const std::string text = contentof(profile / "orvdiag-report.txt");
    EXPECT_EQ(toutf8(orvsecutils::toutf16(text)), text);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\r'), std::count(text.begin(), text.end(), '\n'));
    for (const std::string& part : std::vector<std::string>{
             "Report of orvdiag " ORVDIAG_VERSION ", ", "personal data",
             "Folder: " + toutf8(profile.native()) + "\r\nFAIL  orvellogin.dll",
             "\r\nNot everything is in its place; see the lines with FAIL.\r\n", "Microsoft Windows",
             ".NET Framework 4  not registered", "osversion", "Größe\\Inner\\ApiToken  text    (hidden)",
             "machine, 32-bit view", "Logging is off", "It can be written.", "line 151 \uFFFD\r\n", "line 350"}) {
        EXPECT_THAT(text, HasSubstr(part));
    }
    EXPECT_THAT(text, AllOf(Not(HasSubstr("hush")), Not(HasSubstr("line 150")), Not(HasSubstr("hidden by"))));

    std::ofstream(profile / "other.json") << std::string(1000000, 'x');
    EXPECT_EQ(run(L"report --json other.json \"" + folder.native() + L"\"").status, 0u);
    const json data = json::parse(contentof(profile / "other.json"));
    EXPECT_EQ(data["login"]["verdict"], "Everything is in its place.");
    EXPECT_EQ(data["settings"][2]["value"], "(hidden)");
    const orvsecutils::platform& system = orvsecutils::currentplatform();
    const std::pair<const char*, std::string> facts[] = {{"uilanguage", std::to_string(system.uilanguage())},
                                                         {"computername", system.computername()},
                                                         {"username", system.username()},
                                                         {"osversion", system.osversion()},
                                                         {"languageids", system.languageids()},
                                                         {"processorinfo", system.processorinfo()},
                                                         {"profilefolder", toutf8(profile.native())},
                                                         {"executablename", "orvdiag.exe"},
                                                         {"defaultsettingsroot", system.defaultsettingsroot()},
                                                         {"executablefolder", system.executablefolder()},
                                                         {"localappdatafolder", system.localappdatafolder()},
                                                         {"roamingappdatafolder", system.roamingappdatafolder()},
                                                         {"programfilesfolder", system.programfilesfolder()},
                                                         {"programfilesx86folder", system.programfilesx86folder()},
                                                         {"macaddress", system.macaddress()},
                                                         {"publicfolder", system.publicfolder()}};
    for (const auto& [fact, value] : facts) {
        EXPECT_EQ(data["facts"][fact], value) << fact;
    }
    EXPECT_EQ(data["facts"]["meanings"]["languageids"], explainlocales(system.languageids()));
    EXPECT_EQ(data["log"].size(), 200u);

    const program::result refused = run(L"report \"" + folder.native() + L"\"");
    EXPECT_EQ(refused.status, 1u);
    EXPECT_THAT(refused.output, StartsWith("The report cannot be written to "));
}

}  // namespace
