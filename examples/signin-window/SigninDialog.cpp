#include "SigninDialog.h"

#include <commctrl.h>

#include <string>
#include <thread>
#include <utility>

#include "texts.h"

namespace {

constexpr wchar_t askingForDetails[] = L"Asking for the details…";

/// How long the process waits for the manager after the window was closed, in milliseconds.
constexpr DWORD patience = 2000;

}  // namespace

int SigninDialog::run(HINSTANCE instance) {
    const INITCOMMONCONTROLSEX classes = {sizeof classes, ICC_LISTVIEW_CLASSES | ICC_PROGRESS_CLASS};
    InitCommonControlsEx(&classes);
    SigninDialog dialog;
    const INT_PTR result =
        DialogBoxParamW(instance, MAKEINTRESOURCEW(IDD_SIGNIN), nullptr, procedure, reinterpret_cast<LPARAM>(&dialog));
    return result == -1 ? 1 : 0;
}

// noexcept, because no exception may pass through the system's stack frames: one that reaches this function (out of
// memory) ends the process.
INT_PTR CALLBACK SigninDialog::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, DWLP_USER, lParam);
        reinterpret_cast<SigninDialog*>(lParam)->open(window);
        return TRUE;
    }
    auto* dialog = reinterpret_cast<SigninDialog*>(GetWindowLongPtrW(window, DWLP_USER));
    return dialog && dialog->handle(message, wParam, lParam);  // the first messages come before WM_INITDIALOG
}

void SigninDialog::open(HWND windowIn) {
    window = windowIn;
    worker.emplace(window);

    const HWND list = item(IDC_DETAILS);
    ListView_SetExtendedListViewStyle(list, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER);
    RECT area;
    GetClientRect(list, &area);
    const std::pair<const wchar_t*, int> columns[] = {{L"Name", area.right / 3}, {L"Value", area.right * 2 / 3}};
    for (int i = 0; i < 2; ++i) {
        LVCOLUMNW column = {};
        column.mask = LVCF_TEXT | LVCF_WIDTH;
        column.pszText = const_cast<wchar_t*>(columns[i].first);
        column.cx = columns[i].second;
        ListView_InsertColumn(list, i, &column);
    }
    SendMessageW(item(IDC_PROGRESS), PBM_SETMARQUEE, TRUE, 0);
    showStatus(L"Nobody is signed in.");
    enableControls();
}

bool SigninDialog::handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_SETCURSOR:
            if (!busy || LOWORD(lParam) != HTCLIENT) {
                return false;
            }
            SetCursor(LoadCursorW(nullptr, IDC_APPSTARTING));
            SetWindowLongPtrW(window, DWLP_MSGRESULT, TRUE);
            return true;
        case WM_COMMAND:
            command(LOWORD(wParam), HIWORD(wParam));
            return true;
        case WM_APP_REQUEST_DONE:
            requestDone();
            return true;
        // This window, another part of the host, or the manager itself may have caused these.
        case WM_APP_SIGNED_IN:
            signedIn = true;
            if (!busy) {
                ask({Request::refresh, offline()}, askingForDetails);
            }
            return true;
        case WM_APP_SIGNED_OUT:
            signedIn = false;
            ListView_DeleteAllItems(item(IDC_DETAILS));
            showStatus(L"Signed out.");
            if (!busy) {
                enableControls();
                focusOn(IDC_ACCOUNT);
            }
            return true;
        default:
            return false;
    }
}

void SigninDialog::command(int id, int notification) {
    if (id == IDCANCEL) {  // the Escape key or the close button
        close();
    } else if ((id == IDC_ACCOUNT || id == IDC_PASSWORD) && notification == EN_CHANGE) {
        enableControls();
    } else if (busy || notification != BN_CLICKED) {
        return;
    } else if (id == IDC_SIGN_IN && canSignIn()) {
        std::wstring account(static_cast<std::size_t>(GetWindowTextLengthW(item(IDC_ACCOUNT))), L'\0');
        GetDlgItemTextW(window, IDC_ACCOUNT, &account[0], static_cast<int>(account.size()) + 1);
        ask({Request::signIn, offline(), std::move(account), takePassword()}, L"Signing in…");
    } else if (id == IDC_SIGN_OUT) {
        ask({Request::signOut, offline()}, L"Signing out…");
    } else if (id == IDC_OFFLINE && signedIn) {
        ask({Request::refresh, offline()}, askingForDetails);
    }
}

