#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "orvsecutils/log/appendfile.h"
#include "orvsecutils/platform/unicode.h"
#include "tests/orvsecutils/sandbox.h"
#include "tools/orvdiag/commandline.h"
#include "tools/orvdiag/facts.h"
#include "tools/orvdiag/filetail.h"
#include "tools/orvdiag/image.h"
#include "tools/orvdiag/logview.h"
#include "tools/orvdiag/settingslist.h"
#include "tools/orvdiag/text.h"

using namespace orvdiag;
using namespace std::literals;
using orvsecutils::appendtofile;
using orvsecutils::toutf8;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

const fs::path built = program::ownfolder();
const fs::path manager = built / "OrvelLoginManagerClient";

std::vector<std::string> split(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

TEST(CommandLine, RunsShowsOrComplains) {
    const struct {
        const char* words;
        const char* said;  // how what is shown, or a complaint, starts; empty for a command that runs
    } rows[] = {
        {"", "orvdiag looks at"},
        {"/?", "orvdiag looks at"},
        {"help", "orvdiag looks at"},
        {"help settings", "a settings group"},
        {"settings -h", "a settings group"},
        {"log /?", "where the log file is"},
        {"--version", "orvdiag " ORVDIAG_VERSION "\n"},
        {"facts --json", ""},
        {"settings Größe --json", ""},
        {"logging", ""},
        {"logging off --json", ""},
        {"log -n 5 --level info --level warn --program a.exe --follow", ""},
        {"login /tmp --json", ""},
        {"report a b --json", ""},
        {"fact", "!unknown command: fact (orvdiag --help"},
        {"facts a\x1b", "!unexpected argument: a\\u001b (orvdiag facts --help"},
        {"facts --follow", "!unknown option: --follow (orvdiag facts --help"},
        {"logging On", "!invalid argument: STATE: On"},
        {"log -n -1", "!invalid argument: "},
        {"log -n 1 --all", "!-n excludes --all"},
        {"log --level bad", "!invalid argument: --level: bad"},
        {"settings", "!GROUP is required"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.words);
        const request asked = parse(split(row.words));
        EXPECT_THAT(asked.text + (asked.complaint.empty() ? "" : "!") + asked.complaint, StartsWith(row.said));
        EXPECT_EQ(asked.command != nullptr, asked.text.empty() && asked.complaint.empty());
        EXPECT_EQ(asked.command != nullptr, *row.said == '\0');
    }
    EXPECT_THAT(parse({"login", ""}).complaint, StartsWith("invalid argument: DIR"));
}

TEST(Texts, AreShownWhateverTheyHold) {
    EXPECT_EQ(readable(L"a\xD800 日"), "a\uFFFD 日");
    EXPECT_EQ(readable(std::string_view("a\xFF 日")), "a\uFFFD 日");
    EXPECT_EQ(quoted("C:\\a \"b\"\n\x1F\x7F日\xFF"), "\"C:\\\\a \\\"b\\\"\\n\\u001f\\u007f日\uFFFD\"");
    EXPECT_EQ(table({{"é", "b", "c"}, {"aaa", "", ""}}), "é    b  c\naaa\n");
    EXPECT_TRUE(samebutcase("aZ1", "Az1"));
    EXPECT_FALSE(samebutcase("aZ1", "Az"));
    EXPECT_FALSE(samebutcase("{", "["));
}

TEST(Facts, SayWhatNumbersMean) {
    const struct {
        std::string (*words)(const std::string&);
        const char* numbers;
        const char* expected;
    } rows[] = {
        {languagewords, "0", "Chinese (traditional)"},
        {languagewords, "10", "Portuguese (Brazil)"},
        {languagewords, "14", "unknown"},
        {versionwords, "10,0,22000,0,0", "Windows 11 or Windows Server 2025, build 22000"},
        {versionwords, "10,0,19045,0,0", "Windows 10 or Windows Server 2016 to 2022, build 19045"},
        {versionwords, "6,1,7601,1,2", "Windows 7 or Windows Server 2008 R2, build 7601, service pack 1.2"},
        {versionwords, "5,1,2600,3,0", "a Windows that this tool does not know, build 2600, service pack 3.0"},
        {versionwords, "", ""},
        {localeswords, "1031,2057", "user: German, Germany; system: English, United Kingdom"},
        {processorwords, "1,0,6", "1 processor, x86 as a 32-bit process sees it, level 6"},
        {processorwords, "8,9,25", "8 processors, x64 as a 32-bit process sees it, level 25"},
        {processorwords, "8,77,1", "8 processors, architecture 77 as a 32-bit process sees it, level 1"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.words(row.numbers), row.expected);
    }
}

TEST(Settings, WithNamesOfSecretsAreRecognised) {
    for (const auto& name : split("Password DBPWD clientSecret AccessToken apiKey Credentials CASCookie LoginTicket")) {
        EXPECT_TRUE(namesasecret(name)) << name;
    }
    EXPECT_FALSE(namesasecret("Logging") || namesasecret(""));
}

TEST(RecordFilter, KeepsRecordsTogether) {
    const auto kept = [](std::vector<std::string> levels, const char* program) {
        recordfilter filter;
        filter.levels = std::move(levels);
        filter.program = program;
        std::string numbers;
        for (const char* line :
             {"0 lost\n", "11/21/2026 09:14:03+0100,info,a,b.exe,1\n", "2,error,a.exe, of 1\n",
              "11/21/2026 09:14:03-0100,error,c.exe,3\n", "11/21/2026 09:14:03+0100,warn,A,B.EXE,4\n",
              "11/21/2026 09:14:03+0100,warn\n", "11.21/2026 09:14:03+0100,info,5\n"}) {
            numbers += filter.passes(line) ? std::string(line).substr(std::strlen(line) - 2, 1) : "";
        }
        return numbers;
    };
    EXPECT_EQ(kept({}, ""), "t1134n5");
    EXPECT_EQ(kept({"info"}, ""), "11");
    EXPECT_EQ(kept({"info", "error"}, ""), "113");
    EXPECT_EQ(kept({}, "a,b.exe"), "114");
    EXPECT_EQ(kept({"warn"}, "a,B.exe"), "4");
    EXPECT_EQ(kept({}, "c"), "");
}

TEST(Image, IsReadAndMistrusted) {
    const std::string assembly = contentof(manager / "OrvelLoginClient.dll");
    const std::optional<image> read = readimage(assembly);
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->managed);
    EXPECT_TRUE(read->for32bit);
    EXPECT_EQ(read->bytes, assembly.size());
    EXPECT_FALSE(readimage(contentof(built / "orvdiag.exe"))) << "a program, not a DLL";
    for (std::size_t size = 0; size < 1024; ++size) {
        readimage(std::string(assembly, 0, size));
        std::string damaged = assembly;
        damaged[size] = static_cast<char>(~damaged[size]);
        readimage(damaged);
    }
    EXPECT_EQ(gccversion("\0\0GCC: (GNU) 12 20220819\0GCC: (GNU) 12-posix\0GCC: (GNU) 12 2022"s), "12-posix");
    EXPECT_EQ(gccversion("GCC: (Rev3, Built by MSYS2 project) 13.2.0"), "13.2.0");
    EXPECT_EQ(gccversion("GCC: (") + gccversion(""), "");
    EXPECT_TRUE(samegcc("12-posix", "12") && samegcc("12", "12-win32") && samegcc("13.2.0", "13.1.0"));
    EXPECT_FALSE(samegcc("12-posix", "12-win32") || samegcc("13.2.0", "1-posix"));
}

