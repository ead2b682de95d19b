#pragma once

#include <windows.h>

#include <cstdint>

#include "orvsecutils/platform/windows/handles.h"

/// Whether Wine runs the program. Tests ask this function, and nothing else, where Wine and Windows are known to
/// differ.
inline bool onwine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

/// Whether the program may write the machine's part of the registry. A test that needs this skips itself otherwise.
inline bool administrator() {
    HKEY key = nullptr;
    const bool opened = RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"software", 0, KEY_CREATE_SUB_KEY, &key) == ERROR_SUCCESS;
    const orvsecutils::registrykey owner(key);
    return opened;
}
/// A number that grows with each handle that the process keeps open.
inline std::uintptr_t openhandles() {
    DWORD count = 0;
    if (!onwine() && GetProcessHandleCount(GetCurrentProcess(), &count)) {
        return count;
    }
    // Wine does not count them, but gives a new handle the lowest free number.
    const orvsecutils::kernelhandle next(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    return reinterpret_cast<std::uintptr_t>(next.get()) / 4;
}

inline constexpr char needsrights[] = "needs administrator rights: it writes what all users share";
