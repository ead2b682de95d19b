// The library as a host sees it, with the stand-ins behind it. An environment variable controls the stand-ins; see
// examples/standins/Steering.cs.

#include <gmock/gmock.h>
#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "login/LoginManagerClient.h"
#include "orvsecutils/platform/unicode.h"
#include "result_of.h"
#include "tests/support/system.h"

using orvsecutils::toutf8;
using namespace testing;

namespace {

struct Calls {
    int signIns = 0;
    int signOuts = 0;
    DWORD thread = 0;
} calls;

void onSignIn() {
    ++calls.signIns;
    calls.thread = GetCurrentThreadId();
}

void onSignOut() {
    ++calls.signOuts;
    calls.thread = GetCurrentThreadId();
}

/// A client whose manager obeys the given commands.
struct Steered : LoginManagerClient {
    explicit Steered(const std::wstring& commands, uiLang language = uiLangFallback)
        : LoginManagerClient(onSignIn, onSignOut, language) {
        SetEnvironmentVariableW(L"ORVEL_STANDIN", commands.c_str());
        calls = Calls();
    }
    ~Steered() { SetEnvironmentVariableW(L"ORVEL_STANDIN", nullptr); }

    LoginResponse signIn() { return login(L"ada@example.com", L"analytical engine"); }
};

const char* const nullFailure = "System.ArgumentNullException: NULLPTR is not supported for this conversion.";

struct Member {
    const wchar_t* managed;  // the manager's member that it calls
    std::wstring (*call)(LoginManagerClient&);
    bool translates;      // the manager's exception becomes a loginManagerException*
    const char* forNull;  // result if the manager returns null; null if the member returns nothing
    bool quietOffline;    // returns empty without a call while offline
};

const Member members[] = {
    {L"login", [](LoginManagerClient& c) { return c.login().userName; }, true, "code 6", false},
    {L"login", [](LoginManagerClient& c) { return c.login(L"u", L"p").userName; }, true, "code 6", false},
    {L"login", [](LoginManagerClient& c) { return c.getLoggedInUser(true).userName; }, true, "code 6", false},
    {L"getLoggedInUser", [](LoginManagerClient& c) { return c.getLoggedInUser(false).userName; }, true, "code 6",
     false},
    {L"Logout", [](LoginManagerClient& c) { return c.logout(), std::wstring(); }, true, nullptr, false},
    {L"getAccessToken", [](LoginManagerClient& c) { return c.getAccessToken(); }, true, "", true},
    {L"formatAccessURL", [](LoginManagerClient& c) { return c.formatAccessUrl(L"u"); }, true, nullFailure, true},
    {L"getPlatformURL", [](LoginManagerClient& c) { return c.getPlatFormURL(); }, false, "", true},
    {L"getRegistryURL", [](LoginManagerClient& c) { return c.getRegistryURL(); }, false, "", true},
    {L"getPassportURL", [](LoginManagerClient& c) { return c.getPassportURL(); }, false, "", true},
    {L"getCASCookie", [](LoginManagerClient& c) { return c.getCASCookie(); }, false, "", true},
    {L"getmyAppsURL", [](LoginManagerClient& c) { return c.getmyAppsURL(); }, false, "", true},
    {L"getKelpaURL", [](LoginManagerClient& c) { return c.getKelpaURL(); }, false, "", true},
    {L"getTenantName", [](LoginManagerClient& c) { return c.getTenantName(); }, false, "", true},
    {L"getTenantId", [](LoginManagerClient& c) { return c.getTenantId(); }, false, "", true},
    {L"getTenantIds", [](LoginManagerClient& c) { return c.getTenantIds(); }, false, "", true},
    {L"getSpaceURL", [](LoginManagerClient& c) { return c.getSpaceURL(); }, false, "", true},
    {L"getLoginTicket", [](LoginManagerClient& c) { return c.getLoginTicket(L"s"); }, false, nullFailure, true},
    {L"stopDNMListener", [](LoginManagerClient& c) { return c.stopDNMListener(), std::wstring(); }, false, nullptr,
     false},
    {L"DunmoreLoginBrowser", [](LoginManagerClient& c) { return c.DunmoreLoginBrowser(L"s", L"c"), std::wstring(); },
     true, nullptr, false},
    {L"getDNMAccessToken", [](LoginManagerClient& c) { return c.getDNMAccessToken(); }, false, nullFailure, false},
    {L"isDunmorePlatformTokenExpired",
     [](LoginManagerClient& c) { return std::to_wstring(c.isDunmorePlatformTokenExpired(L"t")); }, false, nullptr,
     false},
};

TEST(EveryMember, TranslatesTheManagersExceptionOrLetsItPass) {
    for (const Member& member : members) {
        for (const int status : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, -1}) {
            Steered client(std::wstring(member.managed) + L"=status " + std::to_wstring(status));
            const std::string code = "code " + std::to_string(status < 0 || status > 8 ? 8 : status);
            EXPECT_THAT(resultOf([&] { return member.call(client); }),
                        EndsWith(member.translates ? code : "LoginManagerException: on request"))
                << toutf8(member.managed) << " " << status;
        }
    }
}

