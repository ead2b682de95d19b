#include "tools/orvdiag/text.h"

#include <windows.h>

#include <algorithm>

namespace orvdiag {

namespace {

// The number of characters, not bytes: counts the UTF-8 bytes that do not continue a character.
std::size_t width(const std::string& text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

}  // namespace

std::string toutf8lossy(std::wstring_view text) {
    const int units = static_cast<int>(text.size());
    std::string result(static_cast<std::size_t>(units) * 3, '\0');
    result.resize(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), units, result.data(),
                                                               static_cast<int>(result.size()), nullptr, nullptr)));
    return result;
}

std::string toutf8lossy(std::string_view bytes) {
    const int size = static_cast<int>(bytes.size());
    std::wstring result(bytes.size(), L'\0');
    result.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, result.data(), size)));
    return toutf8lossy(result);
}

std::string oneline(std::string_view text) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string result;
    for (const char character : text) {
        auto code = static_cast<unsigned char>(character);
        // UTF-8 writes the controls from U+0080 to U+009F, which some terminals obey too, as C2 and their code.
        const bool high = code >= 0x80 && code < 0xA0 && !result.empty() && result.back() == '\xC2';
        if (high || (code < 0x20 && code != '\t') || code == 0x7F) {
            result.resize(result.size() - (high ? 1 : 0));
            result += {'\\', 'u', '0', '0', digits[code >> 4], digits[code & 15]};
        } else {
            result += character;
        }
    }
    return result;
}

std::string quoted(const std::string& text) {
    return "\"" + oneline(toutf8lossy(text)) + "\"";
}

bool equalsignorecase(std::string_view a, std::string_view b) {
    const auto lower = [](char letter) { return letter >= 'A' && letter <= 'Z' ? letter + 32 : letter; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [lower](char left, char right) { return lower(left) == lower(right); });
}

std::string systemmessage(unsigned long code) {
    wchar_t message[512];
    DWORD units = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0, message,
                                 static_cast<DWORD>(std::size(message)), nullptr);
    while (units > 0 && message[units - 1] <= L' ') {
        --units;
    }
    std::string text = toutf8lossy(std::wstring_view(message, units)) + (units > 0 ? " " : "");
    if (const std::size_t place = text.find("%1"); place != std::string::npos) {
        text.replace(place, 2, "the file");
    }
    return text + "(code " + std::to_string(code) + ")";
}

std::string table(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], width(row[i]));
        }
    }
    std::string text;
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += row[i] + std::string(widths[i] - width(row[i]) + 2, ' ');
        }
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

}  // namespace orvdiag
