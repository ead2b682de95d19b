// The plain functions as a host in C calls them, and more than one copy of the library in a process.

#include <gmock/gmock.h>
#include <windows.h>

#include <oleauto.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "orvelloginc.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

namespace {

orvellogin_failure newFailure(int size = sizeof(orvellogin_failure)) {
    orvellogin_failure failure;
    std::memset(&failure, 0xAA, sizeof failure);  // as on a caller's stack
    failure.size = size;
    return failure;
}

struct Response : orvellogin_response {
    Response() {
        std::memset(this, 0xAA, sizeof *this);
        size = sizeof *this;
    }
    ~Response() { orvellogin_clearResponse(this); }
};

struct Client {
    explicit Client(const wchar_t* commands, orvellogin_callback login = nullptr, void* loginContext = nullptr,
                    orvellogin_callback logout = nullptr, void* logoutContext = nullptr) {
        SetEnvironmentVariableW(L"ORVEL_STANDIN", commands);
        EXPECT_EQ(orvellogin_create(login, loginContext, logout, logoutContext, 0, &client, nullptr), orvellogin_ok);
    }
    ~Client() { orvellogin_destroy(client); }

    void signIn() {
        Response user;
        orvellogin_loginWithPassword(client, L"ada@example.com", -1, L"analytical engine", -1, &user, nullptr);
        orvellogin_clearResponse(&user);
        EXPECT_EQ(user.userName, nullptr) << "so that it can be cleared again";
    }

