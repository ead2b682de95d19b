#include "orvsecutils/platform/windows/registry.h"

#include <windows.h>

#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "orvsecutils/platform/platformerror.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"
#include "orvsecutils/platform/windows/registryformat.h"

namespace orvsecutils {

namespace {

// The maximum length of a value's name. The buffer includes the terminator, so a name of exactly this length does not
// fit and its value is skipped.
constexpr DWORD namebufferunits = 16383;

HKEY hive(settingsscope scope) {
    return scope == settingsscope::machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

// Reads the 64-bit view, because administrators set values there without knowing which programs are 32-bit.
registrykey openforreading(settingsscope scope, const settingsdef& definition) {
    HKEY key = nullptr;
    RegOpenKeyExW(hive(scope), toutf16(grouppath(definition)).c_str(), 0, KEY_READ | KEY_WOW64_64KEY, &key);
    return registrykey(key);
}

// Deliberately without KEY_WOW64_64KEY: a process writes the view of its own bitness. settings::save() only writes to
// the user's hive, where both views are the same.
registrykey openforwriting(settingsscope scope, const settingsdef& definition) {
    HKEY key = nullptr;
    RegCreateKeyExW(hive(scope), toutf16(grouppath(definition)).c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                    KEY_READ | KEY_WRITE, nullptr, &key, nullptr);
    return registrykey(key);
}

// The string with its environment variables expanded, in UTF-8; none if that fails.
std::optional<std::string> expand(const wchar_t* text) {
    const DWORD size = ExpandEnvironmentStringsW(text, nullptr, 0);
    if (size == 0) {
        return std::nullopt;
    }
    std::wstring buffer = utf16buffer(size);
    const DWORD needed = ExpandEnvironmentStringsW(text, buffer.data(), size);
    if (needed == 0 || needed > size) {  // larger if a variable grew between the two calls
        return std::nullopt;
    }
    return toutf8(buffer.c_str());
}

// Whether values of this registry type are settings.
bool isread(DWORD type) {
    return type == REG_DWORD || type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

// Reads the values of one key. The buffer is reused for all of them, to save allocations.
class valuereader {
public:
    explicit valuereader(HKEY keyIn) : key(keyIn) {}

    // Null if the type is not supported or the data is malformed. The value may have changed since it was enumerated,
    // so each reader checks the type again.
    std::unique_ptr<setting> read(const wchar_t* name, DWORD type) {
        switch (type) {
            case REG_DWORD:
                return readnumber(name);
            case REG_SZ:
            case REG_EXPAND_SZ:
                return readtext(name, type);
            case REG_MULTI_SZ:
                return readlist(name);
            default:
                return nullptr;
        }
    }

private:
    struct fetched {
        DWORD type;
        DWORD bytes;
    };

    std::unique_ptr<setting> readnumber(const wchar_t* name) const {
        std::uint32_t data = 0;
        DWORD type = REG_NONE;
        DWORD bytes = sizeof data;
        if (RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(&data), &bytes) != ERROR_SUCCESS ||
            type != REG_DWORD) {
            return nullptr;
        }
        const std::optional<std::uint32_t> decoded = decodedword(&data, bytes);
        return decoded ? makesetting(*decoded) : nullptr;
    }

    std::unique_ptr<setting> readtext(const wchar_t* name, DWORD type) {
        const fetched data = fetch(name);
        if (data.type != REG_SZ && data.type != REG_EXPAND_SZ) {
            return nullptr;
        }
        const std::optional<std::wstring_view> decoded = decodetext(buffer.data(), data.bytes);
        if (!decoded) {
            return nullptr;
        }
        if (type == REG_SZ) {
            return makesetting(toutf8(*decoded));
        }
        std::optional<std::string> expanded = expand(decoded->data());
        return expanded ? makesetting(std::move(*expanded)) : nullptr;
    }

    std::unique_ptr<setting> readlist(const wchar_t* name) {
        const fetched data = fetch(name);
        if (data.type != REG_MULTI_SZ) {
            return nullptr;
        }
        const std::optional<std::vector<std::wstring_view>> decoded = decodelist(buffer.data(), data.bytes);
        if (!decoded) {
            return nullptr;
        }
        std::vector<std::string> texts;
        texts.reserve(decoded->size());
        for (const std::wstring_view text : *decoded) {
            texts.push_back(toutf8(text));
        }
        return makesetting(std::move(texts));
    }

    // Reads a value's data into the buffer; the type is REG_NONE if that fails.
    fetched fetch(const wchar_t* name) {
        DWORD type = REG_NONE;
        DWORD bytes = 0;
        if (RegQueryValueExW(key, name, nullptr, &type, nullptr, &bytes) != ERROR_SUCCESS) {
            return {REG_NONE, 0};
        }
        const std::size_t units = (bytes + std::size_t{1}) / sizeof(wchar_t);
        if (units > buffer.size()) {
            buffer = utf16buffer(static_cast<std::int64_t>(units));
        }
        if (RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()), &bytes) !=
            ERROR_SUCCESS) {
            return {REG_NONE, 0};
        }
        return {type, bytes};
    }

