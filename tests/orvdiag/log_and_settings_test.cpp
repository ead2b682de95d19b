#include "orvsecutils/log/appendfile.h"
#include "tests/orvdiag/tool.h"
#include "tools/orvdiag/filetail.h"
#include "tools/orvdiag/secrets.h"

using namespace orvdiag;
using namespace std::literals;
using namespace testing;
using orvsecutils::appendtofile;
using orvsecutils::toutf8;

namespace fs = std::filesystem;

namespace {

TEST(Secrets, AreKnownByTheWordsOfTheirNames) {
    for (const char* name : {"userpassword1", "x-api-key", "PASSWORD_HASH", "CASCookie", "PINs", "Session Id",
                             "ASP.NET_SessionId", "DbPass", "Tokens\\Größe", "Key"}) {
        EXPECT_TRUE(namesasecret(name)) << name;
    }
    for (const char* name :
         {"monkey", "Compass", "Passenger", "Secretary", "PublicKeyToken", "TokenTimeout", "Keys pressed", ""}) {
        EXPECT_FALSE(namesasecret(name)) << name;
    }
}

TEST(Secrets, AreHiddenAndTheRestStays) {
    // What stands between < and > must be hidden.
    for (const char* row :
         {"11/21/2026 09:14:03+0100,info,host.exe,proxy=http://ada:<hush>@proxy.example:8080/a?b=1 c",
          "http://ada:<pa/ss>@a.example/ http://[::1]:80/@x file://C:/a@b mail to:ada@example.com",
          "ada:<hush>@proxy.example:3128",
          "GET https://a.example/token HTTP/1.1 cb?access_token=<hush>&x=1&code=<hush>",
          "Server=db;User Id=ada;Password=<my hush>;Database=x",
          "f(Pwd={<a;b>};Server=x) failed, pin=<1234>, code: 5, token: null",
          "Password=<my hush>",
          R"({"user":"ada","password":"<hu\"sh; x>","pin":<12>,"keyboard":"de","tokens":[<"a","b">]})",
          R"({\"password\":\"<hush>\",\"n\":1})",
          "a%3Fuser%3Dada%26access_token%3D<hush>%26x%3D1",
          "%22password%22%3A%22<hush>%22%2C%22n%22",
          "Authorization: <Bearer hush> sent to a.example",
          "Cookie: <a=hush; b=hush>",
          "invalid bearer token, Bearer <hush> sent",
          "a <eyJhbGciOiJI.eyJzdWIi.c2ln> b",
          "ticket <ST-1856-aA5Yuvrxzpv8Tau1cYQ7-server> b",
          "tool --password <hush> --server x",
          "password expired, token '<hu sh>' here, PIN is <4711> here",
          "login::setPassword(<hush>)=true",
          "client::getLoginTicket(https://a.example)=<hu sh>",
          "client::login(ada, <hush>)=0",
          R"(key="Password" value="<hush>")",
          "PublicKeyToken=b77a5c561934e089, Culture=neutral",
          "Session Id: <hush> here, password=<a,b>, user=ada",
          "SharedAccessSignature=a&sig=<b%3D>&se=2026"}) {
        static const std::regex marked("<(.*?)>");
        EXPECT_EQ(withoutsecrets(std::regex_replace(row, marked, "$1")), std::regex_replace(row, marked, hidden));
    }
}

