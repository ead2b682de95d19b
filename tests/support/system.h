#pragma once

#include <windows.h>

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
inline constexpr char needsrights[] = "needs administrator rights: it writes what all users share";