TEST(FileTail, BeginsWhereTheLastLinesDo) {
    const temporary_folder folder;
    const fs::path file = folder.path / "log";
    const std::string large = std::string(1500000, 'x') + "\nlast\n";
    const struct {
        std::string content;
        std::optional<std::size_t> lines;
        std::string shown;  // with what is no complete line behind a stroke
    } rows[] = {
        {"a\r\nb\r\nc\r\n", 2, "b\nc\n|"},
        {"a\nb\nc", 2, "b\n|c"},
        {"a\nb\n", 9, "a\nb\n|"},
        {"a\nb\n", 0, "|"},
        {"a\nb\n", {}, "a\nb\n|"},
        {"", 1, "|"},
        {large, 1, "last\n|"},
        {large, 2, large + "|"},
    };
    for (const auto& row : rows) {
        std::ofstream(file, std::ios::binary) << row.content;
        filetail tail(toutf8(file.native()), false);
        EXPECT_EQ(tail.begin(row.lines), 0u);
        std::string text;
        for (std::string more; !(more = tail.next()).empty();) {
            text += more;
        }
        EXPECT_TRUE(text + "|" + tail.rest() == row.shown) << row.shown.substr(0, 20);
    }
}

TEST(FileTail, LosesNothingToDeletionRenamingReplacementAndEmptying) {
    const temporary_folder folder;
    const fs::path file = folder.path / "log";
    const fs::path other = folder.path / "other";
    const fs::path leftbehind = folder.path / "log.follow-4294967280";
    const std::string path = toutf8(file.native());
    const std::string longer = "in place of the last, and longer than that\n";
    std::ofstream(other) << longer;
    std::ofstream(leftbehind) << "by a process that was ended";
    filetail tail(path, true);
    EXPECT_FALSE(exists(leftbehind));
    EXPECT_NE(tail.begin(9), 0u);
    const std::pair<std::function<void()>, std::string> rows[] = {
        {[&] { fs::remove(file); }, ""},
        {[&] { fs::rename(file, folder.path / "old"); }, ""},
        {[&] { fs::rename(other, file); }, longer},
        {[&] { fs::resize_file(file, 0); }, ""},
    };
    for (const auto& [change, start] : rows) {
        SCOPED_TRACE(&change - &rows[0].first);
        const bool emptied = &change == &std::end(rows)[-1].first;
        appendtofile(path, "seen\n");
        EXPECT_THAT(tail.next(), EndsWith("seen\n"));
        appendtofile(path, "unseen\nunfinished");
        std::string text = emptied ? tail.next() : "";
        change();
        text += emptied ? tail.next() : "";
        appendtofile(path, "new\n");
        for (int call = 0; call < 6; ++call) {
            text += tail.next();
        }
        EXPECT_EQ(text, "unseen\nunfinished\n" + start + "new\n");
    }
    // A program that opened the file before it went away writes to it only afterwards.
    const orvsecutils::filehandle late(CreateFileW(file.c_str(), FILE_APPEND_DATA,
                                                   FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                                   OPEN_EXISTING, 0, nullptr));
    fs::rename(file, folder.path / "older");
    EXPECT_EQ(tail.next(), "");
    DWORD written = 0;
    WriteFile(late.get(), "late\n", 5, &written, nullptr);
    EXPECT_EQ(tail.next(), "late\n");
}