TEST(FileTail, GoesOnWhateverHappensToTheFileAndTouchesNothing) {
    const temporary_folder folder;
    const fs::path file = folder.path / "log";
    const std::string path = toutf8(file.native());
    const auto add = [&](const std::string& text) { return [&path, text] { appendtofile(path, text); }; };
    std::ofstream(folder.path / "log.follow-1") << "somebody else's";
    filetail tail(path);
    EXPECT_NE(tail.begin(9), 0u);
    const std::string longline(3000000, 'x');
    const std::pair<std::function<void()>, std::string> rows[] = {
        {add("seen\nunfin"), "seen|"},
        {add("ished\n\nend"), "unfinished||"},
        {[&] {
             fs::rename(file, folder.path / "old");
             appendtofile(path, "seen\nunfinished\n\nend\n");  // begins like the old one
         },
         "end|seen|unfinished||end|"},
        {[&] { std::ofstream(file) << "in place of the last, longer than that, in the same file\n"; },
         "in place of the last, longer than that, in the same file|"},
        {[&] { fs::resize_file(file, 0); }, ""},
        {add("\xEF\xBB\xBF"
             "a\rb\n"),
         "a\rb|"},
        {[&] { fs::remove(file); }, ""},
        {add("c" + std::string(5000, '\0') + "d\n"), "c|(5000 zeros)|d|"},
        {add(longline + "\ne\n"),
         std::string(131072, 'x') + " (cut: 2737857 bytes are left out here) " + std::string(131071, 'x') + "|e|"},
    };
    for (const auto& [change, expected] : rows) {
        change();
        std::string text;
        for (int call = 0; call < 6; ++call) {
            tail.next([&](std::string_view line) { text.append(line) += '|'; });
        }
        EXPECT_TRUE(text == expected) << text.substr(0, 200) << "\ninstead of\n" << expected.substr(0, 200);
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path), {}), 3);
}