TEST(EveryMember, LetsOtherExceptionsPassWithTypeMessageAndHresult) {
    for (const Member& member : members) {
        Steered client(std::wstring(member.managed) + L"=throw System.InvalidOperationException on\\0request");
        try {
            member.call(client);
            ADD_FAILURE() << toutf8(member.managed);
        } catch (const loginRuntimeException& failure) {
            EXPECT_EQ(failure.typeName, L"System.InvalidOperationException");
            EXPECT_EQ(failure.message, std::wstring(L"on\0request", 10));
            EXPECT_EQ(static_cast<unsigned>(failure.hresult), 0x80131509u);  // COR_E_INVALIDOPERATION
            EXPECT_STREQ(failure.what(), "System.InvalidOperationException: on\uFFFDrequest");
        }
    }
}

TEST(EveryMember, KeepsTheHostsFloatingPointControlAndGivesItToItsCallbacks) {
    struct Control {
        std::uint16_t x87;
        std::uint32_t sse;
        Control() { __asm__ volatile("fstcw %0\n\tstmxcsr %1" : "=m"(x87), "=m"(sse)); }
        Control(std::uint16_t x87In, std::uint32_t sseIn) : x87(x87In), sse(sseIn) {
            __asm__ volatile("fldcw %0\n\tldmxcsr %1" : : "m"(x87), "m"(sse));
        }
        bool operator==(const Control& other) const { return x87 == other.x87 && sse == other.sse; }
    };
    static std::vector<Control> seen;
    static LoginManagerClient* current;
    seen.clear();
    // Rounding up with 64 bits of precision; zero-divide unmasked, as in hosts whose language raises it.
    const Control restored;
    const Control hosts(0x0B7B, 0x5D80);
    std::thread([&] {
        const Control ofThread(0x0B7B, 0x5D80);
        const Steered twice(L"events=twice");
        LoginManagerClient client(
            [] {
                const Control entered;
                seen.push_back(entered);
                Control(0x037F, 0x1F80);
                current->getTenantName();
                Control(entered.x87, entered.sse);
            },
            [] { seen.emplace_back(); }, uiLangFallback);
        current = &client;
        EXPECT_EQ(Control(), ofThread);
        client.login(L"ada@example.com", L"analytical engine");
        for (const Member& member : members) {
            resultOf([&] { return member.call(client); });
            EXPECT_EQ(Control(), ofThread) << toutf8(member.managed);
        }
        EXPECT_THAT(seen, AllOf(SizeIs(8), Each(hosts))) << "the second of each event like the first";
        Control(restored.x87, restored.sse);
        client.login();
        EXPECT_EQ(seen.back(), restored) << "the control of the moment";
        Control(hosts.x87, hosts.sse);
        Steered dividing(L"getTenantName=divide");
        EXPECT_EQ(dividing.getTenantName(), L"Example Works") << "with the runtime's control";
        EXPECT_EQ(Control(), ofThread) << "and no pending exception";
        Steered onOtherThreads(L"events=thread");
        onOtherThreads.stopDNMListener();
        LoginManagerClient last([] { seen.emplace_back(); }, nullptr, uiLangFallback);
        last.stopDNMListener();
        seen.clear();
        onOtherThreads.signIn();
        EXPECT_THAT(seen, ElementsAre(hosts));
    }).join();
    EXPECT_EQ(Control(), hosts);
    Control(restored.x87, restored.sse);
}

TEST(EveryMember, TurnsNullIntoWhatItsContractSays) {
    for (const Member& member : members) {
        if (member.forNull) {
            Steered client(std::wstring(member.managed) + L"=null");
            EXPECT_EQ(resultOf([&] { return member.call(client); }), member.forNull) << toutf8(member.managed);
        }
    }
}

TEST(EveryMember, WhileOfflineIsQuietOrReachesTheManager) {
    // The exception of the manager's constructor is not translated.
    const char* const failure = "loginManagerUtils.LoginManagerException: on request";
    for (const Member& member : members) {
        SCOPED_TRACE(toutf8(member.managed));
        Steered client(L"constructor=status 5");
        client.setOrvelOfflineMode(true);
        EXPECT_TRUE(client.isOrvelOfflineMode());
        EXPECT_EQ(resultOf([&] { return member.call(client); }), member.quietOffline ? "" : failure);
        client.setOrvelOfflineMode(false);
        EXPECT_EQ(resultOf([&] { return member.call(client); }), failure);
        SetEnvironmentVariableW(L"ORVEL_STANDIN", nullptr);
        EXPECT_EQ(resultOf([&] { return client.getTenantName(); }), "Example Works") << "tried again";
    }
}

