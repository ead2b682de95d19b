#include "SigninProgram.h"

#include <commctrl.h>

#include <stdexcept>

#include "examples/signin-window/resource.h"

namespace {

constexpr wchar_t desktopName[] = L"signin_window_test";

std::wstring besideThis(const wchar_t* name) {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring self = path;
    return self.substr(0, self.rfind(L'\\') + 1) + name;
}

Handle start(std::wstring commandLine, const wchar_t* desktop) {
    STARTUPINFOW info = {};
    info.cb = sizeof info;
    info.lpDesktop = const_cast<wchar_t*>(desktop);
    PROCESS_INFORMATION started = {};
    if (!CreateProcessW(nullptr, &commandLine[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &info, &started)) {
        throw std::runtime_error("a program does not start");
    }
    CloseHandle(started.hThread);
    return Handle(started.hProcess);
}

/// A desktop with a display. The default one has none as long as any program runs that was started without.
/// It has a size of its own, so that Wine draws the windows' frames, there being no window manager.
class Desktop {
public:
    Desktop() : explorer(start(std::wstring(L"explorer.exe /desktop=") + desktopName + L",800x600", nullptr)) {
        const bool entered = eventually([] {
            const HDESK desktop = OpenDesktopW(desktopName, 0, FALSE, GENERIC_ALL);
            return desktop && SetThreadDesktop(desktop);  // stays open: a thread's desktop cannot be closed
        });
        if (!entered) {
            throw std::runtime_error("there is no desktop; is there a display?");
        }
    }
    ~Desktop() { TerminateProcess(explorer.get(), 0); }

private:
    Handle explorer;
};

/// Memory in the program's process: the list's messages are not carried across.
class Remote {
public:
    Remote(HANDLE processIn, std::size_t size)
        : process(processIn), memory(VirtualAllocEx(process, nullptr, size, MEM_COMMIT, PAGE_READWRITE)) {}
    ~Remote() { VirtualFreeEx(process, memory, 0, MEM_RELEASE); }
    Remote(const Remote&) = delete;
    Remote& operator=(const Remote&) = delete;

    const HANDLE process;
    void* const memory;
};

}  // namespace

bool eventually(const std::function<bool()>& condition) {
    for (const ULONGLONG end = GetTickCount64() + 10000; GetTickCount64() < end; Sleep(10)) {
        if (condition()) {
            return true;
        }
    }
    return false;
}

SigninProgram::SigninProgram(const wchar_t* commands) {
    static const Desktop desktop;
    SetEnvironmentVariableW(L"ORVEL_STANDIN", commands);
    process = start(L"\"" + besideThis(L"signin-window.exe") + L"\"", desktopName);
    const bool open = eventually([this] {
        while ((window = FindWindowExW(nullptr, window, L"#32770", L"Sign in"))) {
            DWORD owner = 0;
            GetWindowThreadProcessId(window, &owner);
            if (owner == GetProcessId(process.get()) && IsWindowVisible(window)) {
                return true;
            }
        }
        return !running();
    });
    if (!open || !window) {
        throw std::runtime_error("the window does not open");
    }
}

SigninProgram::~SigninProgram() {
    TerminateProcess(process.get(), 1);
    WaitForSingleObject(process.get(), 10000);
}

std::wstring SigninProgram::text(int id) const {
    std::wstring result(1000, L'\0');
    result.resize(static_cast<std::size_t>(
        SendMessageW(control(id), WM_GETTEXT, result.size(), reinterpret_cast<LPARAM>(&result[0]))));
    return result;
}

std::map<std::wstring, std::wstring> SigninProgram::details() const {
    struct Cell {
        LVITEMW item;
        wchar_t text[200];
    };
    const Remote remote(process.get(), sizeof(Cell));
    const auto read = [&](int row, int column) {
        auto* there = static_cast<Cell*>(remote.memory);
        Cell cell = {};
        cell.item.iSubItem = column;
        cell.item.pszText = there->text;
        cell.item.cchTextMax = 200;
        WriteProcessMemory(remote.process, there, &cell, sizeof cell, nullptr);
        SendMessageW(control(IDC_DETAILS), LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                     reinterpret_cast<LPARAM>(&there->item));
        ReadProcessMemory(remote.process, there, &cell, sizeof cell, nullptr);
        return std::wstring(cell.text);
    };
    std::map<std::wstring, std::wstring> result;
    const auto rows = static_cast<int>(SendMessageW(control(IDC_DETAILS), LVM_GETITEMCOUNT, 0, 0));
    for (int row = 0; row < rows; ++row) {
        result[read(row, 0)] = read(row, 1);
    }
    return result;
}

void SigninProgram::type(int id, const wchar_t* text) {
    SendMessageW(control(id), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
}

void SigninProgram::click(int id) {
    SendMessageW(control(id), BM_CLICK, 0, 0);
}

void SigninProgram::signIn(const wchar_t* account, const wchar_t* password) {
    type(IDC_ACCOUNT, account);
    type(IDC_PASSWORD, password);
    click(IDC_SIGN_IN);
}

std::wstring SigninProgram::outcome() const {
    return eventually([this] { return enabled(IDC_ACCOUNT); }) ? text(IDC_STATUS) : L"still running";
}

bool SigninProgram::answers() const {
    return SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_ABORTIFHUNG, 1000, nullptr) != 0;
}

int SigninProgram::close() {
    PostMessageW(window, WM_CLOSE, 0, 0);
    return exitCode();
}

int SigninProgram::exitCode() const {
    DWORD code = 0;
    return running(10000) || !GetExitCodeProcess(process.get(), &code) ? -1 : static_cast<int>(code);
}