// A value in the registry for the time of a test.
struct value {
    HKEY hive;
    REGSAM view;
    const wchar_t* name;
    DWORD type;
    std::string data;
    const wchar_t* group = L"Debug";
};

std::string units(std::wstring_view text) {
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
}

const HKEY user = HKEY_CURRENT_USER;
const HKEY machine = HKEY_LOCAL_MACHINE;
constexpr REGSAM view64 = KEY_WOW64_64KEY;
constexpr REGSAM view32 = KEY_WOW64_32KEY;
const std::string one("\1\0\0\0", 4);
const std::string zero(4, '\0');
const std::string broken = units(L"x\xDC00\0"sv);

class Orvdiag : public testing::Test {
protected:
    ~Orvdiag() override { clear(); }

    program::outcome run(const std::wstring& words) { return box.run("orvdiag.exe", words); }

    void plant(const value& row) {
        planted.push_back(row);
        HKEY key = nullptr;
        RegCreateKeyExW(row.hive, path(row).c_str(), 0, nullptr, 0, KEY_WRITE | row.view, nullptr, &key, nullptr);
        const orvsecutils::registrykey owner(key);
        RegSetValueExW(key, row.name, 0, row.type, reinterpret_cast<const BYTE*>(row.data.data()),
                       static_cast<DWORD>(row.data.size()));
    }

    void clear() {
        box.clearswitch(user);
        for (; !planted.empty(); planted.pop_back()) {
            for (std::wstring key = path(planted.back()); key != L"software"; key.resize(key.rfind(L'\\'))) {
                RegDeleteKeyExW(planted.back().hive, key.c_str(), planted.back().view, 0);
            }
        }
    }