TEST(Failures, CarryTheChainOfCauses) {
    std::string middleLeftOut = " ---> ...";
    for (int i = 0; i < 7; ++i) {
        middleLeftOut += " ---> System.TimeoutException: ";
    }
    const std::tuple<const wchar_t*, std::string, int> rows[] = {
        {L"wrapped", "n: first ---> System.TimeoutException: its cause ---> System.ArgumentException: second", 3},
        {L"chain 3 1",
         "System.TimeoutException: 🦉 ---> System.TimeoutException: 🦉 ---> System.InvalidOperationException: 🦉", 2},
        {L"chain 18 0", middleLeftOut + " ---> System.InvalidOperationException: ", 17},
        {L"chain 3 2100", "🦉...", 2},
    };
    for (const auto& [command, chain, arrows] : rows) {
        Steered client(std::wstring(L"getTenantName=") + command);
        const std::string failure = resultOf([&] { return client.getTenantName(); });
        EXPECT_THAT(failure, EndsWith(chain)) << toutf8(command);
        EXPECT_EQ(std::count(failure.begin(), failure.end(), '>'), arrows) << toutf8(command);
        EXPECT_LT(failure.size(), 17000u);
    }
}

TEST(Failures, OfAnAbortedThreadAreFailuresOfOneCall) {
    Steered client(L"getTenantName=abort;login=abort;getSpaceURL=throw OrvelLoginClient.AbortingException");
    for (int i = 0; i < 2; ++i) {
        EXPECT_THAT(resultOf([&] { return client.getSpaceURL(); }), StartsWith("OrvelLoginClient.AbortingException: "));
        EXPECT_THAT(resultOf([&] { return client.getTenantName(); }), StartsWith("System.Threading.ThreadAbort"));
        EXPECT_THAT(resultOf([&] { return client.login().userName; }), StartsWith("System.Threading.ThreadAbort"));
        EXPECT_EQ(resultOf([&] { return client.getTenantId(); }), "R1132100");
    }
}

TEST(Response, KeepsEachFieldInItsPlace) {
    Steered client(L"");
    const auto fields = [](const LoginResponse& r) {
        return std::vector<std::wstring>{r.statusDescription, r.userName,  r.firstName, r.lastName, r.rowId,
                                         r.aliasName,         r.domainName};
    };
    LoginResponse user = client.signIn();
    EXPECT_THAT(fields(user), ElementsAre(L"Ada signed in", L"ada@example.com", L"Ada", L"Lovelace", L"1815",
                                          L"Countess", L"example.com"));
    EXPECT_EQ(client.getLoggedInUser(false).statusDescription, L"Ada is signed in");
    EXPECT_EQ(client.getLoggedInUser(true).statusDescription, L"Ada signed in again");
    const LoginResponse zoe = client.login(L"zoe@example.com", L"κωδικός");
    user = zoe;
    LoginResponse moved(std::move(user));
    user = std::move(moved);
    EXPECT_THAT(fields(user),
                ElementsAre(L"Ζωή signed in", L"zoe@example.com", L"Ζωή", L"Παπαδοπούλου", L"2042", L"Zoë 🦉", L""));
}

TEST(Response, WithANullFieldOtherThanTheDomainFailsTheConversion) {
    for (const wchar_t* field :
         {L"statusDescription", L"userName", L"firstName", L"lastName", L"rowId", L"aliasName"}) {
        Steered client(std::wstring(field) + L"=null");
        EXPECT_EQ(resultOf([&] { return client.signIn().userName; }), nullFailure) << toutf8(field);
    }
    Steered client(L"domainName=null");
    EXPECT_EQ(resultOf([&] { return client.signIn().domainName + L"/" + client.signIn().aliasName; }), "/Countess");
}

TEST(Strings, CrossBothWaysUnitForUnit) {
    Steered client(L"login=echo;formatAccessURL=echo;getLoginTicket=echo");
    const std::wstring texts[] = {L"",
                                  std::wstring(L"\0a\0\0b\0", 6),
                                  L"\xd83e\xdd89",
                                  L"\xd800 lone high",
                                  L"lone low \xdc00",
                                  L"\xdc00\xd800",
                                  std::wstring(1000000, L'\x4e16') + L"end"};
    for (const std::wstring& text : texts) {
        EXPECT_TRUE(client.formatAccessUrl(text) == text) << text.size();
        EXPECT_TRUE(client.getLoginTicket(text) == text) << text.size();
        EXPECT_TRUE(client.isDunmorePlatformTokenExpired(text)) << "without a number in front";
        const LoginResponse response = client.login(text, text + L"2");
        EXPECT_TRUE(response.userName == text && response.firstName == text + L"2") << text.size();
    }
}

