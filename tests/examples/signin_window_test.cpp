// The example with a window, driven from another process by window messages, with the stand-ins behind it.

#include <gtest/gtest.h>

#include <string>

#include "examples/signin-window/ClientWorker.h"
#include "signin_program.h"

namespace {

constexpr wchar_t ada[] = L"ada@example.com", adasPassword[] = L"analytical engine";

#define ADA L"Account=ada@example.com|First name=Ada|Last name=Lovelace|Alias=Countess|Domain=example.com|Record=1815|"
constexpr wchar_t online[] =
    ADA L"Tenant=Example Works|Tenant identifier=R1132100|Platform=https://platform.example.com/|"
        L"Registry=https://registry.example.com/|Passport service=https://passport.example.com/|"
        L"Applications=https://apps.example.com/0|Kelpa service=https://kelpa.example.com/|"
        L"Space=https://space.example.com/|";
constexpr wchar_t offline[] = ADA L"Tenant=unknown while offline|Tenant identifier=unknown while offline|";
constexpr wchar_t untilThePlatform[] = ADA L"Tenant=Example Works|Tenant identifier=R1132100|";

TEST(SigninWindow, ShowsHowASignInEndedAndMovesTheFocusOn) {
    const struct {
        const wchar_t *commands, *account, *password, *status, *details;
        int focus;
    } rows[] = {
        {L"", ada, L"difference engine", L"The password is wrong (code 1).", L"", IDC_PASSWORD},
        {L"", L"nobody", L"", L"There is no such account (code 2).", L"", IDC_PASSWORD},
        {L"", ada, adasPassword, L"Ada signed in", online, IDC_SIGN_OUT},
        {L"login=status 4", ada, adasPassword, L"The server cannot be reached (code 4).", L"", IDC_PASSWORD},
        {L"login=throw System.TimeoutException a\nb\nc\nвремя\nвышло", ada, adasPassword,
         L"System.TimeoutException: a\r\nb\r\nc\r\nвремя\r\nвышло", L"", IDC_PASSWORD},
        // The user is signed in, and the details from before the failure are shown.
        {L"getPlatformURL=throw System.TimeoutException", ada, adasPassword, L"System.TimeoutException: on request",
         untilThePlatform, IDC_SIGN_OUT},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.status, row.status + std::wcslen(row.status)));
        const signin_program program(row.commands);
        EXPECT_EQ(program.text(IDC_STATUS), L"Nobody is signed in.");
        EXPECT_FALSE(program.enabled(IDC_SIGN_IN)) << "without an account";
        program.signin(row.account, row.password);
        EXPECT_EQ(program.finalstatus(), row.status);
        EXPECT_EQ(program.text(IDC_PASSWORD), L"");
        EXPECT_EQ(program.details(), row.details);
        EXPECT_EQ(program.focus(), row.focus);
        EXPECT_EQ(program.enabled(IDC_SIGN_OUT), row.focus == IDC_SIGN_OUT);
        EXPECT_EQ(program.enabled(IDC_SIGN_IN), row.focus == IDC_PASSWORD) << "again, with an empty password";
        EXPECT_EQ(program.close(), 0u);
    }
}

