#include "tools/orvdiag/json.h"

namespace orvdiag {

std::string jsonstring(std::string_view text) {
    constexpr char digits[] = "0123456789abcdef";
    std::string result = "\"";
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\') {
            result += '\\';
            result += character;
        } else if (code < 0x20 || code == 0x7F) {
            result += "\\u00";
            result += digits[code >> 4];
            result += digits[code & 15];
        } else {
            result += character;
        }
    }
    return result + '"';
}

}  // namespace orvdiag
