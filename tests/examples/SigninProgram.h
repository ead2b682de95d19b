#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <type_traits>

struct CloseHandleOf {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<std::remove_pointer_t<HANDLE>, CloseHandleOf>;

/// Asks again and again until the answer is yes; false when ten seconds did not bring it.
bool eventually(const std::function<bool()>& condition);

/// A running signin-window.exe, on a desktop of the tests' own, used as a person would: by its controls.
class SigninProgram {
public:
    /// `commands`: what the login manager's stand-in does.
    explicit SigninProgram(const wchar_t* commands = L"");
    ~SigninProgram();

    HWND control(int id) const { return GetDlgItem(window, id); }
    std::wstring text(int id) const;
    bool enabled(int id) const { return IsWindowEnabled(control(id)) != 0; }
    /// The list: value by name.
    std::map<std::wstring, std::wstring> details() const;

    void type(int id, const wchar_t* text);
    void click(int id);
    void signIn(const wchar_t* account, const wchar_t* password);
    /// What the status line says once nothing is running any more.
    std::wstring outcome() const;
    /// Whether the window handles a message within a second.
    bool answers() const;
    bool running(DWORD milliseconds = 0) const { return WaitForSingleObject(process.get(), milliseconds) != 0; }
    /// Asks the window to close. Returns the exit code, or -1 when the program does not end.
    int close();
    int exitCode() const;

    HWND window = nullptr;

private:
    Handle process;
};
