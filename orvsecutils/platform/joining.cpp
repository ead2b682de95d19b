#include "orvsecutils/platform/joining.h"

#include <string_view>

#include "orvsecutils/platform/unicode.h"

namespace orvsecutils {

std::string joinarguments(const std::vector<std::string>& arguments) {
    std::string text;
    for (const std::string& argument : arguments) {
        if (!text.empty()) {
            text += ' ';
        }
        text += argument;
    }
    return text;
}

std::string joindependencies(const wchar_t* list) {
    std::string joined;
    while (list && *list) {
        const std::wstring_view name(list);
        if (!joined.empty()) {
            joined += '\0';
        }
        joined += toutf8(name);
        list += name.size() + 1;
    }
    return joined;
}

}  // namespace orvsecutils