    sandbox box;
    const fs::path profile = box.folder().parent_path().parent_path();
    const std::string log = toutf8(box.log().native());

private:
    static std::wstring path(const value& row) { return std::wstring(L"software\\Orvel\\LoginManager\\") + row.group; }

    std::vector<value> planted;
};

TEST_F(Orvdiag, TellsWhyLoggingIsOffAndWhetherItIsOnAfterwards) {
    const char* const nobody = "because nobody has set it";
    const char* const nothing = "because no value that the library reads sets it";
    const struct {
        value there;
        bool on;
        const char* reason;
        const char* sentence;
        DWORD status;  // of switching it on
    } rows[] = {
        {{machine, view64, L"Other", REG_DWORD, one}, false, nobody, "", 0},
        {{machine, view32, L"Other", REG_SZ, broken}, false, nobody, "", 0},
        {{user, 0, L"Logging", REG_DWORD, one}, true, "by the user's setting", "", 0},
        {{user, 0, L"Logging", REG_DWORD, zero}, false, "by the user's setting", "", 0},
        {{machine, view64, L"Logging", REG_DWORD, one}, true, "by the machine's setting", "", 0},
        {{user, 0, L"Logging", REG_SZ, units(L"1\0"sv)},
         false,
         "because the user's setting \"Logging\" is not a number",
         "The user's setting \"Logging\" is not a number (REG_DWORD) but of the kind text: it counts as off.",
         0},
        {{user, 0, L"Logging", REG_QWORD, zero + one},
         false,
         nothing,
         "The user's setting \"Logging\" is not a number (REG_DWORD) but of the kind 64-bit number: the library "
         "ignores it.",
         0},
        {{user, 0, L"Logging", REG_DWORD, "12"},
         false,
         nothing,
         "The user's setting \"Logging\" is malformed: the library ignores it.",
         0},
        {{user, 0, L"LOGGING", REG_DWORD, one},
         false,
         nothing,
         "The user's setting \"LOGGING\" is spelled in another way: the library reads \"Logging\" only, so delete it.",
         1},
        {{machine, view32, L"Logging", REG_DWORD, one},
         false,
         nothing,
         "The machine's setting \"Logging\" lies in the 32-bit view of the registry: the library reads the 64-bit "
         "view.",
         0},
        {{machine, view64, L"Text", REG_SZ, broken},
         false,
         "because the group Debug cannot be read",
         "The machine's setting \"Text\" is malformed (not valid UTF-16): the library cannot read the group Debug.",
         1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sentence);
        plant(row.there);
        const json told = json::parse(run(L"logging --json").output);
        EXPECT_EQ(told["remarks"], *row.sentence ? json{row.sentence} : json::array());
        EXPECT_EQ(told["logging"], row.on);
        const program::outcome plain = run(L"logging");
        EXPECT_THAT(plain.output, StartsWith(std::string("Logging is ") + (row.on ? "on" : "off") + ", " + row.reason +
                                             ".\r\n" + row.sentence));
        EXPECT_EQ(plain.status, 0u);
        const program::outcome switched = run(L"logging on");
        EXPECT_THAT(switched.output, StartsWith(row.status == 0 ? "Logging is on, by the user's" : "Logging is off, "));
        EXPECT_EQ(switched.status, row.status);
        clear();
    }
}

TEST_F(Orvdiag, TellsWhetherTheLogCanBeWritten) {
    EXPECT_THAT(run(L"logging").output, EndsWith("It can be written.\r\n"));
    EXPECT_FALSE(exists(profile / "Orvel")) << "trying leaves nothing behind";
    create_directories(box.log());  // in the file's place
    EXPECT_THAT(run(L"logging").output, AllOf(HasSubstr("It cannot be written: "), EndsWith("(code 5)\r\n")));
    fs::remove_all(profile / "Orvel");
    std::ofstream(profile / "Orvel") << "in the folder's place";
    const program::outcome blocked = run(L"logging on");
    EXPECT_THAT(blocked.output, HasSubstr("It cannot be written: the folder "));
    EXPECT_EQ(blocked.status, 1u);
    EXPECT_EQ(run(L"logging off").status, 0u);
}

