#include "login/hosting/LibraryFile.h"

#include <windows.h>

#include <memory>
#include <type_traits>

namespace OrvelLoginClientCLR {

namespace {

// The module that contains this function: the DLL, not the host program.
HMODULE thisModule(DWORD flags) {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | flags, reinterpret_cast<LPCWSTR>(&thisModule), &module);
    return module;
}

}  // namespace

std::wstring libraryPath() {
    const HMODULE module = thisModule(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT);
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

std::wstring besideLibrary(const wchar_t* name) {
    const std::wstring path = libraryPath();
    return path.substr(0, path.find_last_of(L'\\') + 1) + name;
}

std::wstring withoutLongPathPrefix(const std::wstring& path) {
    static const std::wstring prefix = L"\\\\?\\";
    static const std::wstring share = prefix + L"UNC\\";
    if (path.compare(0, share.size(), share) == 0) {
        return L"\\\\" + path.substr(share.size());
    }
    return path.compare(0, prefix.size(), prefix) == 0 ? path.substr(prefix.size()) : path;
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
