#pragma once

#include <windows.h>

#include <commctrl.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "examples/signin-window/resource.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

/// Asks again and again until the answer is yes; false when ten seconds did not bring it.
inline bool eventually(const std::function<bool()>& condition) {
    for (const ULONGLONG end = GetTickCount64() + 10000; GetTickCount64() < end; Sleep(10)) {
        if (condition()) {
            return true;
        }
    }
    return false;
}

/// A running signin-window.exe, used as a person would: by its controls.
class signin_program {
public:
    /// `commands`: what the login manager's stand-in does.
    explicit signin_program(const wchar_t* commands = L"") : process(start(commands)) {
        const bool open = eventually([this] {
            while ((window = FindWindowExW(nullptr, window, L"#32770", L"Sign in"))) {
                DWORD owner = 0;
                GetWindowThreadProcessId(window, &owner);
                if (owner == GetProcessId(process.handle()) && IsWindowVisible(window)) {
                    return true;
                }
            }
            return process.ended();
        });
        if (!open || !window) {
            throw std::runtime_error("the window does not open");
        }
    }
    ~signin_program() {
        process.end();
        process.ended(10000);
    }

    HWND control(int id) const { return GetDlgItem(window, id); }
    bool enabled(int id) const { return IsWindowEnabled(control(id)) != 0; }
    std::wstring text(int id) const {
        std::wstring result(1000, L'\0');
        result.resize(static_cast<std::size_t>(
            SendMessageW(control(id), WM_GETTEXT, result.size(), reinterpret_cast<LPARAM>(&result[0]))));
        return result;
    }
    /// The control with the focus, by its number.
    int focus() const {
        GUITHREADINFO info = {};
        info.cbSize = sizeof info;
        GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
        return GetDlgCtrlID(info.hwndFocus);
    }
    /// The rows of the list, as "name=value".
    std::vector<std::wstring> details() const {
        // The list's messages are not carried across, so they work on memory in its process.
        struct cell {
            LVITEMW item;
            wchar_t text[200];
        };
        auto* there =
            static_cast<cell*>(VirtualAllocEx(process.handle(), nullptr, sizeof(cell), MEM_COMMIT, PAGE_READWRITE));
        const auto read = [&](int row, int column) {
            cell here = {};
            here.item.iSubItem = column;
            here.item.pszText = there->text;
            here.item.cchTextMax = 200;
            WriteProcessMemory(process.handle(), there, &here, sizeof here, nullptr);
            SendMessageW(control(IDC_DETAILS), LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                         reinterpret_cast<LPARAM>(there));
            ReadProcessMemory(process.handle(), there, &here, sizeof here, nullptr);
            return std::wstring(here.text);
        };
        std::vector<std::wstring> result(
            static_cast<std::size_t>(SendMessageW(control(IDC_DETAILS), LVM_GETITEMCOUNT, 0, 0)));
        for (std::size_t row = 0; row < result.size(); ++row) {
            result[row] = read(static_cast<int>(row), 0) + L"=" + read(static_cast<int>(row), 1);
        }
        VirtualFreeEx(process.handle(), there, 0, MEM_RELEASE);
        return result;
    }

    void click(int id) const { SendMessageW(control(id), BM_CLICK, 0, 0); }
    void press(int id, WPARAM key) const { PostMessageW(control(id), WM_KEYDOWN, key, 0); }
    void signin(const wchar_t* account, const wchar_t* password) const {
        SendMessageW(control(IDC_ACCOUNT), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(account));
        SendMessageW(control(IDC_PASSWORD), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(password));
        click(IDC_SIGN_IN);
    }
    /// What the status says once nothing is running any more.
    std::wstring outcome() const {
        return eventually([this] { return enabled(IDC_ACCOUNT); }) ? text(IDC_STATUS) : L"still running";
    }
    /// Asks the window to close. Returns the exit status, STILL_ACTIVE if the program does not end within seconds.
    DWORD close() const {
        PostMessageW(window, WM_CLOSE, 0, 0);
        return status();
    }
    DWORD status() const {
        process.ended(5000);
        return process.status();
    }

private:
    /// On a desktop of the tests' own, with a display: the default one has none as long as any program runs that was
    /// started without. It has a size, so that Wine draws the windows' frames, there being no window manager.
    program start(const wchar_t* commands) const {
        constexpr wchar_t desktop[] = L"signin_window_test";
        static struct shell {
            ~shell() { process.end(); }
            const temporary_folder folder;
            program process{L"C:\\windows\\explorer.exe", L"/desktop=signin_window_test,800x600", folder.path};
        } const owner;
        const bool entered = eventually([&] {
            const HDESK opened = OpenDesktopW(desktop, 0, FALSE, GENERIC_ALL);
            return opened && SetThreadDesktop(opened);  // stays open: a thread's desktop cannot be closed
        });
        if (!entered) {
            throw std::runtime_error("there is no desktop; is there a display?");
        }
        SetEnvironmentVariableW(L"ORVEL_STANDIN", commands);
        return program(L"signin-window.exe", L"", folder.path, desktop);
    }

    const temporary_folder folder;
    program process;

public:
    HWND window = nullptr;
};
