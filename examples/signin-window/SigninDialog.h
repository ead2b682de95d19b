#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "ClientWorker.h"
#include "Secret.h"
#include "resource.h"

/// The window. It never calls the login client itself, so it stays responsive.
class SigninDialog {
public:
    /// Shows the window until it is closed. Returns the program's exit code.
    static int run(HINSTANCE instance);

private:
    static INT_PTR CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    void open(HWND windowIn);
    bool handle(UINT message, WPARAM wParam, LPARAM lParam);
    void command(int id, int notification);
    void close();

    void ask(Request request, const wchar_t* progress);
    void requestDone();
    Secret takePassword();
    void show(const RequestResult& result);
    void showStatus(const std::wstring& text);
    bool canSignIn() const;
    void enableControls();
    void focusOn(int id);
    HWND item(int id) const { return GetDlgItem(window, id); }
    bool offline() const { return IsDlgButtonChecked(window, IDC_OFFLINE) == BST_CHECKED; }

    HWND window = nullptr;
    HWND focus = nullptr;   // the control that had the focus before the running request
    bool signedIn = false;  // according to the manager's events
    bool busy = false;
    Request::Action action = Request::refresh;  // of the last request
    std::optional<ClientWorker> worker;
};