TEST_F(Orvdiag, ListsAGroupWithAllItsFaults) {
    EXPECT_EQ(run(L"settings Größe").status, 1u);
    plant(user, L"a", REG_DWORD, one, "Größe");
    plant(user, L"b", REG_EXPAND_SZ, bytesof(L"%OS%日!\\\0"sv), "Größe");
    plant(user, L"c", REG_MULTI_SZ, bytesof(L"1\0pin=23\0\0"sv), "Größe");
    plant(user, L"d", REG_BINARY, "123", "Größe");
    plant(user, L"f", REG_SZ, std::string(1001, 'o'), "Größe");  // the longest
    plant(user, std::wstring(16383, L'h'), REG_DWORD, one, "Größe");
    plant(user, L"UserPin", REG_SZ, bytesof(L"1234\0"sv), "Größe");
    plant(machine, L"a", REG_SZ, bytesof(L" \0"sv), "Größe");
    plant(machine, L"d", REG_DWORD, zero, "Größe");
    plant(machine32, L"a", REG_SZ, bytesof(L"32\0"sv), "Größe");
    const program::result good = run(L"settings Größe --json");
    EXPECT_EQ(good.status, 0u);
    EXPECT_EQ(
        json::parse(good.output)["values"][2].dump(),
        R"({"group":"Größe","name":"a","kind":"text","value":" ","scope":"machine","remark":"overridden by the user's"})");
    plant(user, L"d\xD800", REG_DWORD, one, "Größe");
    plant(machine, L"ab", REG_MULTI_SZ, broken + zero, "Größe");
    const program::result bad = run(L"settings Größe");
    EXPECT_EQ(bad.status, 1u);
    const std::string malformed = "malformed: not valid UTF-16, so the library cannot read the group";
    const std::vector<std::string> expected = {
        "NAME KIND VALUE SCOPE",
        "UserPin text (hidden) user",
        "a number 1 user",
        "a text \" \" machine, overridden by the user's",
        "a text \"32\" machine, 32-bit view, not read: the library reads the 64-bit view",
        "ab list machine, " + malformed,
        "b text \"Windows_NT日!\\\" user",
        "c list [\"1\", \"pin=(hidden)\"] user",
        "d binary user, ignored: the library reads no values of this kind",
        "d number 0 machine",
        "d\uFFFD number user, " + malformed,
        "f text user, ignored: malformed",
        std::string(200, 'h') + "... number user, ignored: the name is longer than the library reads"};
    EXPECT_EQ(sandbox::lines(std::regex_replace(bad.output, std::regex("  +"), " ")), expected);
    setaccess(HKEY_LOCAL_MACHINE, "Größe", noaccess);
    const program::result denied = run(L"settings Größe");
    setaccess(HKEY_LOCAL_MACHINE, "Größe", fullaccess);
    EXPECT_THAT(denied.output, HasSubstr("machine, cannot be read: Access denied. (code 5)"));
    EXPECT_EQ(denied.status, 1u);
    plant(user, L"Other", REG_DWORD, one);
    setaccess(HKEY_CURRENT_USER, "Debug", noaccess);
    const program::result off = run(L"logging");
    setaccess(HKEY_CURRENT_USER, "Debug", fullaccess);
    EXPECT_THAT(off.output,
                StartsWith("Logging is off, because the user's group Debug cannot be read: Access denied."));
}

TEST_F(Orvdiag, ShowsTheLog) {
    const program::result missing = run(L"log");
    EXPECT_EQ(missing.status, 1u);
    EXPECT_THAT(missing.errors, AllOf(StartsWith("orvdiag: the log file cannot be read: "), HasSubstr("(code 3)")));
    create_directories(box.folder());
    const std::string time = "11/21/2026 09:14:03+0100,";
    const std::string info = time + "info,日,b.exe,a", second = "2,error,日.exe, the second line of a";
    const std::string error = "11/21/2026 09:14:03-0100,error,c.exe,b", cut = time + "warn";
    const std::string warn = time + "warn,日,B.EXE,", last = "11.21/2026 09:14:03+0100,info,of B.EXE: no such time";
    appendtofile(log, std::string(1500000, 'x') + "\n");  // longer than a block
    for (int line = 2; line <= 17; ++line) {
        appendtofile(log, "of no record\n");
    }
    appendtofile(log, "\xEF\xBB\xBF" + info + "\n" + second + "\n" + error + "\n" + cut + "\n");
    appendtofile(log, warn + "\x1B]0, pin=1\n" + last);
    const std::string shown = warn + "\\u001b]0, pin=(hidden)";
    const std::pair<const wchar_t*, std::vector<std::string>> rows[] = {
        {L"-n 0", {}},
        {L"-n 2", {shown, last}},
        {L"--level info", {info, second}},
        {L"--level info --level error -n 2", {second, error}},
        {L"--program 日,b.exe", {info, second, shown, last}},
        {L"--program 日,B.exe --level warn", {shown, last}},
        {L"--program c", {}},
        {L"--all --level warn", {shown, last}},
    };
    for (std::pair<const wchar_t*, std::vector<std::string>> row : rows) {
        row.second.insert(row.second.begin(), "Log file: " + log);
        EXPECT_EQ(sandbox::lines(run(L"log "s + row.first).output), row.second) << toutf8(row.first);
    }
    for (const auto& [arguments, lines] : {std::pair(L"", 20), {L"-n 23", 23}, {L"--all", 23}}) {
        const program::result result = run(L"log "s + arguments);
        EXPECT_EQ(result.status, 0u);
        EXPECT_THAT(sandbox::lines(result.output), SizeIs(1 + lines)) << toutf8(arguments);
    }
    fs::resize_file(box.log(), 5000000000);  // takes no room on the disk
    appendtofile(log, "end");
    EXPECT_THAT(run(L"log -n 2").output, EndsWith(" zeros)\r\nend\r\n"));
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
            // What was written just before the renaming may be missed, so the last lines must have been shown.
            EXPECT_TRUE(shows("日 " + std::to_string(i) + "\r\n" + std::string(100000, 'x') + "\r\n"));
            fs::rename(box.log(), box.folder() / std::to_string(i));
        }
    }
    EXPECT_TRUE(shows("日 59\r\n"));
    follower.end();
    const std::string shown = follower.wait().output, wanted = orvsecutils::withcrlf(expected);
    const auto at = std::mismatch(shown.begin(), shown.end(), wanted.begin(), wanted.end()).first - shown.begin();
    EXPECT_TRUE(shown == wanted) << shown.size() << " bytes instead of " << wanted.size() << ", different at " << at
                                 << ": " << shown.substr(static_cast<std::size_t>(at), 80);
}

}  // namespace
