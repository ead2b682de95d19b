#include "orvsecutils/settings/settings.h"

#include <windows.h>

#include <cstdio>
#include <string>
#include <vector>

#include "bench/timing.h"
#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"

using namespace orvsecutils;

namespace {

// Results are stored here, so that the compiler does not drop the measured calls.
volatile std::size_t sink;

// A temporary group with values of all kinds; the destructor deletes it.
class Group {
public:
    explicit Group(int count) {
        HKEY opened = nullptr;
        RegCreateKeyExW(HKEY_CURRENT_USER, path().c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &opened, nullptr);
        const registrykey key(opened);
        for (int i = 0; i < count; ++i) {
            const DWORD number = static_cast<DWORD>(i);
            const std::wstring text = i % 4 == 1   ? L"a text of some forty units, as most are \x416"
                                      : i % 4 == 2 ? L"%USERPROFILE%\\folder"
                                                   : std::wstring(L"one\0two\0three\0", 14);
            const DWORD types[] = {REG_DWORD, REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ};
            const auto data =
                i % 4 == 0 ? reinterpret_cast<const BYTE*>(&number) : reinterpret_cast<const BYTE*>(text.c_str());
            const std::size_t bytes = i % 4 == 0 ? sizeof number : (text.size() + 1) * sizeof(wchar_t);
            RegSetValueExW(key.get(), name(i).c_str(), 0, types[i % 4], data, static_cast<DWORD>(bytes));
        }
    }
    ~Group() { RegDeleteTreeW(HKEY_CURRENT_USER, (L"software\\" + company).c_str()); }
    Group(const Group&) = delete;
    Group& operator=(const Group&) = delete;

    registrykey open(REGSAM access) const {
        HKEY opened = nullptr;
        RegOpenKeyExW(HKEY_CURRENT_USER, path().c_str(), 0, access, &opened);
        return registrykey(opened);
    }
    settingsdef definition() const { return settingsdef(toutf8(company), "", "group", "", ""); }
    static std::wstring name(int i) { return L"value number " + std::to_wstring(i); }

private:
    std::wstring path() const { return L"software\\" + company + L"\\group"; }

    const std::wstring company = L"orvsecutils-bench-" + std::to_wstring(GetCurrentProcessId());
};

// The same registry calls as a load, in the same order; their results are not used.
void sameCalls(const Group& group) {
    const registrykey key = group.open(KEY_READ | KEY_WOW64_64KEY);
    DWORD count = 0;
    RegQueryInfoKeyW(key.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr,
                     nullptr);
    static wchar_t name[16383];
    static wchar_t data[1000];
    static wchar_t expanded[1000];
    for (DWORD i = 0; i < count; ++i) {
        DWORD units = 16383;
        DWORD type = REG_NONE;
        RegEnumValueW(key.get(), i, name, &units, nullptr, &type, nullptr, nullptr);
        DWORD bytes = sizeof(DWORD);
        if (type != REG_DWORD) {
            RegQueryValueExW(key.get(), name, nullptr, &type, nullptr, &bytes);
        }
        RegQueryValueExW(key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(data), &bytes);
        if (type == REG_EXPAND_SZ) {
            const DWORD size = ExpandEnvironmentStringsW(data, nullptr, 0);
            ExpandEnvironmentStringsW(data, expanded, size);
        }
    }
}

// The minimum of calls that fetches all names and data.
void fewestCalls(const Group& group) {
    const registrykey key = group.open(KEY_READ | KEY_WOW64_64KEY);
    static wchar_t name[16383];
    static BYTE data[1000];
    LSTATUS status = ERROR_SUCCESS;
    for (DWORD i = 0; status == ERROR_SUCCESS; ++i) {
        DWORD units = 16383;
        DWORD type = REG_NONE;
        DWORD bytes = sizeof data;
        status = RegEnumValueW(key.get(), i, name, &units, nullptr, &type, data, &bytes);
    }
}

void writeBare(const Group& group, int count) {
    const registrykey key = group.open(KEY_READ | KEY_WRITE);
    for (int i = 0; i < count; ++i) {
        const DWORD number = static_cast<DWORD>(i);
        RegSetValueExW(key.get(), Group::name(i).c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number),
                       sizeof number);
    }
}

