#include "tools/orvdiag/systemfacts.h"

#include <windows.h>

#include <wtsapi32.h>

#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <utility>

#include "login/hosting/ClrRuntime.h"
#include "orvsecutils/platform/windows/handles.h"
#include "tools/orvdiag/diskfile.h"
#include "tools/orvdiag/image.h"
#include "tools/orvdiag/libraryfiles.h"
#include "tools/orvdiag/text.h"

namespace orvdiag {

namespace {

// A text or number below HKEY_LOCAL_MACHINE, in the 64-bit view; empty if it does not exist.
std::string machinevalue(const wchar_t* path, const wchar_t* name) {
    HKEY opened = nullptr;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ | KEY_WOW64_64KEY, &opened);
    const orvsecutils::registrykey key(opened);
    wchar_t data[256] = {};
    DWORD bytes = sizeof data - sizeof *data;  // the last unit stays zero, because the text may lack a terminator
    DWORD type = REG_NONE;
    if (!key || RegQueryValueExW(key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(data), &bytes) != 0) {
        return std::string();
    }
    DWORD number = 0;
    std::memcpy(&number, data, sizeof number);
    return type == REG_DWORD ? std::to_string(number) : toutf8lossy(std::wstring_view(data));
}

std::string joined(const wchar_t* path, std::initializer_list<std::pair<const char*, const wchar_t*>> parts,
                   std::string text = {}) {
    for (const auto& [label, name] : parts) {
        const std::string value = machinevalue(path, name);
        text += value.empty() ? value : (text.empty() ? "" : ", ") + std::string(label) + value;
    }
    return text.empty() ? "not registered" : text;
}

std::string versionof(const std::wstring& path) {
    const std::string version = fileversion(readfile(path).value_or(std::string()));
    return version.empty() ? "none" : version;
}

bool iselevated() {
    HANDLE opened = nullptr;
    OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened);
    const orvsecutils::kernelhandle token(opened);
    TOKEN_ELEVATION elevation = {};
    DWORD bytes = 0;
    return GetTokenInformation(opened, TokenElevation, &elevation, sizeof elevation, &bytes) &&
           elevation.TokenIsElevated != 0;
}

std::string searchpath() {
    std::wstring path(GetEnvironmentVariableW(L"PATH", nullptr, 0), L'\0');
    path.resize(GetEnvironmentVariableW(L"PATH", path.data(), static_cast<DWORD>(path.size())));
    return toutf8lossy(path);
}

}  // namespace

std::string windowsname(std::string product, int build) {
    const std::size_t at = product.find("Windows 10");
    if (build >= 22000 && at != std::string::npos) {
        product.replace(at, std::strlen("Windows 10"), "Windows 11");
    }
    return product;
}

std::string usernameofsession() {
    // By full path, so that no DLL of that name in this program's folder is loaded.
    wchar_t folder[MAX_PATH] = {};
    GetSystemDirectoryW(folder, MAX_PATH);
    const HMODULE library = LoadLibraryW((std::wstring(folder) + L"\\wtsapi32.dll").c_str());
    const auto query = reinterpret_cast<decltype(&WTSQuerySessionInformationW)>(
        reinterpret_cast<void*>(library ? GetProcAddress(library, "WTSQuerySessionInformationW") : nullptr));
    const auto release = reinterpret_cast<decltype(&WTSFreeMemory)>(
        reinterpret_cast<void*>(library ? GetProcAddress(library, "WTSFreeMemory") : nullptr));
    wchar_t* name = nullptr;
    DWORD bytes = 0;
    if (!query || !release || !query(nullptr, WTS_CURRENT_SESSION, WTSUserName, &name, &bytes)) {
        return std::string();
    }
    const std::unique_ptr<wchar_t, decltype(release)> owner(name, release);
    return toutf8lossy(std::wstring_view(name));
}

commandresult systemfacts() {
    constexpr wchar_t windows[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
    constexpr wchar_t framework[] = L"SOFTWARE\\Microsoft\\NET Framework Setup\\NDP\\v4\\Full";
    // Not GetWindowsDirectory, which returns a folder of the user's own on a Remote Desktop host.
    wchar_t folder[MAX_PATH] = {};
    GetSystemWindowsDirectoryW(folder, MAX_PATH);
    const std::string name = windowsname(machinevalue(windows, L"ProductName"),
                                         std::atoi(machinevalue(windows, L"CurrentBuildNumber").c_str()));
    std::vector<std::vector<std::string>> rows = {
        {"windows", joined(windows,
                           {{"", L"DisplayVersion"},
                            {"", L"CSDVersion"},
                            {"build ", L"CurrentBuildNumber"},
                            {"update revision ", L"UBR"}},
                           name)},
        {"netframework4", joined(framework, {{"", L"Version"}, {"release ", L"Release"}})},
        {"clr.dll", versionof(std::wstring(folder) + L"\\Microsoft.NET\\Framework" + (is64bit ? L"64" : L"") + L"\\" +
                              OrvelLoginClientCLR::runtimeVersion + L"\\clr.dll")},
        // On 64-bit Windows the system redirects a 32-bit process to SysWOW64.
        {"mscoree.dll", versionof(folder + std::wstring(L"\\System32\\mscoree.dll"))},
        {"elevated", iselevated() ? "yes" : "no"},
        {"sessionuser", usernameofsession()},
        {"PATH", searchpath()},
    };
    commandresult result = {0, std::string(), json::object()};
    for (auto& row : rows) {
        row[1] = oneline(row[1]);
        result.data[row[0]] = row[1];
    }
    const std::vector<std::string> programs = programswithlibrary();
    result.data["programs"] = programs;
    for (const std::string& program : programs) {
        rows.push_back({"program", oneline(program)});
    }
    result.text = table(rows);
    return result;
}

}  // namespace orvdiag
