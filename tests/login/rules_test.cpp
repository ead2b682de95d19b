// What the native side decides by itself, against a managed part played here that creates no manager.

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>

#include "login/LibraryFile.h"
#include "login/LoginManagerClientCLR.h"
#include "login/RuntimeFailure.h"
#include "login/Wiping.h"
#include "outcome.h"

using namespace OrvelLoginClientCLR;

namespace {

ManagerMembers playedMembers() {
    ManagerMembers members;  // a member that is called all the same ends the test
    members.create.call = [](ManagerHandle, const TextArgument*, const TextArgument*, void*,
                             ManagedFailure*) -> std::int32_t { return 0; };
    members.stopDNMListener.call = [](ManagerHandle manager, const TextArgument*, const TextArgument*, void*,
                                      ManagedFailure*) -> std::int32_t { return manager == 0 ? 0 : 1; };
    return members;
}

const char* const nullFailure = "System.ArgumentNullException: NULLPTR is not supported for this conversion.";

TEST(Bridge, WithoutAManagerEachMemberDoesWhatItIsDocumentedToDo) {
    LoginManagerClientCLR bridge(nullptr, nullptr, uiLangFallback);
    struct {
        const char* member;
        std::function<std::wstring()> call;
        const char* outcome;
    } const rows[] = {
        {"login", [&] { return bridge.login().userName; }, "code 6"},
        {"login with credentials", [&] { return bridge.login(L"a", L"b").userName; }, "code 6"},
        {"getLoggedInUser", [&] { return bridge.getLoggedInUser().userName; }, "code 6"},
        {"logout", [&] { return bridge.logout(), L"returned"; }, "returned"},
        {"getAccessToken", [&] { return bridge.getAccessToken(); }, ""},
        {"getPlatFormURL", [&] { return bridge.getPlatFormURL(); }, ""},
        {"formatAccessUrl", [&] { return bridge.formatAccessUrl(L"url"); }, "url"},
        {"getLoginTicket", [&] { return bridge.getLoginTicket(L"space"); }, "space"},
        {"DunmoreLoginBrowser", [&] { return bridge.DunmoreLoginBrowser(L"a", L"b"), L"returned"; }, "returned"},
        {"isDunmorePlatformTokenExpired", [&] { return std::to_wstring(bridge.isDunmorePlatformTokenExpired(L"t")); },
         "0"},
        {"getDNMAccessToken", [&] { return bridge.getDNMAccessToken(); }, nullFailure},
        {"stopDNMListener", [&] { return bridge.stopDNMListener(), L"returned"; }, "returned"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(outcome(row.call), row.outcome) << row.member;
    }
}

TEST(Strings, OfMoreThanIntMaxUnitsAreRefused) {
    EXPECT_EQ(managedLength(INT_MAX), INT_MAX);
    EXPECT_EQ(outcome([] { return managedLength(std::size_t(INT_MAX) + 1), L""; }),
              "System.ArgumentOutOfRangeException: Size of string exceeds INT_MAX.");
}

TEST(Failures, SayTypeAndMessageInUtf8) {
    const loginRuntimeException failure = managedFailure(L"A.B", L"\x43a\xd83e\xdd89 \xd800!", 5);
    EXPECT_STREQ(failure.what(), "A.B: \xd0\xba\xf0\x9f\xa6\x89 \xef\xbf\xbd!");
    EXPECT_EQ(failure.message, L"\x43a\xd83e\xdd89 \xd800!");
    EXPECT_STREQ(startFailure(L"no", static_cast<std::int32_t>(0x80131700)).what(), "no (HRESULT 0x80131700)");
}

TEST(Paths, LoseThePrefixThatTheRuntimeRejects) {
    struct {
        const wchar_t* path;
        const wchar_t* stripped;
    } const rows[] = {
        {LR"(\\?\C:\a\b.dll)", LR"(C:\a\b.dll)"},
        {LR"(\\?\UNC\server\share\b.dll)", LR"(\\server\share\b.dll)"},
        {LR"(\\server\share\b.dll)", LR"(\\server\share\b.dll)"},
        {LR"(C:\?\b.dll)", LR"(C:\?\b.dll)"},
        {L"", L""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(withoutLongPathPrefix(row.path), row.stripped);
    }
}

TEST(Secrets, AreWipedWithAllOfTheirMemory) {
    std::wstring secret(100, L's');
    const wchar_t* const memory = secret.data();
    secret.resize(10);
    { const WipedAtEnd wiped(secret); }
    for (int unit = 0; unit < 100; ++unit) {
        EXPECT_EQ(memory[unit], L'\0') << unit;
    }
}

}  // namespace

namespace OrvelLoginClientCLR {

const ManagerMembers& managerMembers() {
    static const ManagerMembers members = playedMembers();
    return members;
}

bool callManaged(ManagedCall member, ManagerHandle manager, const TextArgument* first, const TextArgument* second,
                 void* result, ManagedFailure& failure) {
    return member(manager, first, second, result, &failure) == 0;
}

void throwUntranslated(const ManagedFailure& failure) {
    throw managedFailure(L"Failure", L"", failure.hresult);
}

}  // namespace OrvelLoginClientCLR
