#pragma once

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>

#include "orvsecutils/platform/windows/handles.h"

/// The bytes of a file; empty if it does not exist.
inline std::string contentof(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

/// Waits until `condition` is true. Returns false if it is not within ten seconds.
inline bool eventually(const std::function<bool()>& condition) {
    for (const ULONGLONG end = GetTickCount64() + 10000; GetTickCount64() < end; Sleep(10)) {
        if (condition()) {
            return true;
        }
    }
    return false;
}

/// A running program. Its output goes to files in its working folder.
class program {
public:
    struct result {
        DWORD status;
        std::string output;  ///< the bytes as written, with CR LF
        std::string errors;
    };

    /// Starts `executable` with `folder` as its working folder. A relative path is one in the test program's folder.
    /// `desktop`: null for the caller's.
    program(const std::filesystem::path& executable, const std::wstring& arguments, const std::filesystem::path& folder,
            const wchar_t* desktop = nullptr) {
        static int count = 0;
        const std::wstring number = std::to_wstring(++count);
        output = folder / (L"output " + number);
        errors = folder / (L"errors " + number);
        const orvsecutils::filehandle out = inheritable(output);
        const orvsecutils::filehandle err = inheritable(errors);
        STARTUPINFOW start = {};
        start.cb = sizeof start;
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdOutput = out.get();
        start.hStdError = err.get();
        start.lpDesktop = const_cast<wchar_t*>(desktop);
        const std::filesystem::path file = ownfolder() / executable;
        std::wstring line = L"\"" + file.native() + L"\" " + arguments;
        PROCESS_INFORMATION info = {};
        if (!CreateProcessW(file.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, folder.c_str(), &start,
                            &info)) {
            throw std::runtime_error("cannot start " + executable.string());
        }
        process.reset(info.hProcess);
        CloseHandle(info.hThread);
    }

    result wait() const {
        ended(INFINITE);
        return {status(), contentof(output), contentof(errors)};
    }

    /// Whether it has ended, or does within `milliseconds`.
    bool ended(DWORD milliseconds = 0) const {
        return WaitForSingleObject(process.get(), milliseconds) == WAIT_OBJECT_0;
    }

    /// The exit status; STILL_ACTIVE before the end.
    DWORD status() const {
        DWORD code = 0;
        GetExitCodeProcess(process.get(), &code);
        return code;
    }

    HANDLE handle() const { return process.get(); }

    std::string outputsofar() const { return contentof(output); }
    void end() const { TerminateProcess(process.get(), 0); }

    /// The test program's folder, which also contains what is built with it.
    static std::filesystem::path ownfolder() {
        wchar_t path[1024];
        GetModuleFileNameW(nullptr, path, 1024);
        return std::filesystem::path(path).parent_path();
    }

private:
    static orvsecutils::filehandle inheritable(const std::filesystem::path& path) {
        // Deletable while it is open: Wine's desktop process inherits the handle from the first program that needs it.
        SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
        return orvsecutils::filehandle(CreateFileW(path.c_str(), FILE_APPEND_DATA,
                                                   FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherit,
                                                   CREATE_ALWAYS, 0, nullptr));
    }

    std::filesystem::path output;
    std::filesystem::path errors;
    orvsecutils::kernelhandle process;
};
