#include "login/hosting/LibraryFile.h"

#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <cwchar>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>

namespace OrvelLoginClientCLR {

namespace {

// The module that contains this function: the DLL, not the host program.
HMODULE thisModule(DWORD flags) {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | flags, reinterpret_cast<LPCWSTR>(&thisModule), &module);
    return module;
}

std::wstring modulePath(HMODULE module) {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(module, &path[0], static_cast<DWORD>(path.size()));
        if (length < path.size()) {  // otherwise the path was truncated: the system does not return the length it needs
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

}  // namespace

std::wstring libraryPath() {
    return modulePath(thisModule(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT));
}

std::wstring beside(const std::wstring& path, const wchar_t* name) {
    return path.substr(0, path.find_last_of(L'\\') + 1) + name;
}

std::vector<std::wstring> loadedLibraries() {
    std::vector<HMODULE> modules(4096);  // more than any process has
    const auto size = static_cast<DWORD>(modules.size() * sizeof(HMODULE));
    DWORD filled = 0;
    EnumProcessModules(GetCurrentProcess(), modules.data(), size, &filled);
    modules.resize(std::min(size, filled) / sizeof(HMODULE));
    std::vector<std::wstring> libraries;
    for (const HMODULE module : modules) {
        std::wstring path = modulePath(module);
        const wchar_t* const name = path.c_str() + path.find_last_of(L'\\') + 1;
        if (_wcsicmp(name, L"orvellogin.dll") == 0 || _wcsicmp(name, L"orvelloginc.dll") == 0) {
            libraries.push_back(std::move(path));
        }
    }
    return libraries;
}

std::wstring withoutLongPathPrefix(const std::wstring& path) {
    constexpr std::wstring_view prefix = LR"(\\?\)";
    constexpr std::wstring_view share = LR"(\\?\UNC\)";
    if (_wcsnicmp(path.c_str(), share.data(), share.size()) == 0) {
        return L"\\\\" + path.substr(share.size());
    }
    const bool onDrive = path.size() > prefix.size() && path.compare(0, prefix.size(), prefix) == 0 &&
                         path.compare(prefix.size() + 1, 2, L":\\") == 0;
    return onDrive ? path.substr(prefix.size()) : path;
}

std::wstring fileVersion(const std::wstring& path) {
    // Not by version.dll: as an import, Windows would take a file of that name from the program's folder. The fixed
    // part follows the block's header of 6 bytes, its name and 2 bytes of padding.
    constexpr DWORD fixedAt = 40;
    struct Unload {
        void operator()(HMODULE module) const { FreeLibrary(module); }
    };
    const std::unique_ptr<std::remove_pointer_t<HMODULE>, Unload> file(
        LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    const HRSRC resource = file ? FindResourceW(file.get(), MAKEINTRESOURCEW(VS_VERSION_INFO), VS_FILE_INFO) : nullptr;
    if (!resource || SizeofResource(file.get(), resource) < fixedAt + sizeof(VS_FIXEDFILEINFO)) {
        return std::wstring();
    }
    const auto* block = static_cast<const unsigned char*>(LockResource(LoadResource(file.get(), resource)));
    const auto* fixed = reinterpret_cast<const VS_FIXEDFILEINFO*>(block + fixedAt);
    return std::to_wstring(HIWORD(fixed->dwFileVersionMS)) + L"." + std::to_wstring(LOWORD(fixed->dwFileVersionMS)) +
           L"." + std::to_wstring(HIWORD(fixed->dwFileVersionLS)) + L"." +
           std::to_wstring(LOWORD(fixed->dwFileVersionLS));
}

void pinLibrary() {
    thisModule(GET_MODULE_HANDLE_EX_FLAG_PIN);
}

}  // namespace OrvelLoginClientCLR