TEST(SigninWindow, FollowsWhoIsSignedInOnlineAndOffline) {
    const signin_program program(L"events=thread");
    program.click(IDC_OFFLINE);  // nobody to ask about yet
    EXPECT_EQ(program.finalstatus(), L"Nobody is signed in.");
    program.signin(ada, adasPassword);
    EXPECT_EQ(program.finalstatus(), L"Ada signed in");
    EXPECT_EQ(program.details().find(offline), 0u);
    program.click(IDC_OFFLINE);
    EXPECT_EQ(program.finalstatus(), L"Ada is signed in");
    EXPECT_EQ(program.details(), online);
    EXPECT_EQ(program.focus(), IDC_OFFLINE);
    program.signin(ada, L"difference engine");
    EXPECT_EQ(program.finalstatus(), L"The password is wrong (code 1).");
    EXPECT_EQ(program.details(), online) << "a refused sign-in does not sign out the user";
    program.signin(L"zoe@example.com", L"κωδικός");
    EXPECT_EQ(program.finalstatus(), L"Ζωή signed in");
    EXPECT_NE(program.details().find(L"Alias=Zoë 🦉|Domain=|"), std::wstring::npos);

    const auto signsOut = [&] {
        EXPECT_EQ(program.finalstatus(), L"Signed out.");
        EXPECT_EQ(program.details(), L"");
        EXPECT_FALSE(program.enabled(IDC_SIGN_OUT));
        EXPECT_EQ(program.focus(), IDC_ACCOUNT);
    };
    SendMessageW(program.window, WM_APP_SIGNED_OUT, 0, 0);  // events that it has not caused
    signsOut();
    SendMessageW(program.window, WM_APP_SIGNED_IN, 0, 0);
    EXPECT_EQ(program.finalstatus(), L"Ζωή is signed in");
    EXPECT_NE(program.details(), L"");
    EXPECT_TRUE(program.enabled(IDC_SIGN_OUT));
    program.click(IDC_SIGN_OUT);
    signsOut();
}

TEST(SigninWindow, StaysResponsiveAndClosesWhileTheManagerHangs) {
    const orvsecutils::kernelhandle gate(CreateEventW(nullptr, TRUE, FALSE, L"gate"));
    const auto signin = [&](const signin_program& program) {
        program.signin(ada, adasPassword);
        EXPECT_EQ(program.text(IDC_STATUS), L"Signing in…");
        for (const int id : {IDC_ACCOUNT, IDC_PASSWORD, IDC_SIGN_IN, IDC_SIGN_OUT, IDC_OFFLINE}) {
            EXPECT_FALSE(program.enabled(id)) << id;
        }
        EXPECT_TRUE(IsWindowVisible(program.control(IDC_PROGRESS)));
    };
    const signin_program delayed(L"login=wait gate");
    signin(delayed);
    const signin_program hung(L"login=wait gate");
    signin(hung);
    EXPECT_EQ(hung.close(), 0u) << "in a call";
    SetEvent(gate.get());
    EXPECT_EQ(delayed.finalstatus(), L"Ada signed in");
    EXPECT_FALSE(IsWindowVisible(delayed.control(IDC_PROGRESS)));
    ResetEvent(gate.get());
    const signin_program disposing(L"Dispose=wait gate");
    disposing.signin(ada, adasPassword);
    disposing.finalstatus();
    EXPECT_EQ(disposing.close(), 0u) << "in its disposal";
}

TEST(SigninWindow, IsUsedByKeyboard) {
    const signin_program program;
    EXPECT_TRUE(GetWindowLongW(program.control(IDC_PASSWORD), GWL_STYLE) & ES_PASSWORD);
    program.type(IDC_ACCOUNT, ada);
    program.type(IDC_PASSWORD, adasPassword);
    program.post(IDC_PASSWORD, WM_KEYDOWN, VK_RETURN);
    EXPECT_TRUE(eventually([&] { return program.enabled(IDC_SIGN_OUT); })) << "Enter signs in";
    SendMessageW(program.window, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(program.control(IDC_PASSWORD)), TRUE);
    program.post(IDC_PASSWORD, WM_KEYDOWN, VK_RETURN);
    constexpr LPARAM altIsDown = 1 << 29;
    program.post(IDC_ACCOUNT, WM_SYSCHAR, L'f', altIsDown);
    EXPECT_TRUE(eventually([&] { return program.details().find(offline) == 0; }))
        << "Alt+F goes offline, still signed in";
    program.post(IDC_ACCOUNT, WM_SYSCHAR, L'o', altIsDown);
    EXPECT_TRUE(eventually([&] { return program.details().empty(); })) << "Alt+O signs out";
    program.post(IDC_ACCOUNT, WM_KEYDOWN, VK_ESCAPE);
    EXPECT_EQ(program.status(), 0u) << "Escape closes";
}

}  // namespace
