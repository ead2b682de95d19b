#include "orvsecutils/platform/windows/registry.h"

#include <windows.h>

#include <optional>
#include <string>
#include <utility>

#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"
#include "orvsecutils/platform/windows/registryformat.h"

namespace orvsecutils {

namespace {

// With its terminating zero, so that a name of all the 16383 units that the registry allows is passed over.
constexpr DWORD namebufferunits = 16383;

HKEY hive(settingsscope scope) {
    return scope == settingsscope::machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

// The 64-bit view is where a machine's administrator puts values, whatever the programs that read them.
registrykey openforreading(settingsscope scope, const settingsdef& definition) {
    HKEY key = nullptr;
    RegOpenKeyExW(hive(scope), toutf16(grouppath(definition)).c_str(), 0, KEY_READ | KEY_WOW64_64KEY, &key);
    return registrykey(key);
}

// Deliberately without KEY_WOW64_64KEY: a 32-bit process writes its own view.
registrykey openforwriting(settingsscope scope, const settingsdef& definition) {
    HKEY key = nullptr;
    RegCreateKeyExW(hive(scope), toutf16(grouppath(definition)).c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                    KEY_READ | KEY_WRITE, nullptr, &key, nullptr);
    return registrykey(key);
}

// The text with its environment variables put in, in UTF-8.
std::optional<std::string> expand(const wchar_t* text) {
    const DWORD size = ExpandEnvironmentStringsW(text, nullptr, 0);
    if (size == 0) {
        return std::nullopt;
    }
    std::wstring buffer = utf16buffer(size);
    const DWORD needed = ExpandEnvironmentStringsW(text, buffer.data(), size);
    if (needed == 0 || needed > size) {  // more than before: a variable has grown in between
        return std::nullopt;
    }
    return toutf8(buffer.c_str());
}

// Reads the values of one key. Its buffer serves all of them.
class valuereader {
public:
    explicit valuereader(HKEY keyIn) : key(keyIn) {}

    // The value, or null for one of an unknown kind or in bad form.
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

    // Reads a value's data into the buffer; REG_NONE when that fails.
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

bool writevalue(HKEY key, const std::wstring& name, DWORD type, const void* data, std::size_t bytes) {
    return RegSetValueExW(key, name.c_str(), 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(bytes)) ==
           ERROR_SUCCESS;
}

bool writevalue(HKEY key, const std::wstring& name, const setting& value) {
    switch (value.type) {
        case settingtype::integer: {
            const std::uint32_t number = static_cast<const settingint&>(value).value;
            return writevalue(key, name, REG_DWORD, &number, sizeof number);
        }
        case settingtype::string: {
            const std::wstring text = toutf16(static_cast<const settingstring&>(value).value);
            return writevalue(key, name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
        }
        case settingtype::multistring:
            break;  // lists are an administrator's to set
    }
    return false;
}

}  // namespace

settingsmap readgroup(settingsscope scope, const settingsdef& definition) {
    settingsmap values;
    const registrykey key = openforreading(scope, definition);
    DWORD count = 0;
    if (!key || RegQueryInfoKeyW(key.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count, nullptr,
                                 nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
        return values;
    }
    valuereader reader(key.get());
    // Not filled beforehand: that alone would cost as much as opening the key.
    const std::unique_ptr<wchar_t[]> name(new wchar_t[namebufferunits]);
    for (DWORD index = 0; index < count; ++index) {
        DWORD units = namebufferunits;
        DWORD type = REG_NONE;
        if (RegEnumValueW(key.get(), index, name.get(), &units, nullptr, &type, nullptr, nullptr) != ERROR_SUCCESS) {
            continue;
        }
        if (std::unique_ptr<setting> value = reader.read(name.get(), type)) {
            // The hint: the registry tends to deliver names in order.
            values.insert_or_assign(values.end(), toutf8({name.get(), units}), std::move(value));
        }
    }
    return values;
}

bool writegroup(settingsscope scope, const settingsdef& definition, const settingsmap& values) {
    const registrykey key = openforwriting(scope, definition);
    if (!key) {
        return false;
    }
    bool success = true;
    for (const auto& [name, value] : values) {
        success = writevalue(key.get(), toutf16(name), *value) && success;
    }
    return success;
}

bool groupexists(settingsscope scope, const settingsdef& definition) {
    return openforreading(scope, definition) != nullptr;
}

}  // namespace orvsecutils
