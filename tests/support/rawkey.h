#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>
#include <string_view>

#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"

constexpr REGSAM view64 = KEY_WOW64_64KEY;
constexpr REGSAM view32 = KEY_WOW64_32KEY;

/// The bytes of a text, as the registry stores them.
inline std::string bytesof(std::wstring_view units) {
    return std::string(reinterpret_cast<const char*>(units.data()), units.size() * sizeof(wchar_t));
}

/// A registry key in one view, created if it does not exist, for reading and writing raw bytes.
struct rawkey {
    rawkey(HKEY hive, REGSAM view, const std::string& path) {
        HKEY opened = nullptr;
        RegCreateKeyExW(hive, orvsecutils::toutf16(path).c_str(), 0, nullptr, 0, KEY_ALL_ACCESS | view, nullptr,
                        &opened, nullptr);
        key.reset(opened);
    }

    void write(const std::wstring& name, DWORD type, std::string bytes) const {
        const auto size = static_cast<DWORD>(bytes.size());
        bytes += "\x7F\x7F\x7F";  // the system would add a terminator that it happens to find behind the data
        if (RegSetValueExW(key.get(), name.c_str(), 0, type, reinterpret_cast<BYTE*>(bytes.data()), size) != 0) {
            throw std::runtime_error("the value cannot be written");
        }
    }

    /// "type:bytes" of a value, or ":" without one.
    std::string read(const std::wstring& name) const {
        char bytes[100];
        DWORD type = 0, size = sizeof bytes;
        return RegQueryValueExW(key.get(), name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(bytes), &size) == 0
                   ? std::to_string(type) + ":" + std::string(bytes, size)
                   : ":";
    }

    orvsecutils::registrykey key;
};

/// Deletes the key software\COMPANY: the user's, and the machine's in both views.
inline void removecompany(const std::wstring& company) {
    RegDeleteTreeW(HKEY_CURRENT_USER, (L"software\\" + company).c_str());
    for (const REGSAM view : {view64, view32}) {
        RegDeleteTreeW(rawkey(HKEY_LOCAL_MACHINE, view, "software").key.get(), company.c_str());
    }
}