    orvellogin_client* client;
};

std::wstring taken(wchar_t* text) {
    const std::wstring units = text ? std::wstring(text, SysStringLen(text)) : L"null";
    orvellogin_free(text);
    return units;
}

TEST(Functions, HaveTheVersionOfTheHeader) {
    EXPECT_EQ(orvellogin_version(), ORVELLOGIN_VERSION);
    EXPECT_EQ(std::string(ORVELLOGIN_VERSION_TEXT), std::to_string(ORVELLOGIN_VERSION / 10000) + "." +
                                                        std::to_string(ORVELLOGIN_VERSION / 100 % 100) + "." +
                                                        std::to_string(ORVELLOGIN_VERSION % 100));
    EXPECT_STREQ(ORVELLOGIN_VERSION_TEXT, PROJECT_VERSION);
}

TEST(Functions, RefuseBadCalls) {
    const Client good(L"constructor=throw System.TimeoutException");  // reaching the manager fails differently
    orvellogin_client* const c = good.client;
    wchar_t* text;
    int number;
    orvellogin_client* made;
    Response user, small;
    --small.size;
    const struct {
        const char* name;
        std::function<orvellogin_result(orvellogin_failure*)> call;
    } rows[] = {
        {"text, no client", [&](auto* f) { return orvellogin_getTenantName(nullptr, &text, f); }},
        {"text, no place", [&](auto* f) { return orvellogin_getTenantName(c, nullptr, f); }},
        {"text of text, no client", [&](auto* f) { return orvellogin_getLoginTicket(nullptr, L"", 0, &text, f); }},
        {"text of text, no text", [&](auto* f) { return orvellogin_getLoginTicket(c, nullptr, -1, &text, f); }},
        {"text of text, length", [&](auto* f) { return orvellogin_formatAccessUrl(c, L"u", -2, &text, f); }},
        {"nothing, no client", [&](auto* f) { return orvellogin_logout(nullptr, f); }},
        {"test, no place", [&](auto* f) { return orvellogin_isDunmorePlatformTokenExpired(c, L"", 0, nullptr, f); }},
        {"test, no client",
         [&](auto* f) { return orvellogin_isDunmorePlatformTokenExpired(nullptr, L"", 0, &number, f); }},
        {"test, no text", [&](auto* f) { return orvellogin_isDunmorePlatformTokenExpired(c, nullptr, 1, &number, f); }},
        {"second text", [&](auto* f) { return orvellogin_DunmoreLoginBrowser(c, L"", 0, nullptr, 1, f); }},
        {"record, no client", [&](auto* f) { return orvellogin_login(nullptr, &user, f); }},
        {"record, no place", [&](auto* f) { return orvellogin_login(c, nullptr, f); }},
        {"record, size", [&](auto* f) { return orvellogin_getLoggedInUser(c, 0, &small, f); }},
        {"create, no place",
         [&](auto* f) { return orvellogin_create(nullptr, nullptr, nullptr, nullptr, 0, nullptr, f); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        text = const_cast<wchar_t*>(L"unset");
        number = 7;
        orvellogin_failure failure = newFailure();
        EXPECT_EQ(row.call(&failure), orvellogin_badCall);
        EXPECT_EQ(failure.code, -1);
        EXPECT_EQ(failure.hresult, E_INVALIDARG);
        EXPECT_STRNE(failure.text, "");
        orvellogin_clearFailure(&failure);
        EXPECT_EQ(row.call(nullptr), orvellogin_badCall) << "without a structure for the failure";
        EXPECT_TRUE(!text || text == std::wstring(L"unset"));
        EXPECT_TRUE(number == 0 || number == 7);
    }
    orvellogin_failure tooSmall = newFailure(offsetof(orvellogin_failure, text) - 1);
    EXPECT_EQ(orvellogin_create(nullptr, nullptr, nullptr, nullptr, 0, &made, &tooSmall), orvellogin_badCall);
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(tooSmall.code, static_cast<int>(0xAAAAAAAA));
    orvellogin_destroy(nullptr);
    orvellogin_free(nullptr);
    orvellogin_clearFailure(nullptr);
    orvellogin_clearResponse(nullptr);
    orvellogin_setOrvelOfflineMode(nullptr, 1);
    EXPECT_EQ(orvellogin_isOrvelOfflineMode(nullptr), 0);
}

TEST(Functions, DescribeAFailureInTheFieldsThatTheCallerKnows) {
    const Client client(L"getTenantId=throw System.TimeoutException κείμενο;Logout=status 4");
    wchar_t* text;
    constexpr int whole = sizeof(orvellogin_failure);
    for (const int size : {whole, whole + 4, int(offsetof(orvellogin_failure, text))}) {
        orvellogin_failure failure = newFailure(size);
        char* const unset = failure.text;
        EXPECT_EQ(orvellogin_getTenantId(client.client, &text, &failure), orvellogin_failed);
        EXPECT_EQ(text, nullptr);
        EXPECT_EQ(failure.code, -1);
        EXPECT_EQ(static_cast<unsigned>(failure.hresult), 0x80131505u);  // COR_E_TIMEOUT
        EXPECT_STREQ(failure.typeName, L"System.TimeoutException");
        EXPECT_STREQ(failure.message, L"κείμενο");
        if (size >= whole) {
            EXPECT_STREQ(failure.text, "System.TimeoutException: κείμενο");
        } else {
            EXPECT_EQ(failure.text, unset);
        }
        orvellogin_clearFailure(&failure);
        EXPECT_EQ(failure.message, nullptr);
        EXPECT_EQ(orvellogin_logout(client.client, &failure), orvellogin_reported);
        EXPECT_EQ(failure.code, 4);
        EXPECT_EQ(failure.hresult, 0);
        EXPECT_STREQ(failure.typeName, L"");
        orvellogin_clearFailure(&failure);
        failure = newFailure(size);
        EXPECT_EQ(orvellogin_getSpaceURL(client.client, &text, &failure), orvellogin_ok);
        EXPECT_EQ(taken(text), L"https://space.example.com/");
        EXPECT_EQ(failure.code, 0);
        EXPECT_EQ(failure.message, nullptr);
        EXPECT_EQ(failure.text, size >= whole ? nullptr : unset);
    }
}

TEST(Functions, TakeTextByLengthOrUpToAZeroUnit) {
    const Client client(L"formatAccessURL=echo");
    const std::wstring longer(300, L'a'), other(300, L'b');
    const std::tuple<const wchar_t*, int, std::wstring> rows[] = {{L"ab\0c", -1, L"ab"},
                                                                  {L"ab\0c", 4, std::wstring(L"ab\0c", 4)},
                                                                  {L"abc", 1, L"a"},
                                                                  {nullptr, 0, L""},
                                                                  {longer.c_str(), -1, longer},
                                                                  {other.c_str(), 300, other}};
    wchar_t* text;
    std::vector<std::pair<wchar_t*, std::wstring>> texts;  // all kept until the last was returned
    for (const auto& [argument, length, echo] : rows) {
        ASSERT_EQ(orvellogin_formatAccessUrl(client.client, argument, length, &text, nullptr), orvellogin_ok);
        EXPECT_EQ(text[SysStringLen(text)], 0);
        texts.emplace_back(text, echo);
    }
    for (const auto& [returned, echo] : texts) {
        EXPECT_EQ(taken(returned), echo);
    }
}

int ORVELLOGIN_CALL receive(wchar_t** place, const wchar_t* units, int length) {
    reinterpret_cast<std::wstring*>(place)->assign(units, length);
    return 1;
}

TEST(Functions, GiveEachTextToTheReceiver) {
    const Client client(L"getTenantName=null");
    orvellogin_setReceiver(client.client, receive);
    std::wstring text = L"before";
    const auto place = reinterpret_cast<wchar_t**>(&text);
    orvellogin_getTenantName(client.client, place, nullptr);
    EXPECT_EQ(text, L"");
    orvellogin_getTenantId(client.client, place, nullptr);
    EXPECT_EQ(text, L"R1132100");
    orvellogin_setOrvelOfflineMode(client.client, 5);
    EXPECT_EQ(orvellogin_isOrvelOfflineMode(client.client), 1);
    orvellogin_getTenantId(client.client, place, nullptr);
    EXPECT_EQ(text, L"");
}

TEST(Functions, LeaveARecordEmptyAfterAFailure) {
    const Client good(L"login=status 4;getLoggedInUser=status 4");
    orvellogin_client* const c = good.client;
    const std::function<orvellogin_result(orvellogin_response*)> calls[] = {
        [&](auto* user) { return orvellogin_login(c, user, nullptr); },
        [&](auto* user) { return orvellogin_loginWithPassword(c, L"u", -1, L"p", -1, user, nullptr); },
        [&](auto* user) { return orvellogin_getLoggedInUser(c, 0, user, nullptr); }};
    for (const auto& call : calls) {
        Response user;
        EXPECT_EQ(call(&user), orvellogin_reported);
        EXPECT_EQ(user.statusDescription, nullptr);
        EXPECT_EQ(user.domainName, nullptr);
    }
}

TEST(Functions, SignInAgainForAnyFlagButZero) {
    Client client(L"");
    client.signIn();
    for (const int flag : {1, -1, 2}) {
        Response user;
        user.size += 4;  // with a field of a later header
        orvellogin_getLoggedInUser(client.client, flag, &user, nullptr);
        EXPECT_STREQ(user.statusDescription, L"Ada signed in again");
    }
}

void ORVELLOGIN_CALL count(void* counter) {
    ++*static_cast<int*>(counter);
}

TEST(Callbacks, GetTheContextsOfTheManagerCreatedLast) {
    int counters[3] = {};
    Client first(L"", count, &counters[0], count, &counters[1]);
    const auto signInAndOut = [&] {
        first.signIn();
        orvellogin_logout(first.client, nullptr);
    };
    signInAndOut();
    {
        const Client second(L"", count, &counters[0], count, &counters[2]);  // differs in one context
        signInAndOut();                                                      // the second has no manager yet
        orvellogin_stopDNMListener(second.client, nullptr);
    }
    signInAndOut();
    EXPECT_THAT(counters, testing::ElementsAre(3, 2, 1));
    const Client silent(L"");
    orvellogin_stopDNMListener(silent.client, nullptr);
    signInAndOut();
    EXPECT_THAT(counters, testing::ElementsAre(3, 2, 1));
}

template <class Function>
Function* function(HMODULE module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

TEST(Copies, CanBeLoadedAndUnloadedBesideTheCompilersRuntime) {
    for (int round = 0; round < 50; ++round) {
        const HMODULE copy = LoadLibraryW(COPY);
        EXPECT_EQ(function<decltype(orvellogin_logout)>(copy, "orvellogin_logout")(nullptr, nullptr),
                  orvellogin_badCall)
            << "thrown and caught inside";
        FreeLibrary(copy);
        EXPECT_EQ(GetModuleHandleW(COPY), nullptr);
        EXPECT_THROW(throw std::runtime_error("the host's own"), std::exception);
    }
}

TEST(Copies, FindTheirFilesUnderALongPath) {
    namespace fs = std::filesystem;
    const temporary_folder temporary;
    const fs::path folder = L"\\\\?\\" + (temporary.path / std::wstring(240, L'x')).native();
    fs::create_directory(folder);
    fs::copy_file(COPY, folder / L"copy.dll");
    const HMODULE copy = LoadLibraryW((folder / L"copy.dll").c_str());
    orvellogin_client* client;
    orvellogin_failure failure = newFailure();
    function<decltype(orvellogin_create)>(copy, "orvellogin_create")(nullptr, nullptr, nullptr, nullptr, 0, &client,
                                                                     &failure);
    EXPECT_NE(std::string(failure.text).find("xx\\OrvelLoginClientCLR.dll"), std::string::npos) << failure.text;
    FreeLibrary(copy);
    fs::remove(folder / L"copy.dll");
    fs::remove(folder);
}

// The members of the exported class are called like __fastcall functions whose second argument is not used.
using Construct = void __fastcall(void*, int, void (*)(), void (*)(), int);
using Member = void __fastcall(void*, int);
const char* const construct = "_ZN18LoginManagerClientC1EPFvvES1_6uiLang";
const char* const stopDNMListener = "_ZN18LoginManagerClient15stopDNMListenerEv";

TEST(Copies, CanBeUnloadedUntilTheManagedSideMayCallBack) {
    for (const bool withManager : {false, false, true, true}) {
        // The path is one that the runtime itself would reject.
        const HMODULE library =
            LoadLibraryW((L"\\\\?\\" + (program::ownfolder() / L"orvellogin.dll").native()).c_str());
        alignas(8) unsigned char client[64];
        function<Construct>(library, construct)(client, 0, nullptr, nullptr, 0);
        if (withManager) {
            function<Member>(library, stopDNMListener)(client, 0);
        }
        function<Member>(library, "_ZN18LoginManagerClientD1Ev")(client, 0);
        FreeLibrary(library);
        EXPECT_EQ(GetModuleHandleW(L"orvellogin.dll") != nullptr, withManager);
    }
}

// For the test below, in a process of its own.
TEST(Copies, DISABLED_Start) {
    const HMODULE copy = LoadLibraryW(COPY);
    // A thread that takes its time and is then terminated during its start.
    const std::wstring lock = L"Local\\orvellogin-runtime-" + std::to_wstring(GetCurrentProcessId());
    HANDLE mutex;
    std::atomic<int> ready{0};
    std::atomic<bool> ended{false};
    std::thread terminated([&] {
        mutex = CreateMutexW(nullptr, TRUE, lock.c_str());
        ++ready;
        Sleep(300);
        ended = true;
    });
    const auto start = [&](decltype(orvellogin_create)* create, decltype(orvellogin_stopDNMListener)* stop) {
        for (++ready; ready < 3;) {}
        orvellogin_client* client;
        EXPECT_EQ(create(nullptr, nullptr, nullptr, nullptr, 0, &client, nullptr), orvellogin_ok);
        EXPECT_TRUE(ended);
        EXPECT_EQ(stop(client, nullptr), orvellogin_ok);
    };
    std::thread one([&] { start(orvellogin_create, orvellogin_stopDNMListener); });
    start(function<decltype(orvellogin_create)>(copy, "orvellogin_create"),
          function<decltype(orvellogin_stopDNMListener)>(copy, "orvellogin_stopDNMListener"));
    one.join();
    terminated.join();
    CloseHandle(mutex);
    EXPECT_EQ(OpenMutexW(SYNCHRONIZE, FALSE, lock.c_str()), nullptr) << "left open";
}

TEST(Copies, StartTheRuntimeAtTheSameMoment) {
    const temporary_folder folder;
    for (int run = 0; run < 10; ++run) {  // without the process-wide lock, one in five crashes here
        program child(L"functions_test.exe", L"--gtest_also_run_disabled_tests --gtest_filter=*_Start", folder.path);
        EXPECT_EQ(child.wait().status, 0u) << run;
    }
}

}  // namespace