void SigninDialog::close() {
    // If the manager does not return from a call or from its disposal, end the process anyway: such a call cannot be
    // cancelled.
    std::thread([] {
        Sleep(patience);
        TerminateProcess(GetCurrentProcess(), 0);
    }).detach();
    EndDialog(window, 0);
}

void SigninDialog::ask(Request request, const wchar_t* progress) {
    busy = true;
    action = request.action;
    focus = GetFocus();
    SetFocus(item(IDC_DETAILS));  // this control stays enabled; disabling the focused one would lose the keyboard focus
    enableControls();
    showStatus(progress);
    worker->ask(std::move(request));
}

void SigninDialog::requestDone() {
    busy = false;
    const RequestResult result = worker->takeResult();
    show(result);
    enableControls();
    // Move the focus to the next step, unless the user has moved it meanwhile.
    if (GetFocus() == item(IDC_DETAILS)) {
        if (action == Request::signIn) {
            focusOn(result.details.empty() ? IDC_PASSWORD : IDC_SIGN_OUT);
        } else if (action == Request::signOut) {
            focusOn(signedIn ? IDC_SIGN_OUT : IDC_ACCOUNT);
        } else {
            focusOn(GetDlgCtrlID(focus));
        }
    }
}

Secret SigninDialog::takePassword() {
    const HWND edit = item(IDC_PASSWORD);
    const int length = GetWindowTextLengthW(edit);
    Secret password(static_cast<std::size_t>(length));
    GetWindowTextW(edit, password.data(), password.capacity());
    // Overwritten first, because the control keeps its old memory when it is emptied.
    SetWindowTextW(edit, std::wstring(static_cast<std::size_t>(length), L'*').c_str());
    SetWindowTextW(edit, L"");
    return password;
}

void SigninDialog::show(const RequestResult& result) {
    showStatus(result.status);
    if (result.details.empty()) {
        return;  // a refused sign-in does not sign out the current user, so keep the details
    }
    const HWND list = item(IDC_DETAILS);
    ListView_DeleteAllItems(list);
    int row = 0;
    for (const auto& [name, value] : result.details) {
        LVITEMW entry = {};
        entry.mask = LVIF_TEXT;
        entry.iItem = row++;
        entry.pszText = const_cast<wchar_t*>(name);
        const int at = ListView_InsertItem(list, &entry);
        ListView_SetItemText(list, at, 1, const_cast<wchar_t*>(value.c_str()));
    }
}

void SigninDialog::showStatus(const std::wstring& text) {
    SetDlgItemTextW(window, IDC_STATUS, withLineEnds(text).c_str());
}

// While somebody is signed in, the Enter key must not sign in again with the empty password field.
bool SigninDialog::canSignIn() const {
    return !busy && GetWindowTextLengthW(item(IDC_ACCOUNT)) > 0 &&
           (!signedIn || GetWindowTextLengthW(item(IDC_PASSWORD)) > 0);
}

void SigninDialog::enableControls() {
    EnableWindow(item(IDC_ACCOUNT), !busy);
    EnableWindow(item(IDC_PASSWORD), !busy);
    EnableWindow(item(IDC_OFFLINE), !busy);
    EnableWindow(item(IDC_SIGN_IN), canSignIn());
    EnableWindow(item(IDC_SIGN_OUT), !busy && signedIn);
    ShowWindow(item(IDC_PROGRESS), busy ? SW_SHOWNA : SW_HIDE);
}

void SigninDialog::focusOn(int id) {
    if (IsWindowEnabled(item(id))) {
        SendMessageW(window, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item(id)), TRUE);
    }
}