TEST(Callbacks, ArriveOnTheThreadThatRaisesTheEvent) {
    const std::pair<const wchar_t*, bool> rows[] = {{L"", true}, {L"events=thread", false}, {L"events=pool", false}};
    for (const auto& [commands, sameThread] : rows) {
        Steered client(commands);
        client.signIn();
        EXPECT_EQ(calls.signIns, 1);
        EXPECT_EQ(calls.thread == GetCurrentThreadId(), sameThread);
        client.logout();
        EXPECT_EQ(client.getAccessToken() + client.getCASCookie(), L"");
        EXPECT_EQ(calls.signOuts, 1);
        EXPECT_EQ(calls.thread == GetCurrentThreadId(), sameThread);
    }
}

TEST(Callbacks, PassNullOnAsNull) {
    struct {
        void (*login)();
        void (*logout)();
        const wchar_t* handlers;
    } const rows[] = {{nullptr, nullptr, L"none"},
                      {onSignIn, nullptr, L"login"},
                      {nullptr, onSignOut, L"logout"},
                      {onSignIn, onSignOut, L"login logout"}};
    const Steered commands(L"getKelpaURL=handlers");
    for (const auto& row : rows) {
        EXPECT_EQ(LoginManagerClient(row.login, row.logout, uiLangFallback).getKelpaURL(), row.handlers);
    }
}

TEST(Destruction, DisposesTheManagerOnceAndSignsNobodyOut) {
    {
        Steered client(L"Dispose=event");
        client.signIn();
        EXPECT_EQ(calls.signOuts, 0);
    }
    EXPECT_EQ(calls.signOuts, 1);
    { Steered unused(L"constructor=throw System.TimeoutException"); }
    {
        Steered client(L"Dispose=throw System.TimeoutException");
        client.signIn();
    }
    {
        Steered client(L"");
        client.signIn();
    }
    EXPECT_EQ(calls.signOuts, 0);
}

TEST(Resources, AreSeparatePerClientAndReleased) {
    const int languages[] = {INT_MIN, -1, 0, 1, 12, 13, 14, INT_MAX};
    const int sent[] = {0, 0, 0, 1, 12, 13, 0, 0};
    {
        std::vector<std::unique_ptr<LoginManagerClient>> clients;
        for (int i = 0; i < 40; ++i) {
            clients.push_back(
                std::make_unique<LoginManagerClient>(nullptr, nullptr, static_cast<uiLang>(languages[i % 8])));
            clients.back()->stopDNMListener();
        }
        for (int i = 0; i < 40; ++i) {
            EXPECT_EQ(clients[i]->getmyAppsURL(), L"https://apps.example.com/" + std::to_wstring(sent[i % 8]));
        }
    }
    // The collector mistakes some leftover values on a stack for references.
    EXPECT_LT(std::stoi(Steered(L"getTenantName=alive").getTenantName()), 20);
}

TEST(Resources, StayFlatOverManyCallsFailuresAndClients) {
    struct Usage {
        std::uintptr_t handles;
        SIZE_T bytes;
        Usage() {
            handles = openhandles();
            PROCESS_MEMORY_COUNTERS memory = {};
            GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
            bytes = memory.WorkingSetSize;
        }
    };
    const auto round = [] {
        Steered client(L"getTenantId=throw System.TimeoutException");
        client.signIn();
        const std::wstring text(1000, L'x');
        for (int i = 0; i < 10000; ++i) {
            client.formatAccessUrl(text);
            client.isDunmorePlatformTokenExpired(text);
            if (i % 10 == 0) {
                resultOf([&] { return client.getTenantId(); });
                Steered(L"").signIn();
            }
        }
        Steered(L"getTenantName=collect").getTenantName();
    };
    round();
    round();
    const Usage before;
    round();
    const Usage after;
    EXPECT_LE(after.handles, before.handles + 2);
    // One string leaked per call would be 20 MB; the collector's own fluctuation is half a megabyte.
    EXPECT_LT(after.bytes, before.bytes + 2 * 1024 * 1024);
}

static_assert(!std::is_copy_constructible<LoginManagerClient>::value, "two clients would own one manager");
static_assert(std::is_nothrow_move_constructible<LoginResponse>::value, "records are moved, not copied");

}  // namespace