TEST_F(Orvdiag, LogsWhatItChangesAndNothingElse) {
    const program::outcome switched = run(L"logging on");
    EXPECT_THAT(switched.output, Not(HasSubstr("orvdiag::"))) << "the log's echo belongs to standard error";
    EXPECT_THAT(switched.errors, HasSubstr("orvdiag::logging(on)=on"));
    for (const wchar_t* looking : {L"facts", L"settings Debug", L"settings None", L"logging", L"log", L"report"}) {
        run(looking);
    }
    EXPECT_EQ(run(L"bad").status, 2u);
    EXPECT_EQ(run(L"help").status, 0u);
    run(L"logging off");
    run(L"logging off");
    const std::string start = "TIME,info,orvdiag.exe,orvdiag::logging(";
    EXPECT_THAT(box.logged(), ElementsAre(start + "on)", start + "on)=on", start + "off)", start + "off)=off"));
}

TEST_F(Orvdiag, ListsAGroupWithAllThatIsWrongInIt) {
    EXPECT_EQ(run(L"settings Größe").status, 1u);
    SetEnvironmentVariableW(L"ORVEL_TEST", L"日");
    for (const value& row : {
             value{user, 0, L"a", REG_DWORD, one, L"Größe"},
             value{user, 0, L"b", REG_EXPAND_SZ, units(L"%ORVEL_TEST%!\0"sv), L"Größe"},
             value{user, 0, L"c", REG_MULTI_SZ, units(L"1\0\"2\0\0"sv), L"Größe"},
             value{user, 0, L"d", REG_BINARY, "123", L"Größe"},
             value{user, 0, L"e", 0x77, "", L"Größe"},
             value{user, 0, L"f", REG_SZ, "odd", L"Größe"},
             value{machine, view64, L"a", REG_SZ, units(L" \0"sv), L"Größe"},
             value{machine, view64, L"d", REG_DWORD, zero, L"Größe"},
             value{machine, view32, L"a", REG_DWORD, one, L"Größe"},
         }) {
        plant(row);
    }
    const program::outcome good = run(L"settings Größe");
    EXPECT_EQ(good.status, 0u);
    EXPECT_EQ(good.output,
              "NAME  KIND      VALUE         SCOPE\r\n"
              "a     number    1             user\r\n"
              "a     text      \" \"           machine, hidden by the user's\r\n"
              "a     number    1             machine, 32-bit view, not read: the library reads the 64-bit view\r\n"
              "b     text      \"日!\"          user\r\n"
              "c     list      [\"1\", \"\\\"2\"]  user\r\n"
              "d     binary                  user, ignored: the library reads no values of this kind\r\n"
              "d     number    0             machine\r\n"
              "e     type 119                user, ignored: the library reads no values of this kind\r\n"
              "f     text                    user, ignored: malformed\r\n");
    plant({user, 0, L"\xD800", REG_DWORD, one, L"Größe"});
    plant({machine, view64, L"g", REG_MULTI_SZ, broken + zero, L"Größe"});
    const program::outcome listed = run(L"settings Größe --json");
    EXPECT_EQ(listed.status, 1u);
    json malformed = json::array();
    const json said = json::parse(listed.output);
    for (const json& row : said["values"]) {
        if (row["remark"] == "malformed: not valid UTF-16, so the library cannot read the group") {
            malformed.push_back({row["name"], row["kind"], row["value"], row["scope"], row["group"]});
        }
    }
    EXPECT_EQ(malformed,
              (json{{"g", "list", {"x\uFFFD"}, "machine", "Größe"}, {"\uFFFD", "number", 1, "user", "Größe"}}));
}

