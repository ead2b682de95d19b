#pragma once

#include <windows.h>

#include <shlwapi.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "orvsecutils/platform/handles.h"
#include "tests/temporary_folder.h"

/// A profile folder and a logging switch of the test's own, for the programs that it starts. Puts back what it changes;
/// one at a time in the whole session, whichever test program it belongs to. The profile folder moves under Wine only.
class sandbox {
public:
    sandbox() : turn(CreateMutexW(nullptr, FALSE, L"orvsecutils.tests.sandbox")) {
        WaitForSingleObject(turn.get(), INFINITE);
        moveprofile(profile);
    }

    ~sandbox() {
        clearswitch(HKEY_CURRENT_USER);
        clearswitch(HKEY_LOCAL_MACHINE);
        RegDeleteKeyValueW(HKEY_CURRENT_USER, shellfolders, profileid);
        ReleaseMutex(turn.get());
    }

    sandbox(const sandbox&) = delete;
    sandbox& operator=(const sandbox&) = delete;

    void moveprofile(const std::filesystem::path& folder) {
        RegSetKeyValueW(HKEY_CURRENT_USER, shellfolders, profileid, REG_SZ, folder.c_str(),
                        (folder.native().size() + 1) * sizeof(wchar_t));
    }

    void setswitch(HKEY hive, DWORD type, const void* data, DWORD bytes) {
        const orvsecutils::registrykey key = debuggroup(hive);
        RegSetValueExW(key.get(), L"Logging", 0, type, static_cast<const BYTE*>(data), bytes);
    }

    void setswitch(HKEY hive, DWORD number) { setswitch(hive, REG_DWORD, &number, sizeof number); }

    void clearswitch(HKEY hive) {
        RegDeleteValueW(debuggroup(hive).get(), L"Logging");
        for (const wchar_t* path :
             {L"software\\Orvel\\LoginManager\\Debug", L"software\\Orvel\\LoginManager", L"software\\Orvel"}) {
            HKEY key = nullptr;
            DWORD keys = 1;
            DWORD values = 1;
            RegOpenKeyExW(hive, path, 0, KEY_READ | KEY_WOW64_64KEY, &key);
            const orvsecutils::registrykey owner(key);
            RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values, nullptr, nullptr,
                             nullptr, nullptr);
            if (keys == 0 && values == 0) {
                RegDeleteKeyExW(hive, path, KEY_WOW64_64KEY, 0);
            }
        }
    }

    std::filesystem::path folder() const { return profile / "Orvel" / "LoginManager"; }
    std::filesystem::path log() const { return folder() / "orvsec.log"; }

    struct outcome {
        DWORD status;
        std::string output;
        std::string errors;
    };

    /// A program of the tests' folder under way; its output goes to files of the sandbox.
    class program {
    public:
        program(const sandbox& owner, const std::wstring& commandline) {
            static int count = 0;
            const std::wstring number = std::to_wstring(++count);
            output = owner.profile / (L"output " + number);
            errors = owner.profile / (L"errors " + number);
            const orvsecutils::filehandle out = inheritable(output);
            const orvsecutils::filehandle err = inheritable(errors);
            STARTUPINFOW start = {};
            start.cb = sizeof start;
            start.dwFlags = STARTF_USESTDHANDLES;
            start.hStdOutput = out.get();
            start.hStdError = err.get();
            wchar_t own[MAX_PATH];
            GetModuleFileNameW(nullptr, own, MAX_PATH);
            PathRemoveFileSpecW(own);
            std::wstring line = L"\"" + std::wstring(own) + L"\\" + commandline;
            line.insert(line.find(L".exe") + 4, L"\"");
            PROCESS_INFORMATION info = {};
            if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &info)) {
                process.reset(info.hProcess);
                CloseHandle(info.hThread);
            }
        }

        outcome wait() {
            DWORD status = 0xFFFF;
            WaitForSingleObject(process.get(), INFINITE);
            GetExitCodeProcess(process.get(), &status);
            return {status, read(output), read(errors)};
        }

        std::string outputsofar() const { return read(output); }
        void end() { TerminateProcess(process.get(), 0); }

    private:
        static orvsecutils::filehandle inheritable(const std::filesystem::path& path) {
            // Deletable while it is open: Wine's desktop process inherits it when a program is the first to need one.
            SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
            return orvsecutils::filehandle(CreateFileW(path.c_str(), FILE_APPEND_DATA,
                                                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherit,
                                                       CREATE_ALWAYS, 0, nullptr));
        }

        std::filesystem::path output;
        std::filesystem::path errors;
        orvsecutils::filehandle process;
    };

    outcome run(const std::wstring& commandline) const { return program(*this, commandline).wait(); }

    /// A file as its bytes are; empty when it is not there.
    static std::string read(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    /// The file's lines; each must end as a text file's do.
    static std::vector<std::string> lines(const std::string& text) {
        std::vector<std::string> result;
        for (std::size_t from = 0, to; (to = text.find("\r\n", from)) != std::string::npos; from = to + 2) {
            result.push_back(text.substr(from, to - from));
        }
        return result;
    }

private:
    static constexpr wchar_t shellfolders[] =
        L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
    static constexpr wchar_t profileid[] = L"{5E6C858F-0E22-4760-9AFE-EA3317B67173}";

    static orvsecutils::registrykey debuggroup(HKEY hive) {
        HKEY key = nullptr;
        RegCreateKeyExW(hive, L"software\\Orvel\\LoginManager\\Debug", 0, nullptr, 0,
                        KEY_READ | KEY_WRITE | KEY_WOW64_64KEY, nullptr, &key, nullptr);
        return orvsecutils::registrykey(key);
    }

    orvsecutils::filehandle turn;
    const temporary_folder temporary;
    const std::filesystem::path& profile = temporary.path;
};