void load() {
    std::printf("| values in the group | load, µs per value | same registry calls, µs | load : same calls | ");
    std::printf("one call per value, µs | load : one call |\n|---|---|---|---|---|---|\n");
    for (const int count : {10, 100, 1000, 10000}) {
        const Group group(count);
        const settingsdef definition = group.definition();
        const std::vector<double> ns =
            medianNanoseconds(count > 1000 ? 31 : 101, std::max(1, 1000 / count),
                              {[&](int calls) {
                                   for (int i = 0; i < calls; ++i) {
                                       sink = currentplatform().readsettings(settingsscope::user, definition).size();
                                   }
                               },
                               [&](int calls) {
                                   for (int i = 0; i < calls; ++i) {
                                       sameCalls(group);
                                   }
                               },
                               [&](int calls) {
                                   for (int i = 0; i < calls; ++i) {
                                       fewestCalls(group);
                                   }
                               }});
        const double perValue = 1000.0 * count;
        std::printf("| %d | %.1f | %.1f | %.2f | %.1f | %.2f |\n", count, ns[0] / perValue, ns[1] / perValue,
                    ns[0] / ns[1], ns[2] / perValue, ns[0] / ns[2]);
    }
}

void lookupAndSave() {
    std::printf("\n| values in the group | `getint`, ns | `save`, µs per value | `RegSetValueExW` alone, µs | ");
    std::printf("save : alone |\n|---|---|---|---|---|\n");
    for (const int count : {10, 100, 1000, 10000}) {
        const Group empty(0);
        settings group(empty.definition());
        std::vector<std::string> names;
        for (int i = 0; i < count; ++i) {
            names.push_back(toutf8(Group::name(i)));
            group.setint(names.back(), i);
        }
        const double lookup = medianNanoseconds(31, 10000, {[&](int calls) {
                                                    std::uint32_t number = 0;
                                                    for (int i = 0; i < calls; ++i) {
                                                        group.getint(names[i * 7919u % names.size()], number);
                                                        sink = number;
                                                    }
                                                }})[0];
        const std::vector<double> ns = medianNanoseconds(count > 1000 ? 11 : 31, std::max(1, 1000 / count),
                                                         {[&](int calls) {
                                                              for (int i = 0; i < calls; ++i) {
                                                                  sink = group.save();
                                                              }
                                                          },
                                                          [&](int calls) {
                                                              for (int i = 0; i < calls; ++i) {
                                                                  writeBare(empty, count);
                                                              }
                                                          }});
        const double perValue = 1000.0 * count;
        std::printf("| %d | %.0f | %.1f | %.1f | %.2f |\n", count, lookup, ns[0] / perValue, ns[1] / perValue,
                    ns[0] / ns[1]);
    }
}

std::wstring systemToUtf16(const std::string& text) {
    std::wstring result(text.size(), L'\0');
    result.resize(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), static_cast<int>(text.size()),
                                      result.data(), static_cast<int>(result.size())));
    return result;
}

std::string systemToUtf8(const std::wstring& text) {
    std::string result(3 * text.size(), '\0');
    result.resize(WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text.data(), static_cast<int>(text.size()),
                                      result.data(), static_cast<int>(result.size()), nullptr, nullptr));
    return result;
}

void conversion() {
    const auto repeated = [](const std::wstring& part) {
        std::wstring text;
        while (text.size() < 100) {
            text += part;
        }
        return text;
    };
    const struct {
        const char* what;
        std::wstring text;
    } rows[] = {
        {"ASCII", repeated(L"plain text")},
        {"mixed Latin", repeated(L"gr\xFC\xDF"
                                 L"e plain")},
        {"Cyrillic", repeated(L"\x43F\x440\x438\x432\x435")},
        {"Chinese", repeated(L"\x4E2D\x6587")},
        {"surrogate pairs", repeated(L"\xD83D\xDE00")},
    };
    std::printf("\n| 100 units of | to UTF-16, ns | the system, ns | ours : system | to UTF-8, ns | the system, ns | ");
    std::printf("ours : system |\n|---|---|---|---|---|---|---|\n");
    for (const auto& row : rows) {
        const std::wstring& wide = row.text;
        const std::string narrow = toutf8(wide);
        const std::vector<double> ns = medianNanoseconds(51, 5000,
                                                         {[&](int calls) {
                                                              for (int i = 0; i < calls; ++i) {
                                                                  sink = toutf16(narrow).size();
                                                              }
                                                          },
                                                          [&](int calls) {
                                                              for (int i = 0; i < calls; ++i) {
                                                                  sink = systemToUtf16(narrow).size();
                                                              }
                                                          },
                                                          [&](int calls) {
                                                              for (int i = 0; i < calls; ++i) {
                                                                  sink = toutf8(wide).size();
                                                              }
                                                          },
                                                          [&](int calls) {
                                                              for (int i = 0; i < calls; ++i) {
                                                                  sink = systemToUtf8(wide).size();
                                                              }
                                                          }});
        std::printf("| %s | %.0f | %.0f | %.2f | %.0f | %.0f | %.2f |\n", row.what, ns[0], ns[1], ns[0] / ns[1], ns[2],
                    ns[3], ns[2] / ns[3]);
    }
}

}  // namespace

int main() {
    std::printf("## Settings\n\n");
    load();
    lookupAndSave();
    conversion();
    std::printf("\n");
}