TEST_F(Orvdiag, ShowsTheLog) {
    const program::outcome missing = run(L"log");
    EXPECT_EQ(missing.status, 1u);
    EXPECT_THAT(missing.errors, AllOf(StartsWith("orvdiag: the log file cannot be read: "), HasSubstr("(code 3)")));
    create_directories(box.folder());
    for (int i = 100; i < 130; ++i) {
        appendtofile(log, "11/21/2026 09:14:03+0100," + std::string(i % 2 ? "info" : "warn") + ",日.exe," +
                              std::to_string(i) + (i < 129 ? "\n" : ""));
    }
    const auto shown = [&](const wchar_t* words) {
        const program::outcome result = run(words);
        EXPECT_EQ(result.status, 0u);
        EXPECT_THAT(result.output, StartsWith("Log file: " + log + "\r\n"));
        std::string numbers;
        for (std::size_t at = 0; (at = result.output.find("exe,", at + 1)) != std::string::npos;) {
            numbers += result.output.substr(at + 4, 3) + " ";
        }
        return numbers;
    };
    EXPECT_THAT(shown(L"log"), AllOf(StartsWith("110 111 "), EndsWith("128 129 ")));
    EXPECT_EQ(shown(L"log -n 3"), "127 128 129 ");
    EXPECT_EQ(shown(L"log -n 3 --level warn"), "124 126 128 ");
    EXPECT_EQ(shown(L"log -n 2 --program 日.EXE"), "128 129 ");
    EXPECT_EQ(shown(L"log --all --program none"), "");
    EXPECT_THAT(shown(L"log --all"), AllOf(StartsWith("100 "), EndsWith("129 ")));
}

TEST_F(Orvdiag, FollowsTheLogWithoutFallingBehind) {
    program follower = box.start("orvdiag.exe", L"log --follow --program a.exe");
    const auto sees = [&](const std::string& text) {
        for (int i = 0; i < 100 && follower.outputsofar().find(text) == std::string::npos; ++i) {
            Sleep(100);
        }
        return follower.outputsofar().find(text) != std::string::npos;
    };
    EXPECT_TRUE(sees("Log file: "));
    create_directories(box.folder());
    std::string expected;
    for (int i = 0; i < 600; ++i) {
        const std::string line = "11/21/2026 09:14:03+0100,info,a.exe,日 " + std::to_string(i) + "\n";
        // Wine refuses a file that was deleted while another process reads it.
        while (!appendtofile(log, line)) {
            Sleep(1);
        }
        expected += orvsecutils::textfileform(line);
        Sleep(i % 100 == 0 ? 200 : 0);  // a file that comes and goes between two looks is not seen
        if (i % 100 == 99) {
            i % 200 == 99 ? (void)fs::remove(box.log()) : fs::rename(box.log(), box.folder() / std::to_string(i));
        }
    }
    std::string much;
    while (much.size() < 5000000) {
        much += std::string(99, 'x') + "\n";
    }
    appendtofile(
        log, "11/21/2026 09:14:03+0100,info,b.exe,not wanted\n11/21/2026 09:14:03+0100,info,a.exe,\n" + much + "end\n");
    expected += "11/21/2026 09:14:03+0100,info,a.exe,\r\n" + orvsecutils::textfileform(much) + "end\r\n";
    EXPECT_TRUE(sees("end\r\n"));
    EXPECT_TRUE(follower.outputsofar() == "Log file: " + log + "\r\n" + expected);
    follower.end();
    follower.wait();
}

class Login : public Orvdiag {
protected:
    Login() {
        create_directories(folder);
        for (const char* file : {"orvellogin.dll", "OrvelLoginClientCLR.dll", "libgcc_s_dw2-1.dll", "libstdc++-6.dll",
                                 "libwinpthread-1.dll"}) {
            copy_file(built / file, folder / file);
        }
        copy(manager, folder / manager.filename());
    }

    // What is said of the subject while a file has another content, or is missing when that is empty.
    std::string finding(const char* subject, const char* changed, const std::string& content, DWORD status) {
        const std::string before = contentof(folder / changed);
        write(folder / changed, content);
        const program::outcome looked = run(L"login --json \"" + folder.native() + L"\"");
        write(folder / changed, before);
        EXPECT_EQ(looked.status, status);
        const json said = json::parse(looked.output);
        for (const json& row : said["findings"]) {
            if (row["subject"] == subject) {
                return row["result"].get<std::string>() + " " + row["text"].get<std::string>();
            }
        }
        return "not listed";
    }

    static void write(const fs::path& file, const std::string& bytes) {
        fs::remove(file);
        if (!bytes.empty()) {
            std::ofstream(file, std::ios::binary) << bytes;
        }
    }

