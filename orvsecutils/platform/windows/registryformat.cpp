#include "orvsecutils/platform/windows/registryformat.h"

#include <cstring>

namespace orvsecutils {

namespace {

// Whether the data consists of whole UTF-16 code units, the last `zeros` of which are zero.
bool endsin(std::size_t zeros, const wchar_t* data, std::size_t bytes) {
    const std::size_t units = bytes / sizeof(wchar_t);
    if (bytes % sizeof(wchar_t) != 0 || units < zeros) {
        return false;
    }
    for (std::size_t i = units - zeros; i < units; ++i) {
        if (data[i] != L'\0') {
            return false;
        }
    }
    return true;
}

}  // namespace

std::string grouppath(const settingsdef& definition) {
    std::string path = definition.getroot() + "\\" + definition.company;
    for (const std::string* part : {&definition.group, &definition.name}) {
        if (!part->empty()) {
            path += "\\" + *part;
        }
    }
    return path;
}

std::optional<std::uint32_t> decodedword(const void* data, std::size_t bytes) {
    std::uint32_t number = 0;
    if (bytes != sizeof number) {
        return std::nullopt;
    }
    std::memcpy(&number, data, sizeof number);
    return number;
}

std::optional<std::wstring_view> decodetext(const wchar_t* data, std::size_t bytes) {
    if (!endsin(1, data, bytes)) {
        return std::nullopt;
    }
    return std::wstring_view(data);  // up to the first zero, which exists
}

std::optional<std::vector<std::wstring_view>> decodelist(const wchar_t* data, std::size_t bytes) {
    if (!endsin(2, data, bytes)) {
        return std::nullopt;
    }
    std::vector<std::wstring_view> texts;
    // Stays within the data, because the two trailing zeros end the loop at the latest.
    for (std::wstring_view text(data); !text.empty(); text = std::wstring_view(text.data() + text.size() + 1)) {
        texts.push_back(text);
    }
    return texts;
}

}  // namespace orvsecutils
