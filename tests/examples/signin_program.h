#pragma once

#include <windows.h>

#include <commctrl.h>

#include <stdexcept>
#include <string>

#include "examples/signin-window/resource.h"
#include "tests/support/program.h"
#include "tests/support/system.h"
#include "tests/support/temporary_folder.h"

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
    /// The identifier of the control with the focus.
    int focus() const {
        GUITHREADINFO info = {};
        info.cbSize = sizeof info;
        GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
        return GetDlgCtrlID(info.hwndFocus);
    }
    /// The rows of the list, each as "name=value|".
    std::wstring details() const {
        // The system does not marshal the list's messages between processes, so they need memory in the list's process.
        constexpr int size = 200;
        struct cell {
            LVITEMW item;
            wchar_t text[size];
        };
        const HANDLE target = process.handle();
        auto* memory = static_cast<cell*>(VirtualAllocEx(target, nullptr, sizeof(cell), MEM_COMMIT, PAGE_READWRITE));
        std::wstring result;
        const LRESULT cells = SendMessageW(control(IDC_DETAILS), LVM_GETITEMCOUNT, 0, 0) * 2;
        for (int i = 0; i < cells; ++i) {
            cell local = {};
            local.item.iSubItem = i % 2;
            local.item.pszText = memory->text;
            local.item.cchTextMax = size;
            WriteProcessMemory(target, memory, &local, sizeof local, nullptr);
            SendMessageW(control(IDC_DETAILS), LVM_GETITEMTEXTW, i / 2, reinterpret_cast<LPARAM>(memory));
            ReadProcessMemory(target, memory, &local, sizeof local, nullptr);
            result += local.text + std::wstring(i % 2 ? L"|" : L"=");
        }
        VirtualFreeEx(target, memory, 0, MEM_RELEASE);
        return result;
    }

    void click(int id) const { SendMessageW(control(id), BM_CLICK, 0, 0); }
    void post(int id, UINT message, WPARAM key, LPARAM flags = 0) const {
        PostMessageW(control(id), message, key, flags);
    }
    void type(int id, const wchar_t* text) const {
        SendMessageW(control(id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
    }
    void signin(const wchar_t* account, const wchar_t* password) const {
        type(IDC_ACCOUNT, account);
        type(IDC_PASSWORD, password);
        click(IDC_SIGN_IN);
    }
    /// The status text as soon as no request is running.
    std::wstring finalstatus() const {
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
    /// Starts the program; under Wine on a desktop of its own, which has a display: the default desktop has none while
    /// a program runs that was started without one. The desktop has a size, so that Wine draws the window frames,
    /// because there is no window manager.
    program start(const wchar_t* commands) const {
        constexpr wchar_t desktop[] = L"signin_window_test";
        if (!onwine()) {
            SetEnvironmentVariableW(L"ORVEL_STANDIN", commands);
            return program(L"signin-window.exe", L"", folder.path);
        }
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