    // A file with one text in it replaced by another of the same length.
    static std::string patched(const fs::path& file, const std::string& from, const std::string& to) {
        std::string bytes = contentof(file);
        for (std::size_t at = 0; (at = bytes.find(from, at)) != std::string::npos;) {
            bytes.replace(at, to.size(), to);
        }
        return bytes;
    }

    const fs::path folder = profile / L"日 é";
};

TEST_F(Login, NamesWhatIsWrongInAFolder) {
    const char* const client = "OrvelLoginManagerClient\\OrvelLoginClient.dll";
    const char* const utils = "OrvelLoginManagerClient\\loginManagerUtils.dll";
    const char* const part = "OrvelLoginClientCLR.dll";
    const char* const runtime = ".NET Framework runtime v4.0.30319";
    const char* const library = "orvellogin.dll";
    const char* const other = "orvelloginc.dll";
    const char* const libgcc = "libgcc_s_dw2-1.dll";
    const char* const libstdcxx = "libstdc++-6.dll";
    const std::string assembly = contentof(manager / "OrvelLoginClient.dll");
    const std::string native = contentof(built / library);
    const std::string version("\xBD\x04\xEF\xFE\0\0\1\0\0\0\1\0", 12);
    const std::string newer("\xBD\x04\xEF\xFE\0\0\1\0\7\0\1\0", 12);
    const struct {
        const char* subject;
        const char* changed;
        std::string content;
        const char* finding;
        DWORD status;
    } rows[] = {
        {library, other, "", "ok file version 1.0.0.0; loads", 0},
        {libgcc, other, "", "ok ", 0},
        {runtime, other, "", "ok starts, and runs the managed part", 0},
        {client, other, "",
         "ok file version 34.0.0.5070; assembly version 34.0.0.5070; has all 22 members that the library calls", 0},
        {utils, other, "", "ok file version 34.0.0.5070; assembly version 34.0.0.5070", 0},
        {other, other, "", "not listed", 0},
        {libgcc, libgcc, "", "FAIL is missing", 1},
        {library, libgcc, "", "cannot be loaded: Module not found. (code 126); it needs libgcc_s_dw2-1.dll: Module", 1},
        {library, library, native.substr(0, 1024), "FAIL is cut short: 1024 of at least ", 1},
        {library, library, "MZ text", "FAIL is damaged or not a DLL", 1},
        {library, library, contentof("C:\\windows\\sysnative\\version.dll"), "FAIL is for 64-bit programs", 1},
        {library, library, assembly, "FAIL is a managed assembly, not this library", 1},
        {library, library, contentof(built / libgcc), "it is not the login library: it does not export ", 1},
        {libgcc, libgcc, patched(built / libgcc, "(GNU) 12-", "(GNU) 99-"),
         "warn of another GCC (99-posix) than the library (12-posix)", 0},
        {libstdcxx, libstdcxx, contentof(built / libstdcxx) + "x", "warn not the file that ships with the library", 0},
        {part, part, patched(built / part, version, newer),
         "warn file version 1.7.0.0; not of the same version as the library, 1.0.0.0", 0},
        {runtime, part, "", "FAIL not tried: the managed part is missing", 1},
        {client, part, "", "ok file version 34.0.0.5070; not opened, ", 1},
        {runtime, part, "text", "FAIL not tried: the managed part is damaged", 1},
        {runtime, part, assembly, "FAIL these two files do not belong together: ", 1},
        {client, client, assembly.substr(0, assembly.size() / 2), "FAIL is cut short", 1},
        {client, utils, "", "; cannot be used by the runtime: System.IO.FileNotFoundException", 1},
        {client, client, contentof(OLD_MANAGER),
         "FAIL file version 33.1.0.0; assembly version 33.1.0.0 instead of 34.0.0.5070; lacks LoginManagerClient: "
         "LoginResponse login(), LoginManagerClient: LoginResponse getLoggedInUser(), ",
         1},
        {utils, utils, native, "FAIL is not a managed assembly", 1},
        {utils, utils, assembly, "holds another assembly, OrvelLoginClient", 1},
        {other, other, native, "it is not the login library: it does not export orvellogin_version", 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.subject) + " after a change of " + row.changed);
        EXPECT_THAT(finding(row.subject, row.changed, row.content, row.status), HasSubstr(row.finding));
    }
    fs::rename(folder / library, folder / other);
    EXPECT_EQ(finding(libgcc, libgcc, "", 1), "not listed") << "what only the other form needs";
    EXPECT_EQ(finding(library, libgcc, "", 1), "not listed");
}

