// The rules of the bridge, against a managed part played here: what it does without a manager, with nulls and with
// failures, and how values map.

#include <gtest/gtest.h>
#include <windows.h>

#include <climits>
#include <functional>
#include <string>
#include <vector>

#include "login/LoginManagerClientCLR.h"
#include "login/RuntimeFailure.h"

using namespace OrvelLoginClientCLR;

namespace {

ManagerMembers fake;  // empty: a member that is called all the same ends the test
int disposals = 0;
std::int32_t languageSeen = -1;

// Creates no manager, as `managedClient` is when it is not valid.
Outcome createNone(ManagerMembers::EventHandler, ManagerMembers::EventHandler, std::int32_t language, ManagerHandle*,
                   ManagedFailure*) {
    languageSeen = language;
    return 0;
}

Outcome createOne(ManagerMembers::EventHandler, ManagerMembers::EventHandler, std::int32_t, ManagerHandle* manager,
                  ManagedFailure*) {
    *manager = 7;
    return 0;
}

Outcome failToCreate(ManagerMembers::EventHandler, ManagerMembers::EventHandler, std::int32_t, ManagerHandle*,
                     ManagedFailure* failure) {
    failure->isManagerException = 1;
    failure->status = 3;
    return 1;
}

Outcome countDisposal(ManagerHandle, ManagedFailure*) {
    return ++disposals, 1;  // disposing fails, too
}

class Bridge : public testing::Test {
protected:
    Bridge() {
        fake = {};
        disposals = 0;
        fake.dispose = countDisposal;
    }
};

std::string typeOf(const std::function<void()>& call) {
    try {
        call();
        return "returned";
    } catch (loginManagerException* report) {
        const statusCode code = report->code;
        delete report;
        return "code " + std::to_string(code);
    } catch (const loginRuntimeException& failure) {
        return failure.what();
    }
}

TEST_F(Bridge, WithoutAManagerEachMemberDoesWhatItIsDocumentedToDo) {
    fake.create = createNone;
    fake.stopDNMListener = [](ManagerHandle manager, ManagedFailure*) -> Outcome { return manager == 0 ? 0 : 1; };
    LoginManagerClientCLR bridge(nullptr, nullptr, uiLangFallback);
    EXPECT_EQ(typeOf([&] { bridge.login(); }), "code 6");
    EXPECT_EQ(typeOf([&] { bridge.login(L"a", L"b"); }), "code 6");
    EXPECT_EQ(typeOf([&] { bridge.getLoggedInUser(); }), "code 6");
    EXPECT_EQ(typeOf([&] { bridge.logout(); }), "returned");
    EXPECT_EQ(bridge.getAccessToken(), L"");
    EXPECT_EQ(bridge.getPlatFormURL(), L"");
    EXPECT_EQ(bridge.formatAccessUrl(L"url"), L"url");
    EXPECT_EQ(bridge.getLoginTicket(L"space"), L"space");
    EXPECT_EQ(typeOf([&] { bridge.DunmoreLoginBrowser(L"a", L"b"); }), "returned");
    EXPECT_FALSE(bridge.isDunmorePlatformTokenExpired(L"t"));
    EXPECT_EQ(typeOf([&] { bridge.getDNMAccessToken(); }),
              "System.ArgumentNullException: NULLPTR is not supported for this conversion.");
    EXPECT_EQ(typeOf([&] { bridge.stopDNMListener(); }), "returned");
}

TEST_F(Bridge, IsDisposedOnceAndOnlyWithAManager) {
    fake.create = createNone;
    { const LoginManagerClientCLR bridge(nullptr, nullptr, uiLangFallback); }
    EXPECT_EQ(disposals, 0);
    fake.create = createOne;
    { const LoginManagerClientCLR bridge(nullptr, nullptr, uiLangFallback); }
    EXPECT_EQ(disposals, 1);
    fake.create = failToCreate;
    EXPECT_THROW(LoginManagerClientCLR(nullptr, nullptr, uiLangFallback), loginRuntimeException);
    EXPECT_EQ(disposals, 1);
}

TEST_F(Bridge, EveryConstructionOverwritesBothSlots) {
    static int calls;
    calls = 0;
    fake.create = createNone;
    const auto count = [] { ++calls; };
    const LoginManagerClientCLR first(count, count, uiLangFallback);
    LoginEventHandler();
    LogoutEventHandler();
    EXPECT_EQ(calls, 2);
    const LoginManagerClientCLR second(nullptr, count, uiLangFallback);
    LoginEventHandler();
    EXPECT_EQ(calls, 2);
    LogoutEventHandler();
    EXPECT_EQ(calls, 3);
}

TEST_F(Bridge, LanguageAndStatusOutOfRangeFallBack) {
    fake.create = createNone;
    for (const int value : {INT_MIN, -1, 0, 1, 12, 13, 14, INT_MAX}) {
        const LoginManagerClientCLR bridge(nullptr, nullptr, static_cast<uiLang>(value));
        EXPECT_EQ(languageSeen, value > 0 && value < 14 ? value : 0) << value;
    }
    for (const int value : {INT_MIN, -1, 0, 1, 7, 8, 9, 42, INT_MAX}) {
        EXPECT_EQ(getStatusCode(value), value >= 0 && value < 8 ? value : 8) << value;
    }
}

TEST_F(Bridge, StringsOfMoreThanIntMaxUnitsAreRefused) {
    EXPECT_EQ(managedLength(INT_MAX), INT_MAX);
    EXPECT_EQ(typeOf([] { managedLength(std::size_t(INT_MAX) + 1); }),
              "System.ArgumentOutOfRangeException: Size of string exceeds INT_MAX.");
}

TEST(RuntimeFailure, SaysTypeAndMessageInUtf8) {
    const loginRuntimeException failure = managedFailure(L"A.B", L"\x43a\xd83e\xdd89 \xd800!", 5);
    EXPECT_STREQ(failure.what(), "A.B: \xd0\xba\xf0\x9f\xa6\x89 \xef\xbf\xbd!");
    EXPECT_EQ(failure.message, L"\x43a\xd83e\xdd89 \xd800!");
    EXPECT_STREQ(startFailure(L"no", static_cast<std::int32_t>(0x80131700)).what(), "no (HRESULT 0x80131700)");
}

}  // namespace

namespace OrvelLoginClientCLR {

const ManagerMembers& managerMembers() {
    return fake;
}

void pinLibrary() {}

void throwUntranslated(const ManagedFailure& failure) {
    throw managedFailure(L"Failure", L"", failure.hresult);
}

}  // namespace OrvelLoginClientCLR
