#include "tools/orvdiag/storedvalues.h"

#include <windows.h>

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>
#include <tuple>

#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"
#include "orvsecutils/platform/windows/registryformat.h"
#include "orvsecutils/settings/productnames.h"
#include "tools/orvdiag/text.h"

namespace orvdiag {

using orvsecutils::registrykey;

namespace {

// The registry allows names of 16383 units; one more for the terminator.
constexpr DWORD namebufferunits = 16384;

// A 32-bit system has only one view.
bool hastwoviews() {
    BOOL wow64 = FALSE;
    return sizeof(void*) == 8 || (IsWow64Process(GetCurrentProcess(), &wow64) && wow64);
}

std::vector<registrylocation> registrylocations() {
    return hastwoviews() ? std::vector{registrylocation::user, registrylocation::machine, registrylocation::machine32}
                         : std::vector{registrylocation::user, registrylocation::machine};
}

// The user's hive has only one view, so there the view's flag has no effect.
registrykey open(registrylocation location, const std::string& group) {
    HKEY key = nullptr;
    RegOpenKeyExW(location == registrylocation::user ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE,
                  orvsecutils::toutf16(grouppath(librarygroup(group))).c_str(), 0,
                  KEY_READ | (location == registrylocation::machine32 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY), &key);
    return registrykey(key);
}

// Converts the text of a name or a value, and records in `row` if the library's strict conversion would reject it.
std::string taketext(std::wstring_view text, storedvalue& row) {
    try {
        return orvsecutils::toutf8(text);
    } catch (const std::range_error&) {
        row.badtext = true;
        return toutf8lossy(text);
    }
}

std::wstring expanded(const std::wstring& text) {
    std::wstring result(ExpandEnvironmentStringsW(text.c_str(), nullptr, 0), L'\0');
    result.resize(
        std::max<DWORD>(1, ExpandEnvironmentStringsW(text.c_str(), result.data(), static_cast<DWORD>(result.size()))));
    result.pop_back();
    return result;
}

std::string kindof(DWORD type) {
    switch (type) {
        case REG_DWORD:
            return "number";
        case REG_SZ:
        case REG_EXPAND_SZ:
            return "text";
        case REG_MULTI_SZ:
            return "list";
        case REG_BINARY:
            return "binary";
        case REG_QWORD:
            return "64-bit number";
        default:
            return "type " + std::to_string(type);
    }
}

void decode(DWORD type, const std::vector<wchar_t>& data, DWORD bytes, storedvalue& row) {
    row.kind = kindof(type);
    if (type == REG_DWORD) {
        if (const auto number = orvsecutils::decodedword(data.data(), bytes)) {
            row.value = *number;
        }
    } else if (type == REG_SZ || type == REG_EXPAND_SZ) {
        if (const auto text = orvsecutils::decodetext(data.data(), bytes)) {
            row.value = taketext(type == REG_SZ ? std::wstring(*text) : expanded(std::wstring(*text)), row);
        }
    } else if (type == REG_MULTI_SZ) {
        if (const auto texts = orvsecutils::decodelist(data.data(), bytes)) {
            row.value = json::array();
            for (const std::wstring_view text : *texts) {
                row.value.push_back(taketext(text, row));
            }
        }
    }
    row.ignored = row.value.is_null();
}

void addvalues(const std::string& group, registrylocation location, std::vector<storedvalue>& rows) {
    const registrykey key = open(location, group);
    DWORD longest = 0;
    if (!key || RegQueryInfoKeyW(key.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                 &longest, nullptr, nullptr) != ERROR_SUCCESS) {
        return;
    }
    std::vector<wchar_t> name(namebufferunits);
    std::vector<wchar_t> data(longest / sizeof(wchar_t) + 1);  // one more unit, because sizes may be odd
    for (DWORD index = 0;; ++index) {
        DWORD units = namebufferunits;
        DWORD type = REG_NONE;
        DWORD bytes = data.size() * sizeof(wchar_t);
        const LSTATUS result = RegEnumValueW(key.get(), index, name.data(), &units, nullptr, &type,
                                             reinterpret_cast<BYTE*>(data.data()), &bytes);
        if (result == ERROR_NO_MORE_ITEMS) {
            return;
        }
        if (result == ERROR_SUCCESS) {  // a value that cannot be read is skipped, the others are shown
            storedvalue row;
            row.group = group;
            row.location = location;
            row.name = taketext({name.data(), units}, row);
            decode(type, data, bytes, row);
            rows.push_back(std::move(row));
        }
    }
}

// Adds the paths of a group and of all groups below it.
void addgroups(const std::string& group, registrylocation location, std::set<std::string>& groups) {
    groups.insert(group);
    const registrykey key = open(location, group);
    std::vector<wchar_t> name(namebufferunits);
    for (DWORD index = 0; key; ++index) {
        DWORD units = namebufferunits;
        if (RegEnumKeyExW(key.get(), index, name.data(), &units, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
            return;
        }
        addgroups((group.empty() ? "" : group + "\\") + toutf8lossy(std::wstring_view(name.data(), units)), location,
                  groups);
    }
}

}  // namespace

std::string whose(registrylocation location) {
    return location == registrylocation::user ? "user's" : "machine's";
}

orvsecutils::settingsdef librarygroup(const std::string& name) {
    return orvsecutils::settingsdef(orvsecutils::companyname, orvsecutils::applicationid, orvsecutils::groupkey, name,
                                    std::string());
}

bool groupexists(const std::string& group) {
    const std::vector<registrylocation> locations = registrylocations();
    return std::any_of(locations.begin(), locations.end(),
                       [&](registrylocation location) { return open(location, group) != nullptr; });
}

std::vector<storedvalue> storedvalues(const std::string& group) {
    std::vector<storedvalue> rows;
    for (const registrylocation location : registrylocations()) {
        addvalues(group, location, rows);
    }
    std::sort(rows.begin(), rows.end(), [](const storedvalue& a, const storedvalue& b) {
        return std::tie(a.name, a.location) < std::tie(b.name, b.location);
    });
    return rows;
}

std::vector<storedvalue> allstoredvalues() {
    std::set<std::string> groups;
    for (const registrylocation location : registrylocations()) {
        addgroups(std::string(), location, groups);
    }
    std::vector<storedvalue> rows;
    for (const std::string& group : groups) {
        for (storedvalue& row : storedvalues(group)) {
            rows.push_back(std::move(row));
        }
    }
    return rows;
}

}  // namespace orvdiag
