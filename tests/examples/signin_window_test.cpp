// The example with a window, driven from another process by window messages, with the stand-ins behind it.

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "examples/signin-window/ClientWorker.h"
#include "signin_program.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using texts = std::vector<std::wstring>;

namespace {

constexpr wchar_t ada[] = L"ada@example.com", adasPassword[] = L"analytical engine";
const texts adasRecord = {L"Account=ada@example.com", L"First name=Ada",     L"Last name=Lovelace",
                          L"Alias=Countess",          L"Domain=example.com", L"Record=1815"};

texts adasDetails(const std::vector<const wchar_t*>& values) {
    const wchar_t* const names[] = {L"Tenant",           L"Tenant identifier", L"Platform",      L"Registry",
                                    L"Passport service", L"Applications",      L"Kelpa service", L"Space"};
    texts result = adasRecord;
    for (std::size_t i = 0; i < values.size(); ++i) {
        result.push_back(names[i] + std::wstring(L"=") + values[i]);
    }
    return result;
}

const texts online =
    adasDetails({L"Example Works", L"R1132100", L"https://platform.example.com/", L"https://registry.example.com/",
                 L"https://passport.example.com/", L"https://apps.example.com/0", L"https://kelpa.example.com/",
                 L"https://space.example.com/"});
const texts offline = adasDetails(std::vector<const wchar_t*>(8, L"unknown while offline"));

TEST(SigninWindow, TellsHowASignInEndedAndGoesOnFromThere) {
    const texts untilTheFailure = adasDetails({L"Example Works", L"R1132100"});
    const struct {
        const wchar_t *commands, *account, *password, *status;
        texts details;
        int focus;
    } rows[] = {
        {L"", ada, L"difference engine", L"The password is wrong (code 1).", {}, IDC_PASSWORD},
        {L"", L"nobody", L"", L"There is no such account (code 2).", {}, IDC_PASSWORD},
        {L"", ada, adasPassword, L"Ada signed in", online, IDC_SIGN_OUT},
        {L"login=null", ada, adasPassword, L"The login manager gave no answer (code 6).", {}, IDC_PASSWORD},
        {L"login=throw System.TimeoutException a\nb\nc\nвремя\nвышло",
         ada,
         adasPassword,
         L"System.TimeoutException: a\r\nb\r\nc\r\nвремя\r\nвышло",
         {},
         IDC_PASSWORD},
        // Signed in all the same, and what was learnt before the failure is shown.
        {L"getPlatformURL=throw System.TimeoutException", ada, adasPassword, L"System.TimeoutException: on request",
         untilTheFailure, IDC_SIGN_OUT},
    };
    for (const auto& row : rows) {
        const signin_program program(row.commands);
        EXPECT_EQ(program.text(IDC_STATUS), L"Nobody is signed in.");
        EXPECT_FALSE(program.enabled(IDC_SIGN_IN)) << "without an account";
        program.signin(row.account, row.password);
        EXPECT_EQ(program.outcome(), row.status);
        EXPECT_EQ(program.text(IDC_PASSWORD), L"");
        EXPECT_EQ(program.details(), row.details) << row.status;
        EXPECT_EQ(program.focus(), row.focus) << row.status;
        EXPECT_EQ(program.enabled(IDC_SIGN_OUT), row.focus == IDC_SIGN_OUT) << row.status;
        EXPECT_EQ(program.enabled(IDC_SIGN_IN), row.focus == IDC_PASSWORD) << "again with an empty password";
        EXPECT_EQ(program.close(), 0u);
    }
}

TEST(SigninWindow, ShowsAnotherUserAndEventsOfOtherThreads) {
    const signin_program program(L"events=thread");
    program.signin(L"zoe@example.com", L"κωδικός");
    EXPECT_EQ(program.outcome(), L"Ζωή signed in");
    EXPECT_THAT(program.details(), Contains(L"Alias=Zoë 🦉"));
    program.signin(ada, adasPassword);
    EXPECT_EQ(program.outcome(), L"Ada signed in");
    program.signin(ada, L"difference engine");
    EXPECT_EQ(program.outcome(), L"The password is wrong (code 1).");
    EXPECT_EQ(program.details(), online) << "a refused sign-in leaves whoever is signed in";
    EXPECT_TRUE(program.enabled(IDC_SIGN_OUT));
}

TEST(SigninWindow, GoesOfflineAndOnlineAndSignsOut) {
    const signin_program program;
    program.click(IDC_OFFLINE);  // nobody to ask about yet
    EXPECT_EQ(program.outcome(), L"Nobody is signed in.");
    program.signin(ada, adasPassword);
    EXPECT_EQ(program.outcome(), L"Ada signed in");
    EXPECT_EQ(program.details(), offline);
    program.click(IDC_OFFLINE);
    EXPECT_EQ(program.outcome(), L"Ada is signed in");
    EXPECT_EQ(program.details(), online);
    program.click(IDC_OFFLINE);
    program.outcome();
    EXPECT_EQ(program.details(), offline);
    program.click(IDC_SIGN_OUT);
    EXPECT_EQ(program.outcome(), L"Signed out.");
    EXPECT_THAT(program.details(), IsEmpty());
    EXPECT_FALSE(program.enabled(IDC_SIGN_OUT));
    EXPECT_EQ(program.focus(), IDC_ACCOUNT);
}

TEST(SigninWindow, FollowsEventsOutsideItsOwnRequests) {
    const signin_program program;
    program.signin(ada, adasPassword);
    program.outcome();
    SendMessageW(program.window, WM_APP_SIGNED_OUT, 0, 0);
    EXPECT_EQ(program.outcome(), L"Signed out.");
    EXPECT_THAT(program.details(), IsEmpty());
    EXPECT_EQ(program.focus(), IDC_ACCOUNT);
    SendMessageW(program.window, WM_APP_SIGNED_IN, 0, 0);
    EXPECT_EQ(program.outcome(), L"Ada is signed in");
    EXPECT_EQ(program.details(), online);
    EXPECT_TRUE(program.enabled(IDC_SIGN_OUT));
}

TEST(SigninWindow, AnswersWhileTheManagerDoesNotAndClosesWhateverItDoes) {
    const std::unique_ptr<void, decltype(&CloseHandle)> gate(CreateEventW(nullptr, TRUE, FALSE, L"gate"), CloseHandle);
    const int locked[] = {IDC_ACCOUNT, IDC_PASSWORD, IDC_SIGN_IN, IDC_SIGN_OUT, IDC_OFFLINE};
    const auto signin = [&](const signin_program& program) {
        program.signin(ada, adasPassword);
        EXPECT_EQ(program.text(IDC_STATUS), L"Signing in…");
        for (const int id : locked) {
            EXPECT_FALSE(program.enabled(id)) << id;
        }
        EXPECT_TRUE(IsWindowVisible(program.control(IDC_PROGRESS)));
        EXPECT_TRUE(SendMessageTimeoutW(program.window, WM_NULL, 0, 0, SMTO_ABORTIFHUNG, 1000, nullptr));
    };
    const signin_program answered(L"login=wait gate");
    signin(answered);
    const signin_program hung(L"login=wait gate");
    signin(hung);
    EXPECT_EQ(hung.close(), 0u) << "in a call";
    SetEvent(gate.get());
    EXPECT_EQ(answered.outcome(), L"Ada signed in");
    EXPECT_FALSE(IsWindowVisible(answered.control(IDC_PROGRESS)));
    ResetEvent(gate.get());
    const signin_program disposing(L"Dispose=wait gate");
    disposing.signin(ada, adasPassword);
    disposing.outcome();
    EXPECT_EQ(disposing.close(), 0u) << "in its disposal";
}

TEST(SigninWindow, IsUsedByKeyboardAndByScreenReaders) {
    const signin_program program;
    program.signin(L"nobody", L"");
    program.outcome();
    SendMessageW(program.control(IDC_ACCOUNT), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(ada));
    SendMessageW(program.control(IDC_PASSWORD), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(adasPassword));
    program.press(IDC_PASSWORD, VK_RETURN);
    EXPECT_TRUE(eventually([&] { return program.enabled(IDC_SIGN_OUT); })) << "Enter signs in";
    SendMessageW(program.window, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(program.control(IDC_PASSWORD)), TRUE);
    program.press(IDC_PASSWORD, VK_RETURN);
    Sleep(200);
    EXPECT_EQ(program.text(IDC_STATUS), L"Ada signed in") << "Enter does not sign in again";
    EXPECT_TRUE(GetWindowLongW(program.control(IDC_STATUS), GWL_STYLE) & WS_VSCROLL);

    std::vector<int> order;
    texts labels;
    HWND control = nullptr;
    do {
        control = GetNextDlgTabItem(program.window, control, FALSE);
        order.push_back(GetDlgCtrlID(control));
        wchar_t label[20] = L"";
        GetWindowTextW(GetWindow(control, GW_HWNDPREV), label, 20);
        labels.push_back(label);
    } while (order.back() != IDC_STATUS && order.size() < 10);
    EXPECT_THAT(order, ElementsAre(IDC_ACCOUNT, IDC_PASSWORD, IDC_SIGN_OUT, IDC_OFFLINE, IDC_DETAILS, IDC_STATUS));
    EXPECT_THAT(labels, ElementsAre(L"&Account:", L"&Password:", L"&Sign in", L"Sign &out", L"&Details:", L"S&tatus:"));

    constexpr LPARAM altIsDown = 1 << 29;
    PostMessageW(program.control(IDC_ACCOUNT), WM_SYSCHAR, L'f', altIsDown);
    EXPECT_TRUE(eventually([&] { return program.details() == offline; })) << "Alt+F goes offline";
    PostMessageW(program.control(IDC_ACCOUNT), WM_SYSCHAR, L'o', altIsDown);
    EXPECT_TRUE(eventually([&] { return program.details().empty(); })) << "Alt+O signs out";
    program.press(IDC_ACCOUNT, VK_ESCAPE);
    EXPECT_EQ(program.status(), 0u) << "Escape closes";
}

}  // namespace
