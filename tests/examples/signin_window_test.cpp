// The example with a window, driven from another process by window messages, with the stand-ins behind it.

#include <gmock/gmock.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "SigninProgram.h"
#include "examples/signin-window/ClientWorker.h"
#include "examples/signin-window/resource.h"
#include "picture.h"

using testing::_;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

namespace {

constexpr wchar_t ada[] = L"ada@example.com", adasPassword[] = L"analytical engine";

/// Holds up the stand-in's `wait gate` until it is opened.
class Gate {
public:
    void open() { SetEvent(event.get()); }

private:
    Handle event{CreateEventW(nullptr, TRUE, FALSE, L"gate")};
};

TEST(SigninWindow, TellsHowASignInEnded) {
    const struct {
        const wchar_t *commands, *account, *password, *status;
        bool signedIn;
        const wchar_t *alias, *platform;  // null: not in the list
    } rows[] = {
        {L"", ada, L"difference engine", L"The password is wrong (code 1).", false, nullptr, nullptr},
        {L"", L"nobody", L"", L"There is no such account (code 2).", false, nullptr, nullptr},
        {L"", ada, adasPassword, L"Ada signed in", true, L"Countess", L"https://platform.example.com/"},
        {L"events=thread", L"zoe@example.com", L"κωδικός", L"Ζωή signed in", true, L"Zoë 🦉",
         L"https://platform.example.com/"},
        {L"login=null", ada, adasPassword, L"The login manager gave no answer (code 6).", false, nullptr, nullptr},
        {L"login=throw System.TimeoutException время вышло", ada, adasPassword, L"System.TimeoutException: время вышло",
         false, nullptr, nullptr},
        // Signed in all the same, and what was learnt before the failure is shown.
        {L"getPlatformURL=throw System.TimeoutException", ada, adasPassword, L"System.TimeoutException: on request",
         true, L"Countess", nullptr},
    };
    for (const auto& row : rows) {
        SigninProgram program(row.commands);
        EXPECT_FALSE(program.enabled(IDC_SIGN_IN)) << "without an account";
        program.signIn(row.account, row.password);
        EXPECT_EQ(program.outcome(), row.status);
        EXPECT_EQ(program.text(IDC_PASSWORD), L"");
        EXPECT_EQ(program.enabled(IDC_SIGN_OUT), row.signedIn) << row.status;
        const auto details = program.details();
        for (const auto& [name, value] : {std::pair(L"Alias", row.alias), std::pair(L"Platform", row.platform)}) {
            const auto found = details.find(name);
            EXPECT_EQ(found != details.end(), value != nullptr) << name << " after " << row.status;
            EXPECT_TRUE(!value || found == details.end() || found->second == value) << found->second;
        }
        EXPECT_EQ(program.close(), 0);
    }
}

TEST(SigninWindow, GoesOfflineAndOnlineAndSignsOut) {
    SigninProgram program;
    program.click(IDC_OFFLINE);  // nobody to ask about yet
    program.click(IDC_OFFLINE);
    program.signIn(ada, adasPassword);
    program.outcome();
    const auto online = program.details();
    EXPECT_THAT(online, AllOf(Not(IsEmpty()), Each(Pair(_, Not(IsEmpty())))));

    program.click(IDC_OFFLINE);
    EXPECT_EQ(program.outcome(), L"Ada is signed in");
    for (const auto& [name, value] : program.details()) {
        const bool record = name == L"Account" || name == L"First name" || name == L"Last name" || name == L"Alias" ||
                            name == L"Domain" || name == L"Record";
        EXPECT_EQ(value, record ? online.at(name) : L"") << name;
    }
    program.click(IDC_OFFLINE);
    program.outcome();
    EXPECT_EQ(program.details(), online);

    program.signIn(ada, L"difference engine");
    EXPECT_EQ(program.outcome(), L"The password is wrong (code 1).");
    EXPECT_EQ(program.details(), online) << "a refused sign-in leaves whoever is signed in";

    program.click(IDC_SIGN_OUT);
    EXPECT_EQ(program.outcome(), L"Signed out.");
    EXPECT_THAT(program.details(), IsEmpty());
    EXPECT_FALSE(program.enabled(IDC_SIGN_OUT));
    EXPECT_EQ(program.close(), 0);
}

TEST(SigninWindow, FollowsEventsOutsideItsOwnRequests) {
    SigninProgram program;
    program.signIn(ada, adasPassword);
    program.outcome();
    const auto details = program.details();
    SendMessageW(program.window, WM_APP_SIGNED_OUT, 0, 0);
    EXPECT_EQ(program.outcome(), L"Signed out.");
    EXPECT_THAT(program.details(), IsEmpty());
    EXPECT_FALSE(program.enabled(IDC_SIGN_OUT));
    SendMessageW(program.window, WM_APP_SIGNED_IN, 0, 0);
    EXPECT_EQ(program.outcome(), L"Ada is signed in");
    EXPECT_EQ(program.details(), details);
    EXPECT_TRUE(program.enabled(IDC_SIGN_OUT));
    EXPECT_EQ(program.close(), 0);
}

TEST(SigninWindow, StaysResponsiveWhileASignInRuns) {
    for (const bool closeMeanwhile : {false, true}) {
        Gate gate;
        SigninProgram program(L"login=wait gate");
        program.signIn(ada, adasPassword);
        EXPECT_EQ(program.text(IDC_STATUS), L"Signing in…");
        for (const int id : {IDC_ACCOUNT, IDC_PASSWORD, IDC_SIGN_IN, IDC_SIGN_OUT, IDC_OFFLINE}) {
            EXPECT_FALSE(program.enabled(id)) << id;
        }
        EXPECT_TRUE(program.answers());
        if (closeMeanwhile) {
            PostMessageW(program.window, WM_CLOSE, 0, 0);
            EXPECT_TRUE(eventually([&] { return !IsWindowVisible(program.window); }));
            EXPECT_TRUE(program.answers());
            EXPECT_TRUE(program.running());
            gate.open();
            EXPECT_EQ(program.exitCode(), 0);
        } else {
            gate.open();
            EXPECT_EQ(program.outcome(), L"Ada signed in");
            EXPECT_EQ(program.close(), 0);
        }
    }
}

TEST(SigninWindow, IsUsedByKeyboard) {
    SigninProgram program;
    const auto press = [&](int id, UINT message, WPARAM key, LPARAM flags) {
        PostMessageW(program.control(id), message, key, flags);
    };
    program.type(IDC_ACCOUNT, ada);
    program.type(IDC_PASSWORD, adasPassword);
    press(IDC_PASSWORD, WM_KEYDOWN, VK_RETURN, 0);
    EXPECT_TRUE(eventually([&] { return program.enabled(IDC_SIGN_OUT); })) << "Enter signs in";

    std::vector<int> order;
    HWND control = nullptr;
    do {
        control = GetNextDlgTabItem(program.window, control, FALSE);
        order.push_back(GetDlgCtrlID(control));
    } while (order.back() != IDC_STATUS && order.size() < 10);
    EXPECT_THAT(
        order, ElementsAre(IDC_ACCOUNT, IDC_PASSWORD, IDC_SIGN_IN, IDC_SIGN_OUT, IDC_OFFLINE, IDC_DETAILS, IDC_STATUS));

    constexpr LPARAM altIsDown = 1 << 29;
    press(IDC_ACCOUNT, WM_SYSCHAR, L'f', altIsDown);
    EXPECT_TRUE(eventually([&] { return program.details()[L"Platform"].empty(); })) << "Alt+F goes offline";
    press(IDC_ACCOUNT, WM_SYSCHAR, L'o', altIsDown);
    EXPECT_TRUE(eventually([&] { return program.details().empty(); })) << "Alt+O signs out";
    press(IDC_ACCOUNT, WM_KEYDOWN, VK_ESCAPE, 0);
    EXPECT_EQ(program.exitCode(), 0) << "Escape closes";
}

TEST(SigninWindow, IsDrawn) {
    SigninProgram program;
    program.signIn(ada, adasPassword);
    program.outcome();
    // No window manager gives a window the focus here, so the frame is told that it is the active one.
    SendMessageW(program.window, WM_NCACTIVATE, TRUE, 0);
    // Drawing is done when two pictures are alike.
    const auto drawn = [&] {
        const Picture picture(program.window);
        for (const int id : {IDC_ACCOUNT, IDC_SIGN_IN, IDC_SIGN_OUT, IDC_OFFLINE, IDC_DETAILS, IDC_STATUS}) {
            if (!picture.inked(program.control(id))) {
                return false;
            }
        }
        Sleep(50);
        return picture == Picture(program.window);
    };
    EXPECT_TRUE(eventually(drawn));
    const wchar_t* file = _wgetenv(L"SIGNIN_WINDOW_PICTURE");
    EXPECT_TRUE(!file || Picture(program.window).save(L"Z:" + std::wstring(file)));
    EXPECT_EQ(program.close(), 0);
}

}  // namespace
