#include "tests/orvdiag/tool.h"
#include "tools/orvdiag/commandline.h"
#include "tools/orvdiag/facts.h"
#include "tools/orvdiag/image.h"
#include "tools/orvdiag/systemfacts.h"
#include "tools/orvdiag/text.h"

using namespace orvdiag;
using namespace std::literals;
using namespace testing;

namespace fs = std::filesystem;

namespace {

TEST(CommandLine, RunsPrintsOrRejects) {
    // How the printed text starts; a complaint follows a vertical bar.
    const std::pair<const char*, const char*> rows[] = {
        {"help", "Shows what the Orvel"},
        {"log /?", "where the log file is"},
        {"--version", "orvdiag " ORVDIAG_VERSION "\n"},
        {"facts --json", "(runs)"},
        {"", "(runs)"},
        {"fact", "|unknown command: fact (orvdiag --help"},
        {"help fact", "|unknown command: fact (orvdiag --help"},
        {"fact --help", "|unknown command: fact (orvdiag --help"},
        {"facts a\x1b", "|unexpected argument: a\\u001b (orvdiag facts --help"},
        {"facts --follow", "|unknown option: --follow (orvdiag facts --help"},
        {"logging On", "|invalid argument: STATE: On"},
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
    for (const char* command : {"check", "report", "settings"}) {
        EXPECT_THAT(parse({command, ""}).complaint, StartsWith("invalid argument: ")) << command;
    }
}

TEST(Texts, ExplainNumbersAndReplaceMalformedBytes) {
    const std::string sees = std::string(" as a ") + (is64bit ? "64" : "32") + "-bit process sees it, level ";
    const std::pair<std::string, std::string> rows[] = {
        {toutf8lossy(L"a\xD800 日"), "a\uFFFD 日"},
        {toutf8lossy("a\xFF 日"sv), "a\uFFFD 日"},
        {quoted("C:\\a \"b\"\n\x1F\x7F日\u0085\xFF"), "\"C:\\a \"b\"\\u000a\\u001f\\u007f日\\u0085\uFFFD\""},
        {table({{"é", "b", "c"}, {"aaa", "", ""}}), "é    b  c\naaa\n"},
        {explainlanguage("10"), "Portuguese (Brazil)"},
        {explainlanguage("14"), "unknown"},
        {explainversion("10,0,22000,0,0"), "Windows 11 or Windows Server 2025, build 22000"},
        {explainversion("10,0,21999,0,0"), "Windows 10 or Windows Server 2016 to 2022, build 21999"},
        {explainversion("6,0,6002,2,1"), "Windows Vista or Windows Server 2008, build 6002, service pack 2.1"},
        {explainversion(""), ""},
        {explainlocales("1031,2057"), "user: German, Germany; system: English, United Kingdom"},
        {explainprocessor("1,0,6"), "1 processor, x86" + sees + "6"},
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
        {machine, L"Logging", REG_DWORD, two, "on, by the machine's setting", "", 0},
        {user, L"Logging", REG_SZ, "1\0\0\0"s, text,
         "counts as off: the user's setting \"Logging\" (text). Run \"orvdiag logging on\"", 0},
        {user, L"Logging", REG_QWORD, zero + one, nothing,
         "malformed: the user's setting \"Logging\" (64-bit number). ", 0},
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

}  // namespace
