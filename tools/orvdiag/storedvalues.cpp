#include "tools/orvdiag/storedvalues.h"

#include <windows.h>

#include <algorithm>
#include <set>
#include <tuple>

#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"
#include "orvsecutils/platform/windows/registry.h"
#include "orvsecutils/platform/windows/registryformat.h"
#include "orvsecutils/settings/productnames.h"
#include "tools/orvdiag/text.h"

namespace orvdiag {

using orvsecutils::registrykey;
using orvsecutils::unusedvalue;

namespace {

// The 32-bit view exists only on 64-bit systems; elsewhere it would be the other one again.
std::vector<registrylocation> registrylocations() {
    BOOL wow64 = FALSE;
    return sizeof(void*) == 8 || (IsWow64Process(GetCurrentProcess(), &wow64) && wow64)
               ? std::vector{registrylocation::user, registrylocation::machine, registrylocation::machine32}
               : std::vector{registrylocation::user, registrylocation::machine};
}

// Takes the group's name in UTF-16, because a malformed name has no other form. The user's hive has only one view, so
// there the view's flag has no effect.
LSTATUS open(registrylocation location, const std::wstring& group, registrykey& key) {
    const std::wstring root = orvsecutils::toutf16(grouppath(librarygroup(std::string())));
    HKEY opened = nullptr;
    const LSTATUS failure = RegOpenKeyExW(
        location == registrylocation::user ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE,
        (group.empty() ? root : root + L"\\" + group).c_str(), 0,
        KEY_READ | (location == registrylocation::machine32 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY), &opened);
    key.reset(opened);
    return failure;
}

std::string kindof(DWORD type) {
    switch (type) {
        case REG_DWORD:
            return numberkind;
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

void setvalue(const orvsecutils::setting& setting, storedvalue& row) {
    switch (setting.type) {
        case orvsecutils::settingtype::integer:
            row.kind = numberkind;
            row.value = static_cast<const orvsecutils::settingint&>(setting).value;
            break;
        case orvsecutils::settingtype::string:
            row.kind = kindof(REG_SZ);
            row.value = static_cast<const orvsecutils::settingstring&>(setting).value;
            break;
        case orvsecutils::settingtype::multistring:
            row.kind = kindof(REG_MULTI_SZ);
            row.value = static_cast<const orvsecutils::settingmultistring&>(setting).value;
            break;
    }
}

void addvalues(const std::wstring& group, registrylocation location, std::vector<storedvalue>& rows) {
    // In the order of unusedvalue::cause.
    static constexpr const char* causes[] = {"ignored: the library reads no values of this kind", "ignored: malformed",
                                             "malformed: not valid UTF-16, so the library cannot read the group",
                                             "ignored: the name is longer than the library reads"};
    registrykey key;
    const LSTATUS failure = open(location, group, key);
    if (failure == ERROR_FILE_NOT_FOUND) {
        return;
    }
    storedvalue row;
    row.group = toutf8lossy(group);
    row.location = location;
    const bool badname = orvsecutils::toutf16(row.group) != group;
    if (failure != ERROR_SUCCESS || badname) {
        row.kind = groupkind;
        row.ignored = true;
        row.remark = badname ? "malformed: the name is not valid UTF-16, so the library cannot open the group"
                             : "cannot be read: " + systemmessage(static_cast<DWORD>(failure));
        rows.push_back(row);
    }
    if (failure != ERROR_SUCCESS) {
        return;
    }
    std::vector<unusedvalue> unused;
    row.ignored = false;
    row.remark = location == registrylocation::machine32 ? "not read: the library reads the 64-bit view" : "";
    for (const auto& [name, setting] : orvsecutils::readvalues(key.get(), &unused)) {
        row.name = name;
        setvalue(*setting, row);
        rows.push_back(row);
    }
    for (const unusedvalue& value : unused) {
        row.name = toutf8lossy(value.name);
        row.kind = kindof(value.type);
        row.value = nullptr;
        row.badtext = value.why == unusedvalue::cause::text;
        row.ignored = !row.badtext;
        if (location != registrylocation::machine32) {
            row.remark = causes[static_cast<std::size_t>(value.why)];
        }
        rows.push_back(row);
    }
}

// Adds the paths of a group and of all groups below it.
void addgroups(const std::wstring& group, registrylocation location, std::set<std::wstring>& groups) {
    groups.insert(group);
    registrykey key;
    if (open(location, group, key) != ERROR_SUCCESS) {
        return;
    }
    wchar_t name[256];  // the registry allows 255 code units
    DWORD units = 256;
    for (DWORD index = 0; RegEnumKeyExW(key.get(), index, name, &units, nullptr, nullptr, nullptr, nullptr) == 0;
         ++index, units = 256) {
        addgroups((group.empty() ? L"" : group + L"\\") + std::wstring(name, units), location, groups);
    }
}

std::vector<storedvalue> valuesof(const std::wstring& group) {
    std::vector<storedvalue> rows;
    for (const registrylocation location : registrylocations()) {
        addvalues(group, location, rows);
    }
    std::sort(rows.begin(), rows.end(), [](const storedvalue& a, const storedvalue& b) {
        return std::tie(a.name, a.location) < std::tie(b.name, b.location);
    });
    for (std::size_t i = 1; i < rows.size(); ++i) {
        if (rows[i].name == rows[i - 1].name && rows[i].location == registrylocation::machine &&
            rows[i - 1].location == registrylocation::user && rows[i - 1].remark.empty() && rows[i].remark.empty()) {
            rows[i].remark = "overridden by the user's";
        }
    }
    return rows;
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
    return std::any_of(locations.begin(), locations.end(), [&](registrylocation location) {
        registrykey key;
        return open(location, orvsecutils::toutf16(group), key) == ERROR_SUCCESS;
    });
}

std::vector<storedvalue> storedvalues(const std::string& group) {
    return valuesof(orvsecutils::toutf16(group));
}

std::vector<storedvalue> allstoredvalues() {
    std::set<std::wstring> groups;
    for (const registrylocation location : registrylocations()) {
        addgroups(std::wstring(), location, groups);
    }
    std::vector<storedvalue> rows;
    for (const std::wstring& group : groups) {
        for (storedvalue& row : valuesof(group)) {
            rows.push_back(std::move(row));
        }
    }
    return rows;
}

}  // namespace orvdiag
