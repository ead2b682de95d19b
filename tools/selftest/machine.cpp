#include "tools/selftest/machine.h"

#include <windows.h>

#include <array>
#include <iterator>

#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"

namespace selftest {

using orvsecutils::registrykey;

namespace {

constexpr wchar_t productkey[] = L"software\\Orvel";

struct place {
    HKEY hive;
    REGSAM view;
    const char* name;
};
// A 32-bit and a 64-bit program see different keys of the machine, but the same ones of the user.
const place places[] = {
    {HKEY_CURRENT_USER, 0, "the user's settings (HKEY_CURRENT_USER\\software\\Orvel)"},
    {HKEY_LOCAL_MACHINE, KEY_WOW64_64KEY, "the machine's settings (HKEY_LOCAL_MACHINE\\software\\Orvel)"},
    {HKEY_LOCAL_MACHINE, KEY_WOW64_32KEY,
     "the machine's 32-bit settings (HKEY_LOCAL_MACHINE\\software\\WOW6432Node\\Orvel)"},
};

registrykey open(HKEY hive, const wchar_t* path, REGSAM access) {
    HKEY key = nullptr;
    return registrykey(RegOpenKeyExW(hive, path, 0, access, &key) == ERROR_SUCCESS ? key : nullptr);
}

std::filesystem::path productsfolder() {
    const std::string profile = orvsecutils::currentplatform().profilefolder();
    return profile.empty() ? std::filesystem::path() : std::filesystem::path(orvsecutils::toutf16(profile)) / L"Orvel";
}

// Declared by the system's own documentation only with a prototype to look up.
template <class Function>
Function systemfunction(const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
}

std::string dotnetversion() {
    wchar_t version[64] = {};
    DWORD size = sizeof version - sizeof(wchar_t), release = 0, releasesize = sizeof release;
    const registrykey key =
        open(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\NET Framework Setup\\NDP\\v4\\Full", KEY_QUERY_VALUE);
    if (!key ||
        RegQueryValueExW(key.get(), L"Version", nullptr, nullptr, reinterpret_cast<BYTE*>(version), &size) != 0) {
        return "none is registered";
    }
    RegQueryValueExW(key.get(), L"Release", nullptr, nullptr, reinterpret_cast<BYTE*>(&release), &releasesize);
    return orvsecutils::toutf8(version) + ", release " + std::to_string(release);
}

}  // namespace

bool runs64bitprograms() {
    SYSTEM_INFO system = {};
    GetNativeSystemInfo(&system);
    return system.wProcessorArchitecture != PROCESSOR_ARCHITECTURE_INTEL;
}

bool systemhas(const std::string& name) {
    wchar_t folder[MAX_PATH] = {};
    GetSystemDirectoryW(folder, MAX_PATH);
    std::error_code ignored;
    return std::filesystem::exists(std::filesystem::path(folder) / name, ignored);
}

std::string describemachine() {
    // Tells the true version, whatever a program's manifest says.
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof version;
    if (const auto get = systemfunction<LONG(WINAPI*)(OSVERSIONINFOW*)>("RtlGetVersion")) {
        get(&version);
    }
    std::string text = "Windows: " + std::to_string(version.dwMajorVersion) + "." +
                       std::to_string(version.dwMinorVersion) + "." + std::to_string(version.dwBuildNumber) +
                       (runs64bitprograms() ? ", 64-bit" : ", 32-bit");
    if (const auto wine = systemfunction<const char* (*)()>("wine_get_version")) {
        text += std::string(", which is Wine ") + wine();
    }
    text += "\n.NET Framework 4: " + dotnetversion();
    text += std::string("\nadministrator rights: ") +
            (open(HKEY_LOCAL_MACHINE, L"software", KEY_CREATE_SUB_KEY) ? "yes" : "no") + "\n";
    return text;
}

std::string whattheproductkeeps() {
    for (const place& row : places) {
        if (open(row.hive, productkey, KEY_QUERY_VALUE | row.view)) {
            return row.name;
        }
    }
    const std::filesystem::path folder = productsfolder();
    std::error_code ignored;
    return !folder.empty() && std::filesystem::exists(folder, ignored)
               ? "the log's folder (" + orvsecutils::toutf8(folder.native()) + ")"
               : std::string();
}

void removewhattestsleft() {
    for (const place& row : places) {
        if (const registrykey software = open(row.hive, L"software", KEY_ALL_ACCESS | row.view)) {
            RegDeleteTreeW(software.get(), L"Orvel");
        }
    }
    std::error_code ignored;
    if (const std::filesystem::path folder = productsfolder(); !folder.empty()) {
        std::filesystem::remove_all(folder, ignored);
    }
}

scratchfolder::scratchfolder()
    : path(std::filesystem::temp_directory_path() / (L"orvel selftest " + std::to_wstring(GetCurrentProcessId()))) {
    std::filesystem::create_directories(path);
    for (const wchar_t* name : {L"TEMP", L"TMP"}) {
        SetEnvironmentVariableW(name, path.c_str());
    }
}

scratchfolder::~scratchfolder() {
    // The system may hold the files of a program for a moment after its end.
    std::error_code failed;
    for (int attempt = 0; attempt < 100 && (std::filesystem::remove_all(path, failed), failed); ++attempt) {
        Sleep(20);
    }
}

}  // namespace selftest
