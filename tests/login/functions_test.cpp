// The plain functions as a host in C calls them, and more than one copy of the library in a process.
//
// Built and run three times: with the header and the DLL of this version, with a header that has one field more in each
// structure (LATER_HEADER), and, in the folder "copy", on a DLL that was built with that header.

#include <gmock/gmock.h>
#include <windows.h>

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

struct Client {
    explicit Client(const wchar_t* commands, orvellogin_callback login = nullptr, void* loginContext = nullptr,
                    orvellogin_callback logout = nullptr, void* logoutContext = nullptr) {
        SetEnvironmentVariableW(L"ORVEL_STANDIN", commands);
        orvellogin_options options = {};
        options.size = sizeof options;
        options.onLogin = login;
        options.loginContext = loginContext;
        options.onLogout = logout;
        options.logoutContext = logoutContext;
        EXPECT_EQ(orvellogin_create(&options, &client), ORVELLOGIN_OK);
    }
    ~Client() { orvellogin_destroy(client); }
    operator orvellogin_client*() const { return client; }

    const orvellogin_response& signIn() const {
        const orvellogin_response* user;
        EXPECT_EQ(orvellogin_loginWithPassword(client, L"ada@example.com", -1, L"analytical engine", -1, &user),
                  ORVELLOGIN_OK);
        return *user;
    }

    orvellogin_client* client;
};

std::wstring copied(const orvellogin_string& string) {
    EXPECT_EQ(string.units[string.length], 0);
    return std::wstring(string.units, string.length);
}

template <class Function>
std::wstring copied(Function function, orvellogin_client* client) {
    orvellogin_string result;
    EXPECT_EQ(function(client, &result), ORVELLOGIN_OK);
    return copied(result);
}