    HKEY key;
    std::wstring buffer;
};

// A value in the registry's form.
struct writtenvalue {
    std::wstring name;
    DWORD type;  // REG_NONE for a list, which is not written: lists are for administrators to set
    std::uint32_t number;
    std::wstring text;
};

writtenvalue registryform(const std::string& name, const setting& value) {
    switch (value.type) {
        case settingtype::integer:
            return {toutf16(name), REG_DWORD, static_cast<const settingint&>(value).value, {}};
        case settingtype::string:
            return {toutf16(name), REG_SZ, 0, toutf16(static_cast<const settingstring&>(value).value)};
        case settingtype::multistring:
            break;
    }
    return {toutf16(name), REG_NONE, 0, {}};
}

bool write(HKEY key, const writtenvalue& value) {
    const bool number = value.type == REG_DWORD;
    const void* const data = number ? static_cast<const void*>(&value.number) : value.text.c_str();
    const std::size_t bytes = number ? sizeof value.number : (value.text.size() + 1) * sizeof(wchar_t);
    return value.type != REG_NONE &&
           RegSetValueExW(key, value.name.c_str(), 0, value.type, static_cast<const BYTE*>(data),
                          static_cast<DWORD>(bytes)) == ERROR_SUCCESS;
}

}  // namespace

settingsmap readvalues(HKEY key, std::vector<unusedvalue>* unused) {
    settingsmap values;
    DWORD count = 0;
    if (RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr,
                         nullptr) != ERROR_SUCCESS) {
        return values;
    }
    valuereader reader(key);
    // Not utf16buffer(), because clearing such a large buffer would cost as much as opening the key.
    const std::unique_ptr<wchar_t[]> name(new (std::nothrow) wchar_t[namebufferunits + 1]);
    if (!name) {
        throw platformerror(platformerror::generalfailure);
    }
    for (DWORD index = 0; index < count; ++index) {
        DWORD units = namebufferunits + (unused ? 1 : 0);  // only the unused values include one with the longest name
        DWORD type = REG_NONE;
        if (RegEnumValueW(key, index, name.get(), &units, nullptr, &type, nullptr, nullptr) != ERROR_SUCCESS) {
            continue;
        }
        unusedvalue::cause why = unusedvalue::cause::longname;
        try {
            if (units < namebufferunits) {
                if (std::unique_ptr<setting> value = reader.read(name.get(), type)) {
                    // With the end as a hint, because the registry usually enumerates names in order.
                    values.insert_or_assign(values.end(), toutf8({name.get(), units}), std::move(value));
                    continue;
                }
                why = isread(type) ? unusedvalue::cause::data : unusedvalue::cause::type;
            }
        } catch (const std::range_error&) {
            if (!unused) {
                throw;
            }
            why = unusedvalue::cause::text;
        }
        if (unused) {
            unused->push_back({{name.get(), units}, type, why});
        }
    }
    return values;
}

settingsmap readgroup(settingsscope scope, const settingsdef& definition) {
    const registrykey key = openforreading(scope, definition);
    return key ? readvalues(key.get()) : settingsmap();
}

bool writegroup(settingsscope scope, const settingsdef& definition, const settingsmap& values) {
    // Everything is converted before anything is written, so that a string that cannot be converted does not leave half
    // a group behind.
    std::vector<writtenvalue> converted;
    converted.reserve(values.size());
    for (const auto& [name, value] : values) {
        converted.push_back(registryform(name, *value));
    }
    const registrykey key = openforwriting(scope, definition);
    if (!key) {
        return false;
    }
    bool success = true;
    for (const writtenvalue& value : converted) {
        success = write(key.get(), value) && success;
    }
    return success;
}

bool groupexists(settingsscope scope, const settingsdef& definition) {
    return openforreading(scope, definition) != nullptr;
}

}  // namespace orvsecutils
