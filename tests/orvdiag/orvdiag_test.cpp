#include <gmock/gmock.h>

#include "orvsecutils/log/appendfile.h"
#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/unicode.h"
#include "tests/orvdiag/tool.h"
#include "tools/orvdiag/commandline.h"
#include "tools/orvdiag/facts.h"
#include "tools/orvdiag/filetail.h"
#include "tools/orvdiag/image.h"
#include "tools/orvdiag/settingslist.h"
#include "tools/orvdiag/systemfacts.h"
#include "tools/orvdiag/text.h"

using namespace orvdiag;
using namespace std::literals;
using namespace testing;
using orvsecutils::appendtofile;
using orvsecutils::toutf8;

namespace fs = std::filesystem;

namespace {

TEST(CommandLine, RunsPrintsOrRejects) {
    // How the printed text starts; a complaint follows a vertical bar.
    const std::pair<const char*, const char*> rows[] = {
        {"help", "Shows what the Orvel"},
        {"help settings", "a settings group"},
        {"log /?", "where the log file is"},
        {"--version", "orvdiag " ORVDIAG_VERSION "\n"},
        {"facts --json", "(runs)"},
        {"", "(runs)"},
        {"check /tmp --json", "(runs)"},
        {"fact", "|unknown command: fact (orvdiag --help"},
        {"help fact", "|unknown command: fact (orvdiag --help"},
        {"fact --help", "|unknown command: fact (orvdiag --help"},
        {"facts a\x1b", "|unexpected argument: a\\u001b (orvdiag facts --help"},
        {"facts --follow", "|unknown option: --follow (orvdiag facts --help"},
        {"logging On", "|invalid argument: STATE: On"},
        {"log -n -1", "|invalid argument: "},
        {"log -n 1 --all", "|-n excludes --all"},
        {"log --level warn error", "|unexpected argument: error"},
        {"log --level bad", "|invalid argument: --level: bad"},
        {"settings", "|GROUP is required"},
    };
    for (const auto& [line, expected] : rows) {
        std::istringstream arguments(line);
        const request parsed = parse({std::istream_iterator<std::string>(arguments), {}});
        EXPECT_THAT((parsed.command ? "(runs)" : "") + parsed.text + "|" + parsed.complaint, StartsWith(expected))
            << line;
    }
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"check", ""},
                                                      {"report", ""},
                                                      {"report", "-o", ""},
                                                      {"settings", ""},
                                                      {"log", "-n", ""}}) {
        EXPECT_THAT(parse(arguments).complaint, StartsWith("invalid argument: ")) << arguments[0];
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
        {explainversion("5,1,2600,0,0"), "unknown Windows version, build 2600"},
        {explainversion(""), ""},
        {explainlocales("1031,2057"), "user: German, Germany; system: English, United Kingdom"},
        {explainprocessor("1,0,6"), "1 processor, x86" + sees + "6"},
        {explainprocessor("8,9,25"), "8 processors, x64" + sees + "25"},
        {explainprocessor("8,77,1"), "8 processors, architecture 77" + sees + "1"},
        {windowsname("Windows 10 Pro", 21999), "Windows 10 Pro"},
        {windowsname("Windows 10 Pro", 22000), "Windows 11 Pro"},
        {windowsname("Windows Server 2022", 26100), "Windows Server 2022"},
    };
    for (const auto& [actual, expected] : rows) {
        EXPECT_EQ(actual, expected);
    }
    EXPECT_TRUE(equalsignorecase("aZ1", "Az1"));
    EXPECT_FALSE(equalsignorecase("aZ1", "Az"));
    EXPECT_FALSE(equalsignorecase("{", "["));
    EXPECT_THAT(systemmessage(ERROR_BAD_EXE_FORMAT), AllOf(Not(HasSubstr("%1")), EndsWith("(code 193)")));
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
        {user, L"Logging", REG_SZ, "1\0\0\0"s, text,
         "counts as off: the user's setting \"Logging\" (text). Run \"orvdiag logging on\"", 0},
        {user, L"Logging", REG_QWORD, zero + one, nothing,
         "malformed: the user's setting \"Logging\" (64-bit number). ", 0},
        {user, L"Logging", REG_DWORD, "12", nothing, "malformed: the user's setting \"Logging\" (number). ", 0},
        {user, L"LOGGING", REG_DWORD, one, nothing, "does not read: the user's setting \"LOGGING\". ", 1},
        {machine32, L"Logging", REG_DWORD, one, nothing,
         "In the 32-bit view of the registry, which the library does not read: the machine's", 0},
        {machine, L"Text", REG_SZ, broken, group, "read the whole group: the machine's setting \"Text\". ", 1},
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

}  // namespace
