#include <windows.h>

#include <sddl.h>

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
    for (const char* name : {"Password1", "DBPWD", "userpassword", "clientSecret", "AccessToken", "x-api-key",
                             "PASSWORD_HASH", "CASCookie", "LoginTickets", "UserPin", "PINs", "otp", "Session Id",
                             "ASP.NET_SessionId", "Authorization", "DbPass", "Tokens\\Größe", "Key", "Api Keys"}) {
        EXPECT_TRUE(namesasecret(name)) << name;
    }
    for (const char* name :
         {"Keyboard", "monkey", "Keynote", "Compass", "Passenger", "Tokenizer", "Bypass proxy", "Secretary", "Spinner",
          "PublicKeyToken", "TokenTimeout", "Keys pressed", "HotKey", "Ticketing", "Logging", ""}) {
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
          "Pwd={<a;b>};Server=x",
          "Password=<my hush>",
          "f(Password=<my hush>;Server=x) failed, pin=<1234>, code: 5, token: null",
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
          "PIN is <4711> here",
          "password expired, token '<hu sh>' here",
          "login::setPassword(<hush>)=true",
          "client::getLoginTicket(https://a.example)=<hu sh>",
          "client::login(ada, <hush>)=0",
          "TokenStore::load(x)=1",
          R"(key="Password" value="<hush>")",
          "PublicKeyToken=b77a5c561934e089, Culture=neutral",
          "api key: <hush> here",
          "Session Id: <hush> here",
          "password=<a,b>, user=ada",
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

void protect(HKEY hive, const wchar_t* group, const wchar_t* rights) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ConvertStringSecurityDescriptorToSecurityDescriptorW(rights, SDDL_REVISION_1, &descriptor, nullptr);
    HKEY key = nullptr;
    RegOpenKeyExW(hive, (L"software\\Orvel\\LoginManager\\"s + group).c_str(), 0, WRITE_DAC | view64, &key);
    RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, descriptor);
    RegCloseKey(key);
    LocalFree(descriptor);
}

TEST_F(Orvdiag, ListsAGroupWithAllItsFaults) {
    EXPECT_EQ(run(L"settings Größe").status, 1u);
    plant(user, L"a", REG_DWORD, one, "Größe");
    plant(user, L"b", REG_EXPAND_SZ, bytesof(L"%OS%日!\\\0"sv), "Größe");
    plant(user, L"c", REG_MULTI_SZ, bytesof(L"1\0pin=23\0\0"sv), "Größe");
    plant(user, L"d", REG_BINARY, "123", "Größe");
    plant(user, L"e", 0x77, "", "Größe");
    plant(user, L"f", REG_SZ, std::string(1001, 'o'), "Größe");  // the longest
    plant(user, L"g", REG_MULTI_SZ, "odd", "Größe");
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
        "e type 119 user, ignored: the library reads no values of this kind",
        "f text user, ignored: malformed",
        "g list user, ignored: malformed",
        std::string(200, 'h') + "... number user, ignored: the name is longer than the library reads"};
    EXPECT_EQ(sandbox::lines(std::regex_replace(bad.output, std::regex("  +"), " ")), expected);
    protect(HKEY_LOCAL_MACHINE, L"Größe", L"D:");
    const program::result denied = run(L"settings Größe");
    protect(HKEY_LOCAL_MACHINE, L"Größe", L"D:(A;;GA;;;WD)");
    EXPECT_THAT(denied.output, HasSubstr("machine, cannot be read: Access denied. (code 5)"));
    EXPECT_EQ(denied.status, 1u);
    plant(user, L"Other", REG_DWORD, one);
    protect(HKEY_CURRENT_USER, L"Debug", L"D:");
    const program::result off = run(L"logging");
    protect(HKEY_CURRENT_USER, L"Debug", L"D:(A;;GA;;;WD)");
    EXPECT_THAT(off.output,
                StartsWith("Logging is off, because the user's group Debug cannot be read: Access denied."));
}

TEST_F(Orvdiag, ShowsTheLog) {
    const program::result missing = run(L"log");
    EXPECT_EQ(missing.status, 1u);
    EXPECT_THAT(missing.errors, AllOf(StartsWith("orvdiag: the log file cannot be read: "), HasSubstr("(code 3)")));
    create_directories(box.folder());
    // Lines that belong to no record, the first of them longer than a block, then records. The last letter of each line
    // names it.
    appendtofile(log, std::string(1500000, 'x') + "A\nB\nC\nD\nE\nF\nG\nH\nI\nJ\nK\nL\nM\nN\nO\nP\n");
    appendtofile(log,
                 "\xEF\xBB\xBF"
                 "11/21/2026 09:14:03+0100,info,日,b.exe,a\n2,error,日.exe, of b\n");
    appendtofile(log, "11/21/2026 09:14:03-0100,error,c.exe,c\n11/21/2026 09:14:03+0100,warn\n");
    appendtofile(log, "11/21/2026 09:14:03+0100,warn,日,B.EXE,\x1B]0, pin=1 d\n11.21/2026 09:14:03+0100,info,e");
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
        std::string letters;
        for (const std::string& line : sandbox::lines(result.output)) {
            letters += line.back();
        }
        EXPECT_EQ(letters, "g"s + expected) << toutf8(arguments) << ", after the first line, which ends in orvsec.log";
    }
    EXPECT_THAT(run(L"log -n 2").output, HasSubstr("B.EXE,\\u001b]0, pin=(hidden) d\r\n"));
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
            Sleep(200);  // a file that exists only between two reads is missed
            fs::rename(box.log(), box.folder() / std::to_string(i));
        }
    }
    EXPECT_TRUE(shows("日 59\r\n"));
    follower.end();
    EXPECT_TRUE(follower.wait().output == orvsecutils::withcrlf(expected));
}

}  // namespace