TEST(Functions, RefuseBadCalls) {
    const Client c(L"constructor=throw System.TimeoutException");  // reaching the manager fails differently
    orvellogin_string string;
    const orvellogin_response* user;
    int number;
    const struct {
        const char* name;
        orvellogin_client* client;
        std::function<orvellogin_result()> call;
    } rows[] = {
        {"string, no place", c, [&] { return orvellogin_getTenantName(c, nullptr); }},
        {"string of string, null", c, [&] { return orvellogin_getLoginTicket(c, nullptr, -1, &string); }},
        {"string of string, length", c, [&] { return orvellogin_formatAccessUrl(c, L"u", -2, &string); }},
        {"test, no place", c, [&] { return orvellogin_isDunmorePlatformTokenExpired(c, L"", 0, nullptr); }},
        {"second string", c, [&] { return orvellogin_DunmoreLoginBrowser(c, L"", 0, nullptr, 1); }},
        {"record, no place", c, [&] { return orvellogin_login(c, nullptr); }},
        {"record, null", c, [&] { return orvellogin_loginWithPassword(c, nullptr, 1, L"", 0, &user); }},
        {"string", nullptr, [&] { return orvellogin_getTenantName(nullptr, &string); }},
        {"nothing", nullptr, [] { return orvellogin_logout(nullptr); }},
        {"test", nullptr, [&] { return orvellogin_isDunmorePlatformTokenExpired(nullptr, L"", 0, &number); }},
        {"record", nullptr, [&] { return orvellogin_login(nullptr, &user); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        string = {L"unset", 5};
        user = reinterpret_cast<const orvellogin_response*>(&user);
        number = 7;
        orvellogin_forget(c);
        EXPECT_EQ(row.call(), ORVELLOGIN_BAD_CALL);
        EXPECT_THAT(copied(string), testing::AnyOf(L"", L"unset"));
        EXPECT_THAT(user, testing::AnyOf(nullptr, reinterpret_cast<const orvellogin_response*>(&user)));
        EXPECT_THAT(number, testing::AnyOf(0, 7));
        const orvellogin_failure& failure = *orvellogin_lastFailure(row.client);
        EXPECT_EQ(failure.result, ORVELLOGIN_BAD_CALL);
        EXPECT_EQ(failure.code, -1);
        EXPECT_EQ(failure.hresult, E_INVALIDARG);
        EXPECT_THAT(copied(failure.message), testing::HasSubstr(L" is null"));
        EXPECT_EQ(copied(failure.message), std::wstring(failure.text, failure.text + std::strlen(failure.text)));
        EXPECT_EQ(orvellogin_lastFailure(c)->result, row.client ? ORVELLOGIN_BAD_CALL : ORVELLOGIN_OK);
    }
    EXPECT_EQ(orvellogin_create(nullptr, nullptr), ORVELLOGIN_BAD_CALL);
    orvellogin_destroy(nullptr);
    orvellogin_forget(nullptr);
    orvellogin_withdrawCallbacks(nullptr);
    orvellogin_setOrvelOfflineMode(nullptr, 1);
    EXPECT_EQ(orvellogin_isOrvelOfflineMode(nullptr), 0);
    orvellogin_setOrvelOfflineMode(c, 5);
    EXPECT_EQ(orvellogin_isOrvelOfflineMode(c), 1);
}

void ORVELLOGIN_CALL count(void* counter) {
    ++*static_cast<int*>(counter);
}

#ifdef LATER_HEADER
constexpr int fieldsOfHeader = 1;
#define LAST_FIELD later
#else
constexpr int fieldsOfHeader = 0;
#define LAST_FIELD domainName
#endif
const std::filesystem::path copiedLibrary = program::ownfolder() / L"copy" / L"orvelloginc.dll";
const int fieldsOfDll = program::ownfolder().filename() == L"copy" ? 1 : 0;

template <class Structure>
const int sizeInDll = sizeof(Structure) + (fieldsOfDll - fieldsOfHeader) * static_cast<int>(sizeof(void*));

TEST(Versions, WithMoreOrFewerFieldsWorkTogether) {
    SetEnvironmentVariableW(L"ORVEL_STANDIN", nullptr);
    int calls;
    orvellogin_options options = {};
    options.language = 5;
    options.onLogin = count;
    options.loginContext = &calls;
    const int known = sizeInDll<orvellogin_options>;
    const struct {
        int size;
        int set;  // a byte that is not 0
        orvellogin_result result;
        const wchar_t* language;
        int calls;
    } rows[] = {
        {-1, 0, ORVELLOGIN_BAD_CALL, L"", 0},
        {sizeof(int) - 1, 0, ORVELLOGIN_BAD_CALL, L"", 0},
        {sizeof(int), 0, ORVELLOGIN_OK, L"0", 0},
        {offsetof(orvellogin_options, onLogin), 0, ORVELLOGIN_OK, L"5", 0},
        {offsetof(orvellogin_options, loginContext) - 1, 0, ORVELLOGIN_OK, L"5", 0},
        {offsetof(orvellogin_options, onLogout), 0, ORVELLOGIN_OK, L"5", 1},
        {known, known, ORVELLOGIN_OK, L"5", 1},
        {known + 1, 0, ORVELLOGIN_OK, L"5", 1},
        {known + 1, known, ORVELLOGIN_BAD_CALL, L"", 0},
        {4096, 4095, ORVELLOGIN_BAD_CALL, L"", 0},
        {4096, 4096, ORVELLOGIN_OK, L"5", 1},
        {4097, 0, ORVELLOGIN_BAD_CALL, L"", 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.size);
        alignas(orvellogin_options) unsigned char bytes[5000] = {};
        options.size = row.size;
        calls = 0;
        std::memcpy(bytes, &options, offsetof(orvellogin_options, onLogout));
        bytes[row.set] |= row.set ? 1 : 0;
        orvellogin_client* client;
        EXPECT_EQ(orvellogin_create(reinterpret_cast<orvellogin_options*>(bytes), &client), row.result);
        ASSERT_EQ(client != nullptr, row.result == ORVELLOGIN_OK);
        if (client) {
            EXPECT_EQ(copied(orvellogin_getmyAppsURL, client),
                      std::wstring(L"https://apps.example.com/") + row.language);
            const orvellogin_response* user;
            orvellogin_loginWithPassword(client, L"ada@example.com", -1, L"analytical engine", -1, &user);
            EXPECT_EQ(calls, row.calls);
            EXPECT_EQ(user->size, sizeInDll<orvellogin_response>);
            EXPECT_EQ(ORVELLOGIN_HAS(user, LAST_FIELD), fieldsOfDll >= fieldsOfHeader);
            EXPECT_EQ(orvellogin_lastFailure(client)->size, sizeInDll<orvellogin_failure>);
            EXPECT_EQ(copied(user->domainName), L"example.com");
            orvellogin_destroy(client);
        }
    }
}

TEST(Results, DescribeAFailureUntilTheNextCall) {
    const Client client(L"getTenantId=throw System.TimeoutException κείμενο;Logout=status 4;getLoggedInUser=status 3");
    orvellogin_string string = {L"unset", 5};
    EXPECT_EQ(orvellogin_getTenantId(client, &string), ORVELLOGIN_FAILED);
    EXPECT_EQ(copied(string), L"");
    const orvellogin_failure& failure = *orvellogin_lastFailure(client);
    EXPECT_EQ(failure.result, ORVELLOGIN_FAILED);
    EXPECT_EQ(failure.code, -1);
    EXPECT_STREQ(failure.text, "System.TimeoutException: κείμενο");
    EXPECT_EQ(orvellogin_logout(client), ORVELLOGIN_MANAGER_ERROR);
    EXPECT_EQ(failure.result, ORVELLOGIN_MANAGER_ERROR);
    EXPECT_EQ(failure.code, 4);
    EXPECT_EQ(failure.hresult, 0);
    EXPECT_EQ(copied(failure.typeName), L"");
    EXPECT_STREQ(failure.text, "the login manager reported error 4");
    const orvellogin_response* user = &client.signIn();
    EXPECT_EQ(orvellogin_getLoggedInUser(client, 0, &user), ORVELLOGIN_MANAGER_ERROR);
    EXPECT_EQ(user, nullptr);
    EXPECT_EQ(copied(orvellogin_getSpaceURL, client), L"https://space.example.com/");
    EXPECT_EQ(failure.result, ORVELLOGIN_OK);
    EXPECT_EQ(failure.code, -1);
    EXPECT_EQ(copied(failure.message), L"");
    EXPECT_STREQ(failure.text, "");
}

TEST(Results, MayBeArgumentsOfTheNextCall) {
    const Client client(L"formatAccessURL=echo;getLoginTicket=echo");
    const std::wstring longest(300, L'a');
    const std::tuple<const wchar_t*, int, std::wstring> rows[] = {{L"ab\0c", -1, L"ab"},
                                                                  {L"ab\0c", 4, std::wstring(L"ab\0c", 4)},
                                                                  {L"abc", 1, L"a"},
                                                                  {nullptr, 0, L""},
                                                                  {longest.c_str(), 255, std::wstring(255, L'a')},
                                                                  {longest.c_str(), 256, std::wstring(256, L'a')},
                                                                  {longest.c_str(), -1, longest}};
    for (const auto& [argument, length, echo] : rows) {
        orvellogin_string string;
        ASSERT_EQ(orvellogin_formatAccessUrl(client, argument, length, &string), ORVELLOGIN_OK);
        EXPECT_EQ(copied(string), echo);
        ASSERT_EQ(orvellogin_getLoginTicket(client, string.units, string.length, &string), ORVELLOGIN_OK);
        EXPECT_EQ(copied(string), echo);
    }
}

TEST(Results, AreWipedByTheNextCallAndOnRequest) {
    const Client client(L"getTenantId=throw System.TimeoutException secret");
    const std::function<void()> wipings[] = {[&] { orvellogin_forget(client); },
                                             [&] { orvellogin_stopDNMListener(client); }};
    for (const auto& wipe : wipings) {
        orvellogin_string string;
        const std::function<orvellogin_string()> results[] = {
            [&] { return orvellogin_getTenantName(client, &string), string; },
            [&] { return client.signIn().statusDescription; }, [&] { return client.signIn().domainName; },
            [&] { return orvellogin_getTenantId(client, &string), orvellogin_lastFailure(client)->message; }};
        for (const auto& result : results) {
            const orvellogin_string units = result();
            EXPECT_GT(units.length, 5);
            orvellogin_setOrvelOfflineMode(client, orvellogin_isOrvelOfflineMode(client));
            orvellogin_lastFailure(client);
            EXPECT_EQ(std::wstring(units.units).size(), static_cast<std::size_t>(units.length));
            wipe();
            EXPECT_EQ(std::wstring(units.units, units.length), std::wstring(units.length, 0));
        }
    }
}

TEST(Results, OfCallsInACallbackLastUntilTheOuterCallEnds) {
    static orvellogin_client* current;
    static orvellogin_string inner;
    const auto call = [](void*) ORVELLOGIN_CALL {
        EXPECT_EQ(orvellogin_logout(nullptr), ORVELLOGIN_BAD_CALL);
        EXPECT_EQ(orvellogin_getTenantName(current, nullptr), ORVELLOGIN_BAD_CALL);
        EXPECT_EQ(orvellogin_getTenantName(current, &inner), ORVELLOGIN_OK);
        EXPECT_EQ(copied(inner), L"Example Works");
    };
    const Client client(L"", call);
    current = client;
    EXPECT_EQ(copied(client.signIn().userName), L"ada@example.com");
    EXPECT_EQ(std::wstring(inner.units, 13), std::wstring(13, 0));
    EXPECT_EQ(orvellogin_lastFailure(client)->result, ORVELLOGIN_OK);
}

TEST(Callbacks, GetTheContextsOfTheManagerCreatedLast) {
    int counters[3] = {};
    const Client first(L"", count, &counters[0], count, &counters[1]);
    const auto signInAndOut = [&] {
        first.signIn();
        orvellogin_logout(first);
    };
    signInAndOut();
    {
        const Client second(L"", count, &counters[0], count, &counters[2]);  // differs in one context
        signInAndOut();                                                      // the second has no manager yet
        orvellogin_stopDNMListener(second);
        orvellogin_withdrawCallbacks(first);  // these are not the ones that are called
    }
    signInAndOut();
    EXPECT_THAT(counters, testing::ElementsAre(3, 2, 1));
    const Client silent(L"");
    orvellogin_stopDNMListener(silent);
    signInAndOut();
    EXPECT_THAT(counters, testing::ElementsAre(3, 2, 1));
}

TEST(Callbacks, CanBeWithdrawnWhileTheyRun) {
    static std::atomic<int> begun, ended;
    static orvellogin_client* current;
    const auto slow = [](void*) ORVELLOGIN_CALL {
        ++begun;
        Sleep(200);
        ++ended;
    };
    const auto withdrawing = [](void*) ORVELLOGIN_CALL { orvellogin_withdrawCallbacks(current); };
    const Client first(L"", count, nullptr, count, nullptr);
    orvellogin_stopDNMListener(first);
    const Client second(L"", slow, nullptr, withdrawing, nullptr);
    current = second;
    orvellogin_stopDNMListener(second);
    std::thread other([&] { first.signIn(); });
    while (!begun) {}
    orvellogin_withdrawCallbacks(second);
    EXPECT_EQ(ended, 1) << "withdrawn before the callback has returned";
    other.join();
    first.signIn();
    EXPECT_EQ(begun, 1);

    const Client third(L"", nullptr, nullptr, withdrawing, nullptr);
    current = third;
    orvellogin_stopDNMListener(third);
    first.signIn();
    orvellogin_logout(first);  // ends, although the callback that is running is withdrawn
}

TEST(Callbacks, AreOfOneClientIfTwoManagersAreCreatedAtOnce) {
    int observed = 0, calls[2] = {};
    const Client observer(L"", count, &observed, count, &observed);
    orvellogin_stopDNMListener(observer);
    for (int round = 0; round < 300; ++round) {
        const Client one(L"", count, &calls[0]), two(L"", nullptr, nullptr, count, &calls[1]);
        std::atomic<int> ready{0};
        const auto create = [&](orvellogin_client* client) {
            for (++ready; ready < 2;) {}
            orvellogin_stopDNMListener(client);
        };
        std::thread other([&] { create(one); });
        create(two);
        other.join();
        observer.signIn();
        orvellogin_logout(observer);
        ASSERT_EQ(calls[0] + calls[1], round + 1) << "the pair of neither, or of both";
    }
    EXPECT_EQ(observed, 0);
}

template <class Function>
Function* function(HMODULE module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

TEST(Copies, FailTheSameWayAgainWithoutTheirFilesAndCanBeUnloaded) {
    namespace fs = std::filesystem;
    const temporary_folder temporary;
    const fs::path folder = L"\\\\?\\" + (temporary.path / std::wstring(240, L'x')).native();
    fs::create_directory(folder);
    fs::copy_file(copiedLibrary, folder / L"copy.dll");
    for (int round = 0; round < 50; ++round) {
        const HMODULE copy = LoadLibraryW((folder / L"copy.dll").c_str());
        orvellogin_client* client;
        EXPECT_EQ(function<decltype(orvellogin_create)>(copy, "orvellogin_create")(nullptr, &client), ORVELLOGIN_FAILED)
            << "thrown and caught inside";
        const auto* failure = function<decltype(orvellogin_lastFailure)>(copy, "orvellogin_lastFailure")(client);
        const std::string text = failure->text;
        EXPECT_THAT(text, testing::HasSubstr("xx\\OrvelLoginClientCLR.dll"));
        function<decltype(orvellogin_forget)>(copy, "orvellogin_forget")(client);
        EXPECT_EQ(function<decltype(orvellogin_logout)>(copy, "orvellogin_logout")(client), ORVELLOGIN_FAILED);
        EXPECT_EQ(failure->result, ORVELLOGIN_FAILED);
        EXPECT_EQ(failure->text, text);
        function<decltype(orvellogin_destroy)>(copy, "orvellogin_destroy")(client);
        FreeLibrary(copy);
        EXPECT_EQ(GetModuleHandleW(L"copy.dll"), nullptr);
        EXPECT_THROW(throw std::runtime_error("the host's own"), std::exception) << "beside the compiler's runtime";
    }
    fs::remove(folder / L"copy.dll");
    fs::remove(folder);
}

// The members of the exported class are called like __fastcall functions whose second argument is not used.
using Construct = void __fastcall(void*, int, void (*)(), void (*)(), int);
using Member = void __fastcall(void*, int);
const char* const construct = "_ZN18LoginManagerClientC1EPFvvES1_6uiLang";

TEST(Copies, StayLoadedOnceAClientWasConstructed) {
    // The path is one that the runtime itself would reject.
    const HMODULE library = LoadLibraryW((L"\\\\?\\" + (program::ownfolder() / L"orvellogin.dll").native()).c_str());
    alignas(8) unsigned char client[64];
    function<Construct>(library, construct)(client, 0, nullptr, nullptr, 0);
    function<Member>(library, "_ZN18LoginManagerClientD1Ev")(client, 0);
    FreeLibrary(library);
    EXPECT_NE(GetModuleHandleW(L"orvellogin.dll"), nullptr);
}

// For the test below, in a process of its own.
TEST(Copies, DISABLED_Start) {
    const HMODULE copy = LoadLibraryW(copiedLibrary.c_str());
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
        EXPECT_EQ(create(nullptr, &client), ORVELLOGIN_OK);
        EXPECT_TRUE(ended);
        EXPECT_EQ(stop(client), ORVELLOGIN_OK);
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
