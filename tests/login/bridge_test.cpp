// The rules of the native side, with a fake managed part that creates no manager.

#include <gmock/gmock.h>

#include <algorithm>
#include <climits>
#include <cwchar>
#include <functional>
#include <new>
#include <string>

#include "login/LoginManagerClient.h"
#include "login/LoginManagerClientCLR.h"
#include "login/hosting/LibraryFile.h"
#include "login/hosting/RuntimeFailure.h"
#include "login/hosting/Wiping.h"
#include "result_of.h"

using namespace OrvelLoginClientCLR;

namespace {

// A string as the managed part fills it in.
struct StringLayout {
    wchar_t* bstr;
    std::int32_t length;
    wchar_t buffer[256];
};
static_assert(sizeof(StringLayout) == sizeof(ManagedString), "the same layout");

void fill(ManagedString& text, const wchar_t* value) {
    auto& layout = reinterpret_cast<StringLayout&>(text);
    layout.length = static_cast<std::int32_t>(std::wcslen(value));
    std::wmemcpy(layout.buffer, value, static_cast<std::size_t>(layout.length));
}

std::int32_t createdManager = 0;
const wchar_t* seenSecret = nullptr;

ManagerMembers fakeMembers() {
    ManagerMembers members;  // calling any other member ends the test
    members.create.call = [](ManagerHandle, const StringArgument*, const StringArgument*, void* result,
                             ManagedFailure*) -> std::int32_t {
        static_cast<ManagedCreation*>(result)->manager = createdManager;
        return 0;
    };
    members.dispose.call = [](ManagerHandle, const StringArgument*, const StringArgument*, void*,
                              ManagedFailure*) -> std::int32_t { return 0; };
    members.stopDNMListener.call = [](ManagerHandle manager, const StringArgument*, const StringArgument*, void*,
                                      ManagedFailure*) -> std::int32_t { return manager == 0 ? 0 : 1; };
    members.loginWithPassword.call = [](ManagerHandle, const StringArgument*, const StringArgument* password,
                                        void* result, ManagedFailure*) -> std::int32_t {
        seenSecret = password->chars;
        auto& record = *static_cast<ManagedRecord*>(result);
        record.present = 1;
        for (ManagedString* field : {&record.statusDescription, &record.userName, &record.firstName, &record.lastName,
                                     &record.rowId, &record.aliasName}) {
            fill(*field, L"");
        }
        return 0;
    };
    members.isDunmorePlatformTokenExpired.call = [](ManagerHandle, const StringArgument* token, const StringArgument*,
                                                    void*, ManagedFailure*) -> std::int32_t {
        seenSecret = token->chars;
        return 0;
    };
    return members;
}

const char* const nullFailure = "System.ArgumentNullException: NULLPTR is not supported for this conversion.";

TEST(Bridge, WithoutAManagerEachMemberReturnsItsDocumentedResult) {
    LoginManagerClient client(nullptr, nullptr, uiLangFallback);
    struct {
        const char* member;
        std::function<std::wstring()> call;
        const char* result;
    } const rows[] = {
        {"login", [&] { return client.login().userName; }, "code 6"},
        {"login with credentials", [&] { return client.login(L"a", L"b").userName; }, "code 6"},
        {"getLoggedInUser", [&] { return client.getLoggedInUser(false).userName; }, "code 6"},
        {"logout", [&] { return client.logout(), L"returned"; }, "returned"},
        {"getAccessToken", [&] { return client.getAccessToken(); }, ""},
        {"getPlatFormURL", [&] { return client.getPlatFormURL(); }, ""},
        {"formatAccessUrl", [&] { return client.formatAccessUrl(L"url"); }, "url"},
        {"getLoginTicket", [&] { return client.getLoginTicket(L"space"); }, "space"},
        {"DunmoreLoginBrowser", [&] { return client.DunmoreLoginBrowser(L"a", L"b"), L"returned"; }, "returned"},
        {"isDunmorePlatformTokenExpired", [&] { return std::to_wstring(client.isDunmorePlatformTokenExpired(L"t")); },
         "0"},
        {"getDNMAccessToken", [&] { return client.getDNMAccessToken(); }, nullFailure},
        {"stopDNMListener", [&] { return client.stopDNMListener(), L"returned"; }, "returned"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(resultOf(row.call), row.result) << row.member;
    }
}

TEST(Strings, OfMoreThanIntMaxUnitsAreRefused) {
    EXPECT_EQ(managedLength(INT_MAX), INT_MAX);
    EXPECT_EQ(resultOf([] { return managedLength(std::size_t(INT_MAX) + 1), L""; }),
              "System.ArgumentOutOfRangeException: Size of string exceeds INT_MAX.");
}

TEST(Paths, LoseThePrefixThatTheRuntimeRejects) {
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        {LR"(\\?\C:\a\b.dll)", LR"(C:\a\b.dll)"},
        {LR"(\\?\UNC\server\share\b.dll)", LR"(\\server\share\b.dll)"},
        {LR"(\\?\unc\server\share\b.dll)", LR"(\\server\share\b.dll)"},
        {LR"(\\?\Volume{0-1}\b.dll)", LR"(\\?\Volume{0-1}\b.dll)"},
        {LR"(\\?\)", LR"(\\?\)"},
        {LR"(\\server\share\b.dll)", LR"(\\server\share\b.dll)"},
        {LR"(C:\?\b.dll)", LR"(C:\?\b.dll)"},
        {L"", L""},
    };
    for (const auto& [path, stripped] : rows) {
        EXPECT_EQ(withoutLongPathPrefix(path), stripped);
    }
}

bool isZero(const wchar_t* memory, int units) {
    return std::count(memory, memory + units, L'\0') == units;
}

TEST(Secrets, AreWipedBeforeTheirMemoryIsFreed) {
    createdManager = 1;
    LoginManagerClient client(nullptr, nullptr, uiLangFallback);
    // The strings that were passed live to the end of the full expression, so their memory can still be inspected.
    EXPECT_TRUE((client.login(L"a name of some length", L"a secret of some length"), isZero(seenSecret, 23)));
    EXPECT_TRUE((client.isDunmorePlatformTokenExpired(L"a secret of some length"), isZero(seenSecret, 23)));

    alignas(ManagedString) unsigned char memory[sizeof(ManagedString)];
    auto* text = new (memory) ManagedString;
    fill(*text, L"token");
    EXPECT_EQ(text->toNative(), L"token");
    text->~ManagedString();
    EXPECT_TRUE(isZero(reinterpret_cast<StringLayout*>(memory)->buffer, 5));

    std::wstring secret(100, L's');
    const wchar_t* const start = secret.data();
    secret.resize(10);
    { const WipedAtEnd wiped(secret); }
    EXPECT_TRUE(isZero(start, 100)) << "also the memory beyond the end";
}

}  // namespace

namespace OrvelLoginClientCLR {

const ManagerMembers& managerMembers() {
    static const ManagerMembers members = fakeMembers();
    return members;
}

bool callManaged(ManagedCall member, ManagerHandle manager, const StringArgument* first, const StringArgument* second,
                 void* result, ManagedFailure& failure) {
    return member(manager, first, second, result, &failure) == 0;
}

void registerResolveHandler() {}

void throwUntranslated(const ManagedFailure& failure) {
    throw managedFailure(L"Failure", L"", failure.hresult);
}

}  // namespace OrvelLoginClientCLR