TEST_F(Login, LooksAtTheToolsOwnFolderWithNothingElseThere) {
    copy_file(built / "orvdiag.exe", profile / "orvdiag.exe");
    const program::outcome looked = program(profile / "orvdiag.exe", L"login", folder).wait();
    EXPECT_EQ(looked.status, 1u);
    EXPECT_THAT(looked.output, AllOf(StartsWith("Folder: " + toutf8(profile.native()) + "\r\nFAIL  orvellogin.dll"),
                                     EndsWith("Not everything is in its place; see the lines with FAIL.\r\n")));
    EXPECT_THAT(run(L"login \"" + (folder / "none").native() + L"\"").output, HasSubstr("there is no such folder"));
}

TEST_F(Login, WritesAReportWithoutSecrets) {
    plant({user, 0, L"ApiToken", REG_SZ, units(L"hush\0"sv), L"Größe\\Inner"});
    plant({machine, view32, L"Server", REG_SZ, units(L"日\0"sv)});
    create_directories(box.folder());
    for (int i = 100; i <= 350; ++i) {
        appendtofile(log, "line " + std::to_string(i) + " \xFF\n");
    }
    const program::outcome told = run(L"report");
    EXPECT_EQ(told.status, 0u);
    EXPECT_THAT(told.output, AllOf(HasSubstr("\\orvdiag-report.txt\r\n"), HasSubstr("personal data")));
    const std::string text = contentof(profile / "orvdiag-report.txt");
    EXPECT_EQ(toutf8(orvsecutils::toutf16(text)), text);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\r'), std::count(text.begin(), text.end(), '\n'));
    for (const char* part :
         {"Report of orvdiag " ORVDIAG_VERSION ", ", "personal data", "OrvelLoginClient.dll", "Microsoft Windows",
          ".NET Framework 4  not registered", "osversion", "Größe\\Inner\\ApiToken  text  (hidden)",
          "machine, 32-bit view", "Logging is off", "It can be written.", "line 151 \uFFFD\r\n", "line 350"}) {
        EXPECT_THAT(text, HasSubstr(part));
    }
    EXPECT_THAT(text, AllOf(Not(HasSubstr("hush")), Not(HasSubstr("line 150"))));

    EXPECT_EQ(run(L"report --json other.json \"" + folder.native() + L"\"").status, 0u);
    const json data = json::parse(contentof(profile / "other.json"));
    EXPECT_EQ(data["login"]["verdict"], "Everything is in its place.");
    EXPECT_EQ(data["settings"][1]["value"], "(hidden)");
    // The same from another source.
    for (const auto& [fact, variable] : {std::pair("computername", "COMPUTERNAME"),
                                         {"username", "USERNAME"},
                                         {"localappdatafolder", "LOCALAPPDATA"},
                                         {"roamingappdatafolder", "APPDATA"},
                                         {"programfilesfolder", "ProgramFiles"},
                                         {"publicfolder", "PUBLIC"}}) {
        EXPECT_TRUE(samebutcase(data["facts"][fact].get<std::string>(), std::getenv(variable))) << fact;
    }
    EXPECT_EQ(data["facts"]["executablename"], "orvdiag.exe");
    EXPECT_EQ(data["facts"]["profilefolder"], toutf8(profile.native()));
    EXPECT_EQ(data["facts"]["meanings"].size(), 4u);
    EXPECT_EQ(data["logging"]["writable"], true);
    EXPECT_EQ(data["log"].size(), 200u);

    const program::outcome refused = run(L"report \"" + folder.native() + L"\"");
    EXPECT_EQ(refused.status, 1u);
    EXPECT_THAT(refused.output, StartsWith("The report cannot be written to "));
}

}  // namespace
