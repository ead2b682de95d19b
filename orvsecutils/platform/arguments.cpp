#include "orvsecutils/platform/arguments.h"

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

}  // namespace orvsecutils
